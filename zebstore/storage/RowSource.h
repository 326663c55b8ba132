// Where the rows of a table come from.
#pragma once

#include "zebstore/storage/PropertySet.h"
#include "zebstore/storage/StoreFile.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zebstore
{

class Restriction;
class SortOrder;

/// Names a row of its source for as long as the row exists.
using RowKey = std::int64_t;

/// A row that something happened to.
struct TouchedRow
{
    RowKey key = 0;
    bool wasThere = false; ///< before it happened
};

/// What happened to the rows of a source.
struct TouchedRows
{
    enum class Kind
    {
        Listed,   ///< `rows` are all that was touched, each once, in the order in which it began
        Unknown,  ///< too much or too long ago to be listed
        Replaced, ///< the content has gone as a whole
    };
    Kind kind = Kind::Unknown;
    std::vector<TouchedRow> rows;
};

/// The bytes of a row's PR_INSTANCE_KEY.
inline std::string InstanceKeyOf(RowKey key)
{
    return {reinterpret_cast<const char*>(&key), sizeof(key)};
}

/// The rows of one table. Threads: the table that owns the source calls it from one thread at a time; a
/// source over a store takes the store's lock.
class RowSource
{
public:
    using Visitor = std::function<void(size_t index, const ValueSource& values)>;

    virtual ~RowSource() = default;

    /// Rows without any restriction; does not scan.
    virtual ULONG Count() = 0;
    /// Called when `seen` rows were read and the source should have no more: the rows of
    /// a damaged file must not be taken for none.
    /// @throws Error MAPI_E_CORRUPT_STORE when rows are lost
    virtual void RequireAllRows(size_t /*seen*/) {}
    /// Becomes another number whenever rows, their order or their values may have changed.
    virtual std::uint64_t Generation() = 0;
    /// Until the result is dropped, all that is asked of the source is of one moment.
    virtual std::shared_ptr<void> Moment() { return nullptr; }
    /// From now on Generation and TouchedSince also know of changes that are dear to find.
    virtual void Follow() {}
    /// What happened since the source had this generation.
    virtual TouchedRows TouchedSince(std::uint64_t) { return {}; }
    /// True when the natural order of the rows is that of their keys, Exists and KeyBefore answer, and TouchedSince
    /// lists rows.
    virtual bool KeysRise() const { return false; }
    virtual bool Exists(RowKey) { return false; }
    /// The row before this one in natural order, whether or not this one is there.
    virtual std::optional<RowKey> KeyBefore(RowKey) { return std::nullopt; }
    /// The keys of the rows that `restriction` (null: all) lets through, in this order (null: the natural one).
    virtual std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) = 0;
    /// The next `count` keys in natural order after `after` (nothing: from the first); does not scan.
    virtual std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) = 0;
    /// Visits the rows of these keys in this order; a row that is gone is visited with an empty source.
    virtual void Read(const RowKey* keys, size_t count, const Visitor& visit) = 0;
    /// The columns of a table whose columns were not set.
    virtual std::vector<ULONG> DefaultColumns() = 0;
    /// All columns that some row may have, for TBL_ALL_COLUMNS.
    virtual std::vector<ULONG> AllColumns() = 0;
};

/// Rows held in memory: store table, profile table, receive-folder table, recipients, attachments.
/// The tables that share it see a new content at their next call. Threads: any.
class MemoryRows : public RowSource
{
public:
    /// `defaultColumns` empty: every property of every row.
    explicit MemoryRows(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns = {});
    /// Rows whose key (by position: `keys[i]`) was there before are the same row for bookmarks and position.
    void Replace(std::vector<PropertySet> rows, std::vector<RowKey> keys = {});

    ULONG Count() override;
    std::uint64_t Generation() override;
    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override;
    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override;
    void Read(const RowKey* keys, size_t count, const Visitor& visit) override;
    std::vector<ULONG> DefaultColumns() override;
    std::vector<ULONG> AllColumns() override;

private:
    mutable std::mutex m_lock;
    std::vector<PropertySet> m_rows;
    std::vector<RowKey> m_keys;
    std::vector<ULONG> m_defaultColumns;
    std::uint64_t m_generation = 1;
};

/// Which message a default is asked for.
struct MessageOrigin
{
    MessageId id = 0; ///< 0: not stored, or in an attachment
    /// StoredMessage::change; asked only where it matters
    std::function<std::int64_t()> change;
};

/// Reads the times of the folder that a default is asked for; called only where they matter.
using FolderTimesReader = std::function<FolderTimes()>;

/// What a message or a folder has beyond its stored properties: entry identifiers, record keys, object type
/// ... It goes before a stored property of the same identifier. Threads: any.
class ComputedProperties
{
public:
    virtual ~ComputedProperties() = default;
    /// Adds the property with the identifier of `tag` to `out`. @return false when it is not computed
    virtual bool OfMessage(ULONG tag, MessageId message, PropertySet& out) const = 0;
    virtual bool OfFolder(ULONG tag, const FolderInfo& folder, PropertySet& out) const = 0;
    /// True for a property that a message has although nobody wrote it.
    virtual bool IsDefault(ULONG) const { return false; }
    /// Adds it to `out`. A stored one goes before it. @return false when it is none
    virtual bool DefaultOfMessage(ULONG, const MessageOrigin&, PropertySet&) const { return false; }
    /// The same for a folder.
    virtual bool DefaultOfFolder(ULONG, const FolderTimesReader&, PropertySet&) const { return false; }
    /// The tags of all that is computed.
    virtual std::vector<ULONG> MessageTags() const = 0;
    virtual std::vector<ULONG> FolderTags() const = 0;
};

/// The messages of one folder. @throws Error MAPI_E_NOT_FOUND
std::shared_ptr<RowSource> MakeContentsRows(std::shared_ptr<StoreFile> store, FolderId folder, bool associated,
                                            std::shared_ptr<const ComputedProperties> computed);
/// The folders below one folder; with `wholeTree` (CONVENIENT_DEPTH) those further down too, PR_DEPTH from 1. Gives
/// PR_DEPTH, PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_ASSOC_CONTENT_COUNT, PR_SUBFOLDERS, PR_FOLDER_TYPE.
std::shared_ptr<RowSource> MakeHierarchyRows(std::shared_ptr<StoreFile> store, FolderId folder, bool wholeTree,
                                             std::shared_ptr<const ComputedProperties> computed);

} // namespace zebstore
