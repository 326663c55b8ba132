// Where the rows of a table come from.
#pragma once

#include "zebstore/storage/PropertySet.h"
#include "zebstore/storage/RowChange.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zebstore
{

class Restriction;
class SortOrder;

/// The bytes of a row's PR_INSTANCE_KEY.
inline std::string InstanceKeyOf(RowKey key)
{
    return {reinterpret_cast<const char*>(&key), sizeof(key)};
}

/// The rows of one table. Threads: the table that owns the source calls it from one thread at a time; a source over a
/// store takes the store's lock.
class RowSource
{
public:
    using Visitor = std::function<void(size_t index, const ValueSource& values)>;

    virtual ~RowSource() = default;

    /// Rows without any restriction; does not scan.
    virtual ULONG Count() = 0;
    /// Called when `seen` rows were read and the source should have no more, to detect a damaged file.
    /// @throws Error MAPI_E_CORRUPT_STORE when rows are lost
    virtual void RequireAllRows(size_t /*seen*/) {}
    /// Becomes another number whenever rows, their order or their values may have changed.
    virtual std::uint64_t Generation() = 0;
    /// Holds a read snapshot while the result lives; null when the source needs none.
    virtual std::shared_ptr<void> Snapshot() { return nullptr; }
    /// From now on Generation and ChangesSince also know of changes that are expensive to detect.
    virtual void Follow() {}
    /// What happened since the source had this generation: each row once, as its first change, in the order of those.
    virtual RowChanges ChangesSince(std::uint64_t) { return {}; }
    /// True when the natural order of the rows is that of their keys, Exists and KeyBefore answer, and ChangesSince
    /// lists rows.
    virtual bool KeysRise() const { return false; }
    virtual bool Exists(RowKey) { return false; }
    /// The row before this one in natural order, whether or not this one is there.
    virtual std::optional<RowKey> KeyBefore(RowKey) { return std::nullopt; }
    /// The keys of the rows that `restriction` (null: all) lets through, in this order (null: the natural one).
    virtual std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) = 0;
    /// The next `count` keys in natural order after `after` (nothing: from the first); does not scan.
    virtual std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) = 0;
    /// The first `count` keys in this order, where the source knows them without a look at all rows.
    virtual std::optional<std::vector<RowKey>> FirstKeys(const SortOrder&, size_t /*count*/) { return std::nullopt; }
    /// Visits the rows of these keys in this order; a row that is gone is visited with an empty source.
    virtual void Read(const RowKey* keys, size_t count, const Visitor& visit) = 0;
    /// The columns of a table whose columns were not set.
    virtual std::vector<ULONG> DefaultColumns() = 0;
    /// All columns that some row may have, for TBL_ALL_COLUMNS.
    virtual std::vector<ULONG> AllColumns() = 0;
};

} // namespace zebstore
