#include "zebstore/storage/CounterRepair.h"

#include "zebstore/storage/ContentsTable.h"
#include "zebstore/storage/RecentChanges.h"

#include <algorithm>

namespace zebstore
{

CounterRepair::CounterRepair(Database& database, const WorkReport& report)
    : m_database(database)
    , m_report(report)
{
}

void CounterRepair::Mend()
{
    for (const Counters& counters : WrongCounters())
    {
        Correct(counters);
    }
    MendDirectory();
}

// The first column of the first row, 0 without a row.
std::int64_t CounterRepair::NumberOf(Query&& query) const
{
    return query.Step() ? query.Number(0) : 0;
}

std::vector<CounterRepair::Counters> CounterRepair::WrongCounters()
{
    std::vector<Counters> wrong;
    Query query(m_database,
                "SELECT c.container, count(m.id), coalesce(sum((m.flags & ?1) = 0), 0), "
                "coalesce(max(m.id) & ?2, 0) + 1, c.rows, c.unread, c.next, c.recent, c.change FROM contents c "
                "LEFT JOIN message m ON m.id BETWEEN c.container << ?3 AND (c.container << ?3) + ?2 "
                "GROUP BY c.container");
    query.Bind(1, MSGFLAG_READ).Bind(2, ContentsKey::LastNumber).Bind(3, ContentsKey::MessageBits);
    // Empty contents have one joined row without a message; a read flag of NULL counts nothing.
    while (query.Step())
    {
        const ContentsKey contents = ContentsKey::FromColumn(query.Number(0));
        const bool hasNext = query.Number(6) <= ContentsKey::LastNumber + 1;
        const Counters counted{contents, query.Number(1), contents.CountsUnread() ? query.Number(2) : 0,
                               hasNext ? std::max(query.Number(3), query.Number(6)) : query.Number(3)};
        if (counted.rows != query.Number(4) || counted.unread != query.Number(5) || counted.next != query.Number(6) ||
            !IsRecentSound(query.Bytes(7)) || !ContentsTable::IsChangeNumber(query.Number(8)))
        {
            wrong.push_back(counted);
        }
    }
    return wrong;
}

void CounterRepair::Correct(const Counters& counters)
{
    m_report.found("folder " + std::to_string(counters.contents.Folder()) +
                   ": its counters do not match its messages: rebuilt (" + std::to_string(counters.rows) +
                   " messages, " + std::to_string(counters.unread) + " unread)");
    const std::string recent = RecentReplaced();
    Query(m_database,
          "UPDATE contents SET rows=?, unread=?, next=?, recent=?, change=iif(change BETWEEN 0 AND (1 << 62) - 1, "
          "change+1, 1) WHERE container=?")
        .Bind(1, counters.rows)
        .Bind(2, counters.unread)
        .Bind(3, counters.next)
        .BindBlob(4, recent)
        .Bind(5, counters.contents.Column())
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
