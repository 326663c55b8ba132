// A row for each value of a multi-valued property.
#pragma once

#include "zebstore/storage/RowSource.h"

#include <map>
#include <utility>

namespace zebstore
{

/// The rows of another source; while a property is chosen, each of them once for every value of it
/// (once, too, without any). The values of such a row have the single one for the tag with MV_INSTANCE,
/// and all for the tag without. Threads: as the other source.
class InstanceRows : public RowSource
{
public:
    explicit InstanceRows(std::shared_ptr<RowSource> rows);

    /// @param tag 0: the rows as they are. The keys of rows before and after have nothing to do with each other.
    void Choose(ULONG tag);
    ULONG Chosen() const { return m_tag; }

    ULONG Count() override;
    std::uint64_t Generation() override;
    std::shared_ptr<void> Snapshot() override { return m_rows->Snapshot(); }
    void Follow() override { m_rows->Follow(); }
    RowChanges ChangesSince(std::uint64_t generation) override;
    bool KeysRise() const override { return m_tag == 0 && m_rows->KeysRise(); }
    bool Exists(RowKey key) override { return m_tag == 0 && m_rows->Exists(key); }
    std::optional<RowKey> KeyBefore(RowKey key) override;
    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override;
    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override;
    std::optional<std::vector<RowKey>> FirstKeys(const SortOrder& order, size_t count) override
    {
        return m_tag == 0 ? m_rows->FirstKeys(order, count) : std::nullopt;
    }
    void Read(const RowKey* keys, size_t count, const Visitor& visit) override;
    std::vector<ULONG> DefaultColumns() override { return m_rows->DefaultColumns(); }
    std::vector<ULONG> AllColumns() override { return m_rows->AllColumns(); }

private:
    /// A row and the place of its value.
    using Instance = std::pair<RowKey, ULONG>;

    RowKey KeyOf(const Instance& instance);

    const std::shared_ptr<RowSource> m_rows;
    ULONG m_tag = 0;
    // An instance keeps its key, which is its place here plus 1, as long as the property stays chosen.
    std::vector<Instance> m_instances;
    std::map<Instance, RowKey> m_keys;
};

} // namespace zebstore
