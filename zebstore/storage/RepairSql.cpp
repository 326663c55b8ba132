#include "zebstore/storage/RepairSql.h"

#include <sqlite3.h>

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

} // namespace zebstore
