// The repair of what is counted.
#pragma once

#include "zebstore/storage/StoreConnection.h"
#include "zebstore/storage/StoreIds.h"
#include "zebstore/storage/WorkReport.h"

#include <vector>

namespace zebstore
{

/// The counters of messages in each folder and of the entries of the address book. In the caller's transaction.
class CounterRepair
{
public:
    CounterRepair(Database& database, const WorkReport& report);

    /// Counts again; what does not match is corrected, and open tables read everything again.
    void Mend();

private:
    struct Counters
    {
        ContentsKey contents;
        std::int64_t rows = 0;
        std::int64_t unread = 0;
        std::int64_t next = 0; ///< the number that the next message gets
    };

    std::vector<Counters> WrongCounters();
    void Correct(const Counters& counters);
    void MendDirectory();
    std::int64_t NumberOf(Query&& query) const;

    Database& m_database;
    const WorkReport& m_report;
};

} // namespace zebstore
