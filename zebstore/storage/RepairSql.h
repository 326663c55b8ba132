// Statements of a repair, reported by what they did.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/StoreFormat.h"
#include "zebstore/storage/WorkReport.h"

#include <initializer_list>
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

    /// Gives rows with a number that none can have the next one after the others.
    /// @param what a row of the table, for the report
    /// @param references the statements that make other rows follow: the new number and the old one are their parameters
    void Renumber(const NumberedTable& table, const char* what, std::initializer_list<const char*> references);

private:
    Database& m_sql;
    const WorkReport& m_found;
};

} // namespace zebstore
