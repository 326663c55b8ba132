#include "bench/TableReads.h"

#include "bench/Harness.h"

#include <stdexcept>

namespace bench
{

void SetListColumns(CZebTable& table)
{
    table.SetColumns(4, PR_ENTRYID, PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_DELIVERY_TIME);
}

void SortBySubject(CZebTable& table)
{
    SetListColumns(table);
    CZebSortOrder order(PR_SUBJECT_W, TABLE_SORT_ASCEND);
    table.SortTable(order);
}

void ReadWindow(CZebTable& table, ULONG expected)
{
    CZebRowSet rows;
    table.QueryRows(&rows, ListWindow, nullptr, nullptr);
    if (rows.Count() != expected)
    {
        throw std::runtime_error("A window did not hold the rows it should.");
    }
    Keep(rows[0][PR_SUBJECT_W].GetTag());
}

double OpenOnce(CZebFolder& folder, ULONG count)
{
    return Seconds([&]
    {
        CZebTable table = folder.GetContentsTable(MAPI_UNICODE);
        SetListColumns(table);
        if (table.GetRowCount() != count)
        {
            throw std::runtime_error("The table did not count every row.");
        }
        ReadWindow(table, ListWindow);
    });
}

SoughtTable::SoughtTable(std::shared_ptr<void> owner, CZebFolder& folder, ULONG count)
    : m_owner(std::move(owner))
    , m_table(folder.GetContentsTable(MAPI_UNICODE))
    , m_positions(0, count - ListWindow)
{
    SetListColumns(m_table);
    m_table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(count / 2), nullptr);
    ReadWindow(m_table, ListWindow);
}

double SoughtTable::Windows(int count)
{
    return Seconds([&]
    {
        for (int i = 0; i < count; ++i)
        {
            m_table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(m_positions(m_random)), nullptr);
            ReadWindow(m_table, ListWindow);
        }
    });
}

} // namespace bench
