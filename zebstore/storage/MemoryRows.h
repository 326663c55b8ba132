// Rows held in memory.
#pragma once

#include "zebstore/base/Locks.h"
#include "zebstore/storage/RowSource.h"

namespace zebstore
{

/// Store table, profile table, receive-folder table, recipients, attachments. The tables that share it see a new content
/// at their next call. Threads: any.
class MemoryRows : public RowSource
{
public:
    /// `defaultColumns` empty: every property of every row.
    explicit MemoryRows(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns = {});
    /// Rows whose key (by position: `keys[i]`) existed before are the same row for bookmarks and position.
    void Replace(std::vector<PropertySet> rows, std::vector<RowKey> keys = {});

    ULONG Count() override;
    std::uint64_t Generation() override;
    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override;
    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override;
    void Read(const RowKey* keys, size_t count, const Visitor& visit) override;
    std::vector<ULONG> DefaultColumns() override;
    std::vector<ULONG> AllColumns() override;

private:
    mutable MutexOf<lockorder::Rows> m_lock;
    std::vector<PropertySet> m_rows;
    std::vector<RowKey> m_keys;
    std::vector<ULONG> m_defaultColumns;
    std::uint64_t m_generation = 1;
};

} // namespace zebstore
