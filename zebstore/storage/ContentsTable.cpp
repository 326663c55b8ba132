// The places of messages: counters, change numbers, and what the last changes were about.
#include "zebstore/storage/RecentChanges.h"
#include "zebstore/storage/StoreParts.h"

namespace zebstore
{

namespace
{

// The counters of a place of messages.
struct Place
{
    std::int64_t next = 0;
    std::int64_t change = 0;
    std::string recent;
};

Place ReadPlace(Database& database, std::int64_t container)
{
    Query query(database, "SELECT next, change, recent FROM contents WHERE container=?");
    query.Bind(1, container);
    if (!query.Step())
    {
        throw Error(MAPI_E_NOT_FOUND, "The folder is not in the store file '" + database.Path() + "' any more.");
    }
    return {query.Number(0), query.Number(1), std::string(query.Bytes(2))};
}

// A SELECT before the UPDATE: RETURNING would build a table of its own for each run.
void WritePlace(Database& database, std::int64_t container, const Place& place, std::int64_t rows, std::int64_t unread)
{
    Query(database, "UPDATE contents SET rows=rows+?2, unread=unread+?3, next=?4, change=?5, recent=?6 "
                    "WHERE container=?1")
        .Bind(1, container)
        .Bind(2, rows)
        .Bind(3, unread)
        .Bind(4, place.next)
        .Bind(5, place.change)
        .BindBlob(6, place.recent)
        .Run();
}

// Nobody has a table of the messages inside attachments.
void Note(Place& place, MessageId message, RowEvent event)
{
    ++place.change;
    if (ContainerOf(message) != 0)
    {
        AddRecent(place.recent, {message & 0xFFFFFFFF, event});
    }
}

} // namespace

void InsertContents(Database& database, std::int64_t container, FolderId folder)
{
    Query query(database,
                "INSERT INTO contents(container, folder, rows, unread, next, change) VALUES(?, ?, 0, 0, 1, 1)");
    query.Bind(1, container);
    if (folder == 0)
    {
        query.BindNull(2);
    }
    else
    {
        query.Bind(2, folder);
    }
    query.Run();
}

std::int64_t TouchContents(Database& database, MessageId message, RowEvent event, std::int64_t unread)
{
    const std::int64_t container = ContainerOf(message);
    Place place = ReadPlace(database, container);
    Note(place, message, event);
    WritePlace(database, container, place, event == RowEvent::Deleted ? -1 : 0, unread);
    return place.change;
}

std::int64_t AddToContents(Database& database, std::int64_t container, std::int64_t unread, MessageId& message)
{
    Place place = ReadPlace(database, container);
    message = FirstOf(container) | place.next;
    if (message > LastOf(container) || place.next > 0xFFFFFFFF)
    {
        throw Error(MAPI_E_TOO_BIG, "The folder has no number left for a message.");
    }
    ++place.next;
    Note(place, message, RowEvent::Added);
    WritePlace(database, container, place, 1, unread);
    return place.change;
}

void TouchWholeContents(Database& database, std::int64_t container)
{
    std::string recent;
    AddRecent(recent, RecentChange::Everything());
    Query(database, "UPDATE contents SET rows=0, unread=0, change=change+1, recent=?2 WHERE container=?1")
        .Bind(1, container)
        .BindBlob(2, recent)
        .Run();
}

void TouchTree(Database& database)
{
    Query(database, "UPDATE contents SET change=change+1 WHERE container=0").Run();
}

} // namespace zebstore
