// The table `contents`: counters, change number and change log of each folder's messages.
#pragma once

#include "zebstore/storage/DateRuns.h"
#include "zebstore/storage/RowChange.h"
#include "zebstore/storage/StoreConnection.h"
#include "zebstore/storage/StoreIds.h"

#include <cstdint>
#include <unordered_map>

namespace zebstore
{

/// One row for each contents of a folder. Threads: any; the connection's lock is taken inside. What writes is called in
/// the caller's transaction.
class ContentsTable
{
public:
    explicit ContentsTable(StoreConnection& connection)
        : m_connection(connection)
        , m_runs(connection.Db())
    {
    }

    /// Rises whenever messages of the contents may have changed, also by another process; 0 for no such contents.
    std::uint64_t Generation(ContentsKey contents) { return CountersOf(contents).generation; }
    /// The same for the folder tree.
    std::uint64_t TreeGeneration() { return Generation(ContentsKey::Embedded()); }
    /// How many messages there are.
    ULONG Rows(ContentsKey contents) { return CountersOf(contents).rows; }
    /// Compares the count of the messages with the messages that can be read.
    /// @throws Error MAPI_E_CORRUPT_STORE when they differ: messages are lost, or others are taken for them
    void RequireAllRows(ContentsKey contents);
    /// Becomes another number with each change of the folder tree or of any folder's messages.
    std::uint64_t ChangeStamp();
    /// What happened to the messages since Generation() was this; each is listed once, as its first change.
    RowChanges ChangesSince(ContentsKey contents, std::uint64_t generation);

    /// @throws Error MAPI_E_NOT_FOUND
    void RequireExists(ContentsKey contents);
    /// Whether changes can be counted on from this number; false only in a damaged file.
    static constexpr bool IsChangeNumber(std::int64_t change) { return change >= 0 && change < std::int64_t{1} << 62; }
    void Insert(ContentsKey contents);
    /// Notes that a message was modified or deleted.
    /// @param unread by how many the unread messages become more
    /// @return the contents' new change number
    std::int64_t Touch(MessageId message, RowChange::Kind kind, std::int64_t unread);
    /// The same for a new message, whose identifier it gives out in `message`.
    /// @throws Error MAPI_E_NOT_FOUND, MAPI_E_TOO_BIG when all numbers are used up
    std::int64_t Add(ContentsKey contents, std::int64_t unread, MessageId& message);
    /// After the date of a message was changed.
    void TouchDate(MessageId message);
    /// DateRuns::First of the contents.
    std::optional<std::vector<MessageId>> FirstByDate(ContentsKey contents, bool descending, size_t count);
    /// DateRuns::All of the contents.
    std::optional<std::vector<MessageId>> AllByRuns(ContentsKey contents);
    /// Notes that all messages were deleted at once.
    void Clear(ContentsKey contents);
    /// Notes that the folder tree has changed.
    void TouchTree();

private:
    struct Counters
    {
        std::uint64_t generation = 0; ///< the change number plus 1
        ULONG rows = 0;
    };
    struct Row;

    Counters CountersOf(ContentsKey contents);
    Counters ReadCounters(ContentsKey contents);
    Row Read(ContentsKey contents);
    void Write(ContentsKey contents, const Row& row, std::int64_t rows, std::int64_t unread);

    StoreConnection& m_connection;
    DateRuns m_runs;
    // Under the lock: what was read since the commit of this number.
    std::unordered_map<std::int64_t, Counters> m_counters;
    std::uint64_t m_commit = 0;
};

} // namespace zebstore
