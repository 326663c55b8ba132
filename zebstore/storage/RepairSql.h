// Statements of a repair, reported by what they did.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/WorkReport.h"

#include <string>

namespace zebstore
{

/// In the caller's transaction.
class RepairSql
{
protected:
    RepairSql(Database& database, const WorkReport& report)
        : m_sql(database)
        , m_found(report)
    {
    }

    /// Reports "N WHAT" when the statement changed N rows.
    void Change(const std::string& what, const std::string& sql);
    void Remove(const std::string& what, const std::string& sql) { Change(what + ": removed", sql); }

private:
    Database& m_sql;
    const WorkReport& m_found;
};

} // namespace zebstore
