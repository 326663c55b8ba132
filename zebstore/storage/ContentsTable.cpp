#include "zebstore/storage/ContentsTable.h"

#include "zebstore/storage/RecentChanges.h"

#include <unordered_set>

namespace zebstore
{

namespace
{

[[noreturn]] void ThrowGone(const Database& database)
{
    throw Error(MAPI_E_NOT_FOUND, "the folder does not exist in the store file '" + database.Path() + "'");
}

} // namespace

struct ContentsTable::Row
{
    std::int64_t next = 0;
    std::int64_t change = 0;
    std::string recent;

    bool HasRun(MessageId message) const
    {
        const ContentsKey contents = ContentsKey::Of(message);
        return DateRuns::HasRuns(contents) && message < DateRuns::OpenGroup(contents, next);
    }
    // No table shows the messages inside attachments, so they have no log.
    void Note(MessageId message, RowChange::Kind kind)
    {
        ++change;
        if (!ContentsKey::Of(message).IsEmbedded())
        {
            AddRecent(recent, message, kind);
        }
    }
};

// Asked at each call of a table: the file is read only when something was committed since.
ContentsTable::Counters ContentsTable::CountersOf(ContentsKey contents)
{
    const std::lock_guard hold(m_connection.Lock());
    const std::uint64_t commit = m_connection.Db().Commits();
    if (commit == 0)
    {
        return ReadCounters(contents);
    }
    if (commit != m_commit)
    {
        m_counters.clear();
        m_commit = commit;
    }
    const auto known = m_counters.find(contents.Column());
    if (known != m_counters.end())
    {
        return known->second;
    }
    return m_counters[contents.Column()] = ReadCounters(contents);
}

ContentsTable::Counters ContentsTable::ReadCounters(ContentsKey contents)
{
    Query query(m_connection.Db(), "SELECT change, rows FROM contents WHERE container=?");
    if (!query.Bind(1, contents.Column()).Step())
    {
        return {};
    }
    return {static_cast<std::uint64_t>(query.Number(0)) + 1, static_cast<ULONG>(query.Number(1))};
}

void ContentsTable::RequireAllRows(ContentsKey contents)
{
    const StoreSnapshot snapshot(m_connection);
    const ULONG counted = ReadCounters(contents).rows;
    Query query(m_connection.Db(), "SELECT count(*) FROM message WHERE id BETWEEN ? AND ?");
    query.Bind(1, contents.FirstMessage()).Bind(2, contents.LastMessage()).Step();
    if (query.Number(0) != counted)
    {
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + m_connection.Path() + "' is damaged: only " +
                                              std::to_string(query.Number(0)) + " of " + std::to_string(counted) +
                                              " messages of folder " + std::to_string(contents.Folder()) +
                                              " can be read");
    }
}

// Between two changes of the tree the sum of all change numbers only rises; a deleted folder changes the tree.
std::uint64_t ContentsTable::ChangeStamp()
{
    const StoreSnapshot snapshot(m_connection);
    Query query(m_connection.Db(), "SELECT sum(change) FROM contents");
    query.Step();
    return (TreeGeneration() << 32) + (static_cast<std::uint64_t>(query.Number(0)) & 0xFFFFFFFF);
}

RowChanges ContentsTable::ChangesSince(ContentsKey contents, std::uint64_t generation)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT change, recent FROM contents WHERE container=?");
    if (!query.Bind(1, contents.Column()).Step())
    {
        return {RowChanges::Extent::Replaced, {}};
    }
    const auto now = static_cast<std::uint64_t>(query.Number(0)) + 1;
    if (generation == 0 || generation > now || now - generation > MostRecent)
    {
        return {};
    }
    RowChanges changes = LastRecent(query.Bytes(1), contents, now - generation);
    std::unordered_set<RowKey> listed;
    RowChanges first{changes.extent, {}};
    for (RowChange& change : changes.rows)
    {
        if (listed.insert(change.key).second)
        {
            first.rows.push_back(change);
        }
    }
    return first;
}

void ContentsTable::RequireExists(ContentsKey contents)
{
    Query query(m_connection.Db(), "SELECT 1 FROM contents WHERE container=?");
    if (!query.Bind(1, contents.Column()).Step())
    {
        ThrowGone(m_connection.Db());
    }
}

ContentsTable::Row ContentsTable::Read(ContentsKey contents)
{
    Query query(m_connection.Db(), "SELECT next, change, recent FROM contents WHERE container=?");
    if (!query.Bind(1, contents.Column()).Step())
    {
        ThrowGone(m_connection.Db());
    }
    if (query.Number(0) < 1 || query.Number(0) > ContentsKey::LastNumber + 1 || !IsChangeNumber(query.Number(1)))
    {
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + m_connection.Path() +
                                              "' is damaged: the counters of folder " +
                                              std::to_string(contents.Folder()) + " cannot be right");
    }
    return {query.Number(0), query.Number(1), std::string(query.Bytes(2))};
}

// A SELECT before the UPDATE: RETURNING would build a table of its own for each run.
void ContentsTable::Write(ContentsKey contents, const Row& row, std::int64_t rows, std::int64_t unread)
{
    Query(m_connection.Db(), "UPDATE contents SET rows=rows+?2, unread=unread+?3, next=?4, change=?5, recent=?6 "
                             "WHERE container=?1")
        .Bind(1, contents.Column())
        .Bind(2, rows)
        .Bind(3, unread)
        .Bind(4, row.next)
        .Bind(5, row.change)
        .BindBlob(6, row.recent)
        .Run();
}

void ContentsTable::Insert(ContentsKey contents)
{
    Query query(m_connection.Db(),
                "INSERT INTO contents(container, folder, rows, unread, next, change) VALUES(?, ?, 0, 0, 1, 1)");
    query.Bind(1, contents.Column());
    if (contents.IsEmbedded())
    {
        query.BindNull(2);
    }
    else
    {
        query.Bind(2, contents.Folder());
    }
    query.Run();
}

std::int64_t ContentsTable::Touch(MessageId message, RowChange::Kind kind, std::int64_t unread)
{
    const ContentsKey contents = ContentsKey::Of(message);
    Row row = Read(contents);
    row.Note(message, kind);
    const bool isDeleted = kind == RowChange::Kind::Deleted;
    Write(contents, row, isDeleted ? -1 : 0, unread);
    if (isDeleted && row.HasRun(message))
    {
        m_runs.Forget(message);
    }
    return row.change;
}

std::int64_t ContentsTable::Add(ContentsKey contents, std::int64_t unread, MessageId& message)
{
    Row row = Read(contents);
    if (row.next > ContentsKey::LastNumber)
    {
        throw Error(MAPI_E_TOO_BIG, "folder " + std::to_string(contents.Folder()) + " of the store file '" +
                                        m_connection.Path() + "' has no number left for a message");
    }
    message = contents.Message(row.next);
    ++row.next;
    if (message == DateRuns::GroupOf(message) && DateRuns::HasRuns(contents))
    {
        m_runs.Make(message - DateRuns::RunLength);
    }
    row.Note(message, RowChange::Kind::Added);
    Write(contents, row, 1, unread);
    return row.change;
}

void ContentsTable::TouchDate(MessageId message)
{
    if (Read(ContentsKey::Of(message)).HasRun(message))
    {
        m_runs.Make(DateRuns::GroupOf(message));
    }
}

std::optional<std::vector<MessageId>> ContentsTable::FirstByDate(ContentsKey contents, bool descending, size_t count)
{
    const StoreSnapshot snapshot(m_connection);
    return m_runs.First(contents, DateRuns::OpenGroup(contents, Read(contents).next), descending, count);
}

std::optional<std::vector<MessageId>> ContentsTable::AllByRuns(ContentsKey contents)
{
    const StoreSnapshot snapshot(m_connection);
    return m_runs.All(contents, DateRuns::OpenGroup(contents, Read(contents).next), Rows(contents));
}

void ContentsTable::Clear(ContentsKey contents)
{
    const std::string recent = RecentReplaced();
    Query(m_connection.Db(), "UPDATE contents SET rows=0, unread=0, change=change+1, recent=?2 WHERE container=?1")
        .Bind(1, contents.Column())
        .BindBlob(2, recent)
        .Run();
    m_runs.Clear(contents);
}

void ContentsTable::TouchTree()
{
    Query(m_connection.Db(), "UPDATE contents SET change=change+1 WHERE container=?")
        .Bind(1, ContentsKey::Embedded().Column())
        .Run();
}

} // namespace zebstore
