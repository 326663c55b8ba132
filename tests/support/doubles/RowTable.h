// A double of IMAPITable over a test's rows: records every call, seeks, filters and notifies.
#pragma once

#include "tests/support/doubles/RecordingProp.h"
#include "zebapi/frame/internal/EntryPoints.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace zeb::test
{

using RowData = std::vector<Property>;

/// The rows in MAPI memory, each in a separate buffer.
inline SRowSet* NewRowSet(const std::vector<RowData>& rows)
{
    const auto count = static_cast<ULONG>(rows.size());
    auto* set = static_cast<SRowSet*>(Zeb_MemAllocate(CbNewSRowSet(count + 1), nullptr));
    set->cRows = count;
    for (ULONG i = 0; i < count; ++i)
    {
        SRow& row = set->aRow[i];
        row.cValues = static_cast<ULONG>(rows[i].size());
        row.lpProps = static_cast<SPropValue*>(Zeb_MemAllocate((row.cValues + 1) * sizeof(SPropValue), nullptr));
        for (ULONG j = 0; j < row.cValues; ++j)
        {
            row.lpProps[j] = Filled(rows[i][j], rows[i][j].tag, row.lpProps);
        }
    }
    return set;
}

/// FreeProws and HrQueryAllRows of a provider, bound for the object's lifetime.
class TableEntryPoints
{
public:
    TableEntryPoints()
    {
        SetEntryPoint(EntryPoint::FreeProws, reinterpret_cast<void*>(&Free));
        SetEntryPoint(EntryPoint::HrQueryAllRows, reinterpret_cast<void*>(&QueryAll));
    }
    ~TableEntryPoints()
    {
        SetEntryPoint(EntryPoint::FreeProws, nullptr);
        SetEntryPoint(EntryPoint::HrQueryAllRows, nullptr);
    }
    TableEntryPoints(const TableEntryPoints&) = delete;
    TableEntryPoints& operator=(const TableEntryPoints&) = delete;

private:
    static void WINAPI Free(SRowSet* rows)
    {
        for (ULONG i = 0; rows != nullptr && i < rows->cRows; ++i)
        {
            Zeb_MemFree(rows->aRow[i].lpProps);
        }
        Zeb_MemFree(rows);
    }
    static HRESULT WINAPI QueryAll(IMAPITable* table, SPropTagArray* tags, SRestriction* restriction,
                                   SSortOrderSet* order, LONG maxRows, SRowSet** rows)
    {
        EXPECT_TRUE(tags == nullptr && restriction == nullptr && order == nullptr && maxRows == 0);
        return table->QueryRows(0x7FFFFFFF, 0, rows);
    }
};

class RowTable : public Counted<IMAPITable>
{
public:
    explicit RowTable(Journal& journal, std::string name = "table")
        : Counted<IMAPITable>(journal, std::move(name), {&IID_IUnknown, &IID_IMAPITable})
    {
    }
    /// The rows, independent of the set columns.
    std::vector<RowData> m_rows;
    /// Runs inside QueryRows, before the rows are returned.
    std::function<void()> m_whileReading;
    /// QueryRows succeeds with a null set.
    bool m_givesNothing = false;
    /// The connection number that Advise returns: all 64 bits are significant.
    ULONG_PTR m_connection = 0xABABABAB0000004D;
    bool m_fillsConnectionOnFailure = false;
    /// Runs inside Advise, when the sink is known and the connection not yet returned.
    std::function<void()> m_whileAdvising;
    /// Run inside the method of that name, before anything is returned.
    std::function<void()> m_whileCounting;
    std::function<void()> m_whileSeeking;

    /// Sends one event to the sink, like a provider.
    void Notify(ULONG tableEvent)
    {
        NOTIFICATION notification = {};
        notification.ulEventType = fnevTableModified;
        notification.info.tab.ulTableEvent = tableEvent;
        m_sink->OnNotify(1, &notification);
    }
    IMAPIAdviseSink* Sink() const { return m_sink; }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override
    {
        const ProviderScope inside;
        return LastError(result, flags, error);
    }
    HRESULT STDMETHODCALLTYPE Advise(ULONG events, LPMAPIADVISESINK sink, ULONG_PTR* connection) override
    {
        const ProviderScope inside;
        const HRESULT result =
            Called("Advise", Number(events), Require(events != 0 && sink != nullptr && connection != nullptr));
        if (sink != nullptr && (SUCCEEDED(result) || m_whileAdvising))
        {
            HandOut(sink, &m_sink);
        }
        if (m_whileAdvising)
        {
            m_whileAdvising();
        }
        if (FAILED(result) && m_sink != nullptr)
        {
            std::exchange(m_sink, nullptr)->Release();
        }
        if (SUCCEEDED(result) || m_fillsConnectionOnFailure)
        {
            *connection = m_connection;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR connection) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("Unadvise", Number(connection), Require(connection == m_connection));
        if (m_sink != nullptr && connection == m_connection)
        {
            m_sink->Release();
            m_sink = nullptr;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray columns, ULONG flags) override
    {
        const ProviderScope inside;
        return Called("SetColumns", Tags(columns) + "," + Number(flags),
                      FirstOf({RefuseFlags(flags, TBL_ASYNC | TBL_BATCH), RequireTags(columns)}));
    }
    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG flags, ULONG* count) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("GetRowCount", Number(flags), RefuseFlags(flags, 0));
        if (m_whileCounting)
        {
            m_whileCounting();
        }
        *count = m_claimedCount != 0 ? m_claimedCount : static_cast<ULONG>(m_rows.size());
        return result;
    }
    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG count, LONG* sought) override
    {
        const ProviderScope inside;
        const HRESULT result =
            Called("SeekRow", Number(origin) + "," + std::to_string(count) + ",sought " + Null(sought));
        m_position = static_cast<size_t>(count);
        if (m_whileSeeking)
        {
            m_whileSeeking();
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) override
    {
        const ProviderScope inside;
        return Called("FindRow", Null(restriction) + "," + Number(origin) + "," + Number(flags),
                      FirstOf({RefuseFlags(flags, DIR_BACKWARD), Require(restriction != nullptr)}));
    }
    /// Records a property restriction with its value; filters the rows when the column is text.
    HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction restriction, ULONG flags) override
    {
        const ProviderScope inside;
        if (restriction == nullptr)
        {
            return Called("Restrict", "null," + Number(flags), RefuseFlags(flags, TBL_ASYNC | TBL_BATCH));
        }
        const SPropertyRestriction& wanted = restriction->res.resProperty;
        m_position = 0;
        const HRESULT result =
            Called("Restrict",
                   Number(restriction->rt) + "," + Number(wanted.relop) + "," + Number(wanted.ulPropTag) + "," +
                       Value(*wanted.lpProp) + "," + Number(flags),
                   FirstOf({RefuseFlags(flags, TBL_ASYNC | TBL_BATCH), RequireWritable(*wanted.lpProp)}));
        if (this->Stops(result))
        {
            return result;
        }
        m_rows.erase(std::remove_if(m_rows.begin(), m_rows.end(),
                                    [&](const RowData& row) { return !Matches(row, *wanted.lpProp); }),
                     m_rows.end());
        return result;
    }
    HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet order, ULONG flags) override
    {
        const ProviderScope inside;
        return Called("SortTable", Null(order) + "," + Number(flags),
                      FirstOf({RefuseFlags(flags, TBL_ASYNC | TBL_BATCH), Require(order != nullptr)}));
    }
    HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG flags, LPSRowSet* rows) override
    {
        const ProviderScope inside;
        *rows = nullptr;
        const HRESULT result =
            Called("QueryRows", std::to_string(count) + "," + Number(flags), RefuseFlags(flags, TBL_NOADVANCE));
        if (m_whileReading)
        {
            m_whileReading();
        }
        if (this->Stops(result) || m_givesNothing)
        {
            return result;
        }
        const size_t first = std::min(m_position, m_rows.size());
        const size_t last = std::min(first + static_cast<size_t>(count), m_rows.size());
        *rows = NewRowSet(std::vector<RowData>(m_rows.begin() + static_cast<std::ptrdiff_t>(first),
                                               m_rows.begin() + static_cast<std::ptrdiff_t>(last)));
        m_position = last;
        return result;
    }
    HRESULT STDMETHODCALLTYPE GetStatus(ULONG*, ULONG*) override { return Unexpected("GetStatus"); }
    /// The columns of the first row.
    HRESULT STDMETHODCALLTYPE QueryColumns(ULONG flags, LPSPropTagArray* columns) override
    {
        const ProviderScope inside;
        *columns = nullptr;
        const HRESULT result = Called("QueryColumns", Number(flags), RefuseFlags(flags, TBL_ALL_COLUMNS));
        if (this->Stops(result) || m_givesNothing)
        {
            return result;
        }
        const RowData first = m_rows.empty() ? RowData() : m_rows.front();
        const auto count = static_cast<ULONG>(first.size());
        *columns = static_cast<SPropTagArray*>(Zeb_MemAllocate(CbNewSPropTagArray(count + 1), nullptr));
        for (; (*columns)->cValues < count; ++(*columns)->cValues)
        {
            (*columns)->aulPropTag[(*columns)->cValues] = first[(*columns)->cValues].tag;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG, ULONG) override { return Unexpected("SeekRowApprox"); }
    HRESULT STDMETHODCALLTYPE QueryPosition(ULONG*, ULONG*, ULONG*) override { return Unexpected("QueryPosition"); }
    HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK*) override { return Unexpected("CreateBookmark"); }
    HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK) override { return Unexpected("FreeBookmark"); }
    HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet*) override { return Unexpected("QuerySortOrder"); }
    HRESULT STDMETHODCALLTYPE Abort() override { return Unexpected("Abort"); }
    HRESULT STDMETHODCALLTYPE ExpandRow(ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*) override
    {
        return Unexpected("ExpandRow");
    }
    HRESULT STDMETHODCALLTYPE CollapseRow(ULONG, LPBYTE, ULONG, ULONG*) override { return Unexpected("CollapseRow"); }
    HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG*) override
    {
        return Unexpected("WaitForCompletion");
    }
    HRESULT STDMETHODCALLTYPE GetCollapseState(ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*) override
    {
        return Unexpected("GetCollapseState");
    }
    HRESULT STDMETHODCALLTYPE SetCollapseState(ULONG, ULONG, LPBYTE, BOOKMARK*) override
    {
        return Unexpected("SetCollapseState");
    }

    /// The result of GetRowCount; 0 for the true count.
    ULONG m_claimedCount = 0;

private:
    static bool Matches(const RowData& row, const SPropValue& wanted)
    {
        std::string text = Value(wanted);
        text = text.substr(text.find('=') + 1);
        text.erase(std::remove(text.begin(), text.end(), '\''), text.end());
        return std::any_of(row.begin(), row.end(), [&](const Property& property)
        { return PROP_ID(property.tag) == PROP_ID(wanted.ulPropTag) && property.bytes == text; });
    }

    IMAPIAdviseSink* m_sink = nullptr;
    size_t m_position = 0;
};

} // namespace zeb::test
