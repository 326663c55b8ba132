#include "tools/zebview/RowList.h"

#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyValues.h"
#include "tools/zebview/Mailbox.h"

#include <algorithm>

namespace zeb::view
{
namespace
{

/// A row that moved because others were added or deleted is first looked for so many rows around its place.
constexpr ULONG NearRows = 60;
/// More rows than a screen shows.
constexpr size_t MostRead = 500;
/// A folder of more messages opens in the order that the provider has, which it need not compute.
constexpr ULONG MostSortedAtOnce = 50'000;

/// Gives up an exception for a row that is not there any more; throws others on.
void ForgetMissingRow(CZebException* exception)
{
    if (exception->GetResult() != MAPI_E_NOT_FOUND && exception->GetResult() != E_INVALIDARG)
    {
        throw exception;
    }
    exception->Delete();
}

} // namespace

RowList::RowList(const CZebTable& table, const RowKind& kind, HWND listener)
    : m_kind(kind)
    , m_sort(kind.firstSort)
    , m_isDescending(kind.columns[static_cast<size_t>(kind.firstSort)].descendsFirst)
{
    m_table.SetOwnerWindow(listener);
    m_table = table;
    CZebPropTagArray tags = tools::TagArray(kind.tags);
    m_table.SetColumns(static_cast<SPropTagArray*>(tags));
    if (m_table.GetRowCount() > MostSortedAtOnce)
    {
        m_sort = Unsorted;
        return;
    }
    Sort();
}

ULONG RowList::Count()
{
    m_read.clear();
    m_count = m_table.GetRowCount();
    return m_count;
}

RowList::Row RowList::Read(ULONG row)
{
    Row read;
    if (row >= m_count)
    {
        return read;
    }
    try
    {
        const CZebRow cells = m_table[row];
        for (const RowColumn& column : m_kind.columns)
        {
            read.texts.push_back(tools::OneLine(column.text(cells)));
        }
        read.key = cells.hasRealValue(PR_ENTRYID) ? KeyOf(static_cast<const SBinary&>(cells[PR_ENTRYID])) : "";
        read.isUnread =
            cells.hasRealValue(PR_MESSAGE_FLAGS) && (tools::NumberOf(cells, PR_MESSAGE_FLAGS) & MSGFLAG_READ) == 0;
    }
    catch (CZebException* exception)
    {
        ForgetMissingRow(exception);
        read = {};
    }
    return read;
}

const RowList::Row& RowList::At(ULONG row)
{
    const auto found = m_read.find(row);
    if (found != m_read.end())
    {
        return found->second;
    }
    if (m_read.size() >= MostRead)
    {
        m_read.clear();
    }
    return m_read[row] = Read(row);
}

std::string RowList::Text(ULONG row, int column)
{
    const std::vector<std::string>& texts = At(row).texts;
    return texts.empty() ? std::string() : texts[static_cast<size_t>(column)];
}

bool RowList::IsUnread(ULONG row)
{
    return At(row).isUnread;
}

std::string RowList::KeyAt(ULONG row)
{
    return At(row).key;
}

LONG RowList::Find(const std::string& key, ULONG around)
{
    const ULONG begin = around > NearRows ? around - NearRows : 0;
    for (ULONG row = begin; row < std::min(m_count, around + NearRows); ++row)
    {
        if (KeyAt(row) == key)
        {
            return static_cast<LONG>(row);
        }
    }
    CZebRestrictionAllocator restriction;
    restriction.Allocate();
    const SBinary entryId = EntryIdOf(key);
    restriction.CreateProp(PR_ENTRYID, RELOP_EQ) = entryId;
    try
    {
        return m_table.FindRow(restriction, BOOKMARK_BEGINNING, 0) ? static_cast<LONG>(m_table.QueryPosition()) : -1;
    }
    catch (CZebException* exception)
    {
        ForgetMissingRow(exception);
        return -1;
    }
}

void RowList::Sort()
{
    const ULONG direction = m_isDescending ? TABLE_SORT_DESCEND : TABLE_SORT_ASCEND;
    CZebSortOrder order(0, 0);
    for (const ULONG tag : m_kind.columns[static_cast<size_t>(m_sort)].sortTags)
    {
        order.Add(tag, direction);
    }
    m_table.SortTable(order);
}

void RowList::SortBy(int column)
{
    const RowColumn& chosen = m_kind.columns[static_cast<size_t>(column)];
    if (chosen.sortTags.empty())
    {
        return;
    }
    m_isDescending = column == m_sort ? !m_isDescending : chosen.descendsFirst;
    m_sort = column;
    Sort();
}

void RowList::Filter(const std::string& text)
{
    if (text.empty())
    {
        m_table.Restrict(nullptr, 0);
        return;
    }
    const CStringW wide = tools::WideFromUtf8(text);
    CZebRestrictionAllocator restriction;
    restriction.Allocate();
    restriction.CreateOr(static_cast<ULONG>(m_kind.filterTags.size()));
    for (size_t i = 0; i < m_kind.filterTags.size(); ++i)
    {
        restriction[static_cast<ULONG>(i)].CreateContentW(m_kind.filterTags[i], wide, FL_SUBSTRING | FL_IGNORECASE);
    }
    m_table.Restrict(restriction, 0);
}

} // namespace zeb::view
