#include "zebapi/tables/Table.h"

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/internal/Calls.h"
#include "zebapi/frame/internal/EntryPoints.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/tables/internal/TableNumbers.h"
#include "zebapi/values/TAGS.h"

#include <cstdarg>
#include <cstdint>
#include <new>

namespace
{

/// Rows of one batch of CZebTableRows.
constexpr LONG RowsInBatch = 100;

/// The host's 32-bit number for a number of the table. When out of memory, `giveBack` returns the number to the table.
template <class GiveBack>
ULONG GivenOut(IMAPITable* table, zeb::TableNumber kind, ULONG_PTR number, GiveBack giveBack)
{
    try
    {
        return zeb::ShortNumber(table, kind, number);
    }
    catch (const std::bad_alloc&)
    {
        giveBack();
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
}

} // namespace

CZebTable::CZebTable(IMAPITable* table)
    : m_table(table)
{
}

CZebTable::CZebTable(const CZebTable& other)
{
    *this = other;
}

CZebTable::~CZebTable()
{
    CZebTable::Free();
}

CZebTable& CZebTable::operator=(const CZebTable& other)
{
    zeb::Guarded([&]
    {
        Free();
        m_table = other.m_table;
        if (!IsValid())
        {
            CZebException::Throw(E_NOINTERFACE);
        }
    });
    return *this;
}

void CZebTable::Advise(IMAPIAdviseSink* sink, ULONG* connection)
{
    // Zeroed: the Windows Address Book writes only the lower half.
    ULONG_PTR number = 0;
    ThrowIfFailed(m_table->Advise(fnevTableModified, sink, &number), m_table);
    *connection = GivenOut(m_table.Get(), zeb::TableNumber::Connection, number, [&] { m_table->Unadvise(number); });
}

void CZebTable::Unadvise(ULONG connection)
{
    const ULONG_PTR number = zeb::WholeNumber(m_table.Get(), zeb::TableNumber::Connection, connection);
    zeb::ThrowIfFailedAbout([connection] { return zeb::NumberText("connection", connection); },
                            m_table->Unadvise(number), m_table);
    zeb::ForgetNumber(m_table.Get(), zeb::TableNumber::Connection, connection);
}

bool CZebTable::IsValid() const
{
    return m_table.Get() != nullptr;
}

void CZebTable::SetColumns(ULONG count, ...)
{
    // Using an empty handle is reported first, even when memory for the columns is missing.
    m_table.Checked();
    CZebPropTagArray columns;
    columns.Reserve(count);
    va_list tags;
    va_start(tags, count);
    columns.Fill(count, tags);
    va_end(tags);
    SetColumns(static_cast<SPropTagArray*>(columns));
}

void CZebTable::SetColumns(SPropTagArray* columns)
{
    zeb::ThrowIfFailedAbout([columns] { return zeb::TagsText(columns); }, m_table->SetColumns(columns, 0), m_table);
}

void CZebTable::SortTable(SSortOrderSet* order)
{
    ThrowIfFailed(m_table->SortTable(order, 0), m_table);
}

void CZebTable::QueryRows(SRowSet** rows, LONG count, SRestriction* restriction, SSortOrderSet* order)
{
    if (count == 0)
    {
        if (restriction != nullptr)
        {
            Restrict(restriction, 0);
        }
        if (order != nullptr)
        {
            SortTable(order);
        }
        const ULONG all = GetRowCount();
        if (all > INT32_MAX)
        {
            // It would count as a negative row count (backwards).
            CZebException::Throw(MAPI_E_TABLE_TOO_BIG);
        }
        count = static_cast<LONG>(all);
    }
    zeb::ThrowIfFailedAbout([count] { return zeb::RowsText(count); }, m_table->QueryRows(count, 0, rows), m_table);
}

void CZebTable::QueryAllRows(SRowSet** rows, SRestriction* restriction, SSortOrderSet* order)
{
    ThrowIfFailed(zeb::HrQueryAllRows(m_table.Checked(), nullptr, restriction, order, 0, rows), m_table);
}

ULONG CZebTable::CreateBookmark()
{
    // Zeroed: the Windows Address Book writes only the lower half.
    BOOKMARK bookmark = 0;
    ThrowIfFailed(m_table->CreateBookmark(&bookmark), m_table);
    return GivenOut(m_table.Get(), zeb::TableNumber::Bookmark, bookmark, [&] { m_table->FreeBookmark(bookmark); });
}

void CZebTable::FreeBookmark(ULONG bookmark)
{
    const BOOKMARK number = zeb::WholeNumber(m_table.Get(), zeb::TableNumber::Bookmark, bookmark);
    zeb::ThrowIfFailedAbout([bookmark] { return zeb::NumberText("bookmark", bookmark); }, m_table->FreeBookmark(number),
                            m_table);
    zeb::ForgetNumber(m_table.Get(), zeb::TableNumber::Bookmark, bookmark);
}

ULONG CZebTable::GetRowCount()
{
    ULONG count = 0;
    ThrowIfFailed(m_table->GetRowCount(0, &count), m_table);
    return count;
}

ULONG CZebTable::QueryPosition()
{
    ULONG row = 0;
    ULONG numerator = 0;
    ULONG denominator = 0;
    ThrowIfFailed(m_table->QueryPosition(&row, &numerator, &denominator), m_table);
    return row;
}

void CZebTable::SeekRow(ULONG origin, LONG rowCount, LONG* rowsSought)
{
    const BOOKMARK bookmark = zeb::WholeNumber(m_table.Get(), zeb::TableNumber::Bookmark, origin);
    zeb::ThrowIfFailedAbout([=] { return zeb::RowsText(rowCount) + " from " + zeb::NumberText("bookmark", origin); },
                            m_table->SeekRow(bookmark, rowCount, rowsSought), m_table);
}

bool CZebTable::FindRow(SRestriction* restriction, ULONG origin, ULONG flags)
{
    try
    {
        const BOOKMARK bookmark = zeb::WholeNumber(m_table.Get(), zeb::TableNumber::Bookmark, origin);
        zeb::ThrowIfFailedAbout([origin] { return "from " + zeb::NumberText("bookmark", origin); },
                                m_table->FindRow(restriction, bookmark, flags), m_table);
        return true;
    }
    catch (CZebException* e)
    {
        if (e->GetResult() != MAPI_E_NOT_FOUND)
        {
            throw;
        }
        e->Delete();
        return false;
    }
}

void CZebTable::Restrict(SRestriction* restriction, ULONG flags)
{
    ThrowIfFailed(m_table->Restrict(restriction, flags), m_table);
}

void CZebTable::Free()
{
    zeb::Guarded([&] { m_table.Release(); });
}

void CZebTable::QueryColumns(SPropTagArray** columns, ULONG flags)
{
    ThrowIfFailed(m_table->QueryColumns(flags, columns), m_table);
    zeb::RequireObject(*columns != nullptr);
}

CZebTableRows CZebTable::RowsOf(ULONG count, const ULONG* tags)
{
    // Using an empty handle is reported as such, whether or not there is memory for the columns.
    m_table.Checked();
    CZebPropTagArray columns;
    for (ULONG i = 0; i < count; ++i)
    {
        columns.AddOne(tags[i]);
    }
    SetColumns(static_cast<SPropTagArray*>(columns));
    SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    return CZebTableRows(*this);
}

CZebTableRows::CZebTableRows(const CZebTable& table)
    : m_table(table)
{
}

CZebTableRows::~CZebTableRows() = default;

CZebTableRows::Iterator CZebTableRows::begin()
{
    if (IsAtEnd())
    {
        ReadBatch();
    }
    return Iterator(this);
}

bool CZebTableRows::IsAtEnd() const
{
    return !m_batch.IsValid() || m_index >= m_batch.Count();
}

CZebRow CZebTableRows::Current() const
{
    return m_batch[m_index];
}

void CZebTableRows::Advance()
{
    ++m_index;
    if (IsAtEnd())
    {
        ReadBatch();
    }
}

void CZebTableRows::ReadBatch()
{
    // A provider may give fewer rows than asked for before the last one; no row at all is the end.
    m_index = 0;
    m_table.QueryRows(&m_batch, RowsInBatch, nullptr, nullptr);
}
