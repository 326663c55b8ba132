#include "zebstore/storage/RecentChanges.h"
#include "zebstore/storage/ValueRepair.h"

#include <algorithm>

namespace zebstore
{

std::int64_t NumberOf(Query&& query)
{
    return query.Step() ? query.Number(0) : 0;
}

CounterRepair::CounterRepair(StoreFile& store, const WorkReport& report)
    : m_database(store.Connection())
    , m_report(report)
{
}

void CounterRepair::Mend()
{
    for (const Place& place : WrongPlaces())
    {
        Correct(place);
    }
    MendDirectory();
}

std::vector<CounterRepair::Place> CounterRepair::WrongPlaces()
{
    std::vector<Place> wrong;
    Query query(m_database, "SELECT c.container, count(m.id), CASE WHEN c.container=0 OR c.container & 1 THEN 0 ELSE "
                            "coalesce(sum((m.flags & 1) = 0), 0) END, coalesce(max(m.id) & 4294967295, 0) + 1, "
                            "c.rows, c.unread, c.next, c.recent FROM contents c LEFT JOIN message m ON "
                            "m.id BETWEEN c.container << 32 AND (c.container << 32) + 4294967295 GROUP BY c.container");
    // An empty place has one joined row without a message; a read flag of NULL counts nothing.
    while (query.Step())
    {
        const Place place{query.Number(0), query.Number(1), query.Number(1) == 0 ? 0 : query.Number(2),
                          std::max(query.Number(3), query.Number(6))};
        if (place.rows != query.Number(4) || place.unread != query.Number(5) || place.next != query.Number(6) ||
            !IsRecentSound(query.Bytes(7)))
        {
            wrong.push_back(place);
        }
    }
    return wrong;
}

void CounterRepair::Correct(const Place& place)
{
    m_report.found("folder " + std::to_string(place.container >> 1) +
                   ": its counters do not match its messages: rebuilt (" + std::to_string(place.rows) + " messages, " +
                   std::to_string(place.unread) + " unread)");
    std::string recent;
    AddRecent(recent, RecentChange::Everything());
    Query(m_database, "UPDATE contents SET rows=?, unread=?, next=?, change=change+1, recent=? WHERE container=?")
        .Bind(1, place.rows)
        .Bind(2, place.unread)
        .Bind(3, place.next)
        .BindBlob(4, recent)
        .Bind(5, place.container)
        .Run();
}

void CounterRepair::MendDirectory()
{
    const std::int64_t entries = NumberOf(Query(m_database, "SELECT count(*) FROM address"));
    if (NumberOf(Query(m_database, "SELECT count(*) FROM directory")) == 0)
    {
        m_database.Execute("INSERT INTO directory(id, rows, change) VALUES(1, -1, 0)");
    }
    if (NumberOf(Query(m_database, "SELECT rows FROM directory")) == entries)
    {
        return;
    }
    m_report.found("the address book does not count its " + std::to_string(entries) + " entries: corrected");
    Query(m_database, "UPDATE directory SET rows=?, change=change+1").Bind(1, entries).Run();
}

} // namespace zebstore
