#include "zebstore/storage/RepairSql.h"

#include <sqlite3.h>

#include <vector>

namespace zebstore
{

void RepairSql::Change(const std::string& what, const std::string& sql)
{
    m_sql.Execute(sql.c_str());
    if (const std::int64_t changed = sqlite3_changes64(m_sql.Handle()); changed != 0)
    {
        m_found.found(std::to_string(changed) + " " + what);
    }
}

void RepairSql::Renumber(const NumberedTable& table, const char* what, std::initializer_list<const char*> references)
{
    const std::string name = table.name;
    const std::string last = std::to_string(table.last);
    const std::vector<std::int64_t> wrong =
        Query(m_sql, "SELECT id FROM " + name + " WHERE id NOT BETWEEN 1 AND " + last).Numbers();
    for (const std::int64_t old : wrong)
    {
        const std::int64_t next =
            Query(m_sql, "SELECT coalesce(max(id), 0)+1 FROM " + name + " WHERE id BETWEEN 1 AND " + last).Numbers()[0];
        for (const std::string reference : references)
        {
            Query(m_sql, reference).Bind(1, next).Bind(2, old).Run();
        }
        Query(m_sql, "UPDATE " + name + " SET id=? WHERE id=?").Bind(1, next).Bind(2, old).Run();
        m_found.found(what + (" " + std::to_string(old)) + ": none has such a number: it is now " +
                      std::to_string(next));
    }
}

} // namespace zebstore
