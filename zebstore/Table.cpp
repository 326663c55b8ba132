#include "zebstore/Table.h"

#include "zebstore/Memory.h"
#include "zebstore/storage/TableView.h"
#include "zebstore/storage/ValueBuilder.h"

#include <cstring>
#include <mutex>

namespace zebstore
{

namespace
{

bool IsTextType(ULONG type)
{
    return type == PT_STRING8 || type == PT_UNICODE;
}

// Owns a row set while it is filled.
class RowSetBuffer
{
public:
    explicit RowSetBuffer(size_t rows)
        : m_set(Allocate(CbNewSRowSet(rows)))
    {
        std::memset(static_cast<void*>(m_set.Get()), 0, CbNewSRowSet(rows));
    }
    ~RowSetBuffer()
    {
        if (m_set.Get())
            for (ULONG i = 0; i < m_set->cRows; ++i)
                Free(m_set->aRow[i].lpProps);
    }
    RowSetBuffer(const RowSetBuffer&) = delete;
    RowSetBuffer& operator=(const RowSetBuffer&) = delete;

    void Add(SPropValue* values, size_t count)
    {
        SRow& row = m_set->aRow[m_set->cRows++];
        row.cValues = static_cast<ULONG>(count);
        row.lpProps = values;
    }
    SRowSet* Detach() { return m_set.Detach(); }

private:
    Buffer<SRowSet> m_set;
};

class Table : public Object<IMAPITable>
{
public:
    Table(std::shared_ptr<RowSource> rows, const TableOptions& options)
        : m_options(options)
        , m_view(std::move(rows))
    {
    }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT code, ULONG flags, LPMAPIERROR* error) override
    {
        return Guarded("IMAPITable::GetLastError", [&] { return LastErrorAsMapi(code, flags, error); });
    }

    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPMAPIADVISESINK, ULONG* connection) override
    {
        return Guarded("IMAPITable::Advise",
                       [&]() -> HRESULT
                       {
                           Require(connection != nullptr);
                           *connection = 0;
                           return MAPI_E_NO_SUPPORT;
                       });
    }

    HRESULT STDMETHODCALLTYPE Unadvise(ULONG) override
    {
        return Guarded("IMAPITable::Unadvise", []() -> HRESULT { return MAPI_E_NO_SUPPORT; });
    }

    HRESULT STDMETHODCALLTYPE GetStatus(ULONG* status, ULONG* type) override
    {
        return Guarded("IMAPITable::GetStatus",
                       [&]
                       {
                           Require(status && type);
                           *status = TBLSTAT_COMPLETE;
                           *type = m_options.type;
                       });
    }

    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG flags) override
    {
        return Call("IMAPITable::SetColumns",
                    [&]
                    {
                        RequireFlags(flags, TBL_BATCH | TBL_ASYNC);
                        Require(tags && tags->cValues > 0, "A table needs at least one column.");
                        m_columns.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
                    });
    }

    HRESULT STDMETHODCALLTYPE QueryColumns(ULONG flags, LPSPropTagArray* tags) override
    {
        return Call("IMAPITable::QueryColumns",
                    [&]
                    {
                        RequireFlags(flags, TBL_ALL_COLUMNS);
                        Require(tags != nullptr);
                        *tags = nullptr;
                        const std::vector<ULONG> columns =
                            flags & TBL_ALL_COLUMNS ? InOwnForm(m_view.Rows().AllColumns()) : Columns();
                        const size_t size = CbNewSPropTagArray(columns.size());
                        Buffer<SPropTagArray> array(Allocate(size));
                        array->cValues = static_cast<ULONG>(columns.size());
                        std::copy(columns.begin(), columns.end(), array->aulPropTag);
                        *tags = array.Detach();
                    });
    }

    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG flags, ULONG* count) override
    {
        return Call("IMAPITable::GetRowCount",
                    [&]
                    {
                        RequireFlags(flags, TBL_NOWAIT);
                        Require(count != nullptr);
                        *count = m_view.Count();
                    });
    }

    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG count, LONG* sought) override
    {
        return Call("IMAPITable::SeekRow",
                    [&]() -> HRESULT
                    {
                        LONG moved = 0;
                        const HRESULT result = m_view.Seek(origin, count, moved);
                        if (sought)
                            *sought = moved;
                        return result;
                    });
    }

    HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG numerator, ULONG denominator) override
    {
        return Call("IMAPITable::SeekRowApprox", [&] { m_view.SeekApprox(numerator, denominator); });
    }

    HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override
    {
        return Call("IMAPITable::QueryPosition",
                    [&]
                    {
                        Require(row && numerator && denominator);
                        const ULONG count = m_view.Count();
                        *row = m_view.Position();
                        *numerator = *row;
                        *denominator = count > 0 ? count : 1;
                    });
    }

    HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) override
    {
        return Call("IMAPITable::FindRow",
                    [&]() -> HRESULT
                    {
                        RequireFlags(flags, DIR_BACKWARD);
                        Require(restriction != nullptr, "A search needs a restriction.");
                        return m_view.Find(Restriction(*restriction), origin, (flags & DIR_BACKWARD) != 0);
                    });
    }

    HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction restriction, ULONG flags) override
    {
        return Call("IMAPITable::Restrict",
                    [&]
                    {
                        RequireFlags(flags, TBL_BATCH | TBL_ASYNC);
                        m_view.Restrict(restriction ? std::make_unique<Restriction>(*restriction) : nullptr);
                    });
    }

    HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK* bookmark) override
    {
        return Call("IMAPITable::CreateBookmark",
                    [&]
                    {
                        Require(bookmark != nullptr);
                        *bookmark = m_view.CreateBookmark();
                    });
    }

    HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK bookmark) override
    {
        return Call("IMAPITable::FreeBookmark", [&] { m_view.FreeBookmark(bookmark); });
    }

    HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet order, ULONG flags) override
    {
        return Call("IMAPITable::SortTable",
                    [&]
                    {
                        RequireFlags(flags, TBL_BATCH | TBL_ASYNC);
                        Require(order != nullptr, "A sort needs its keys.");
                        auto taken = std::make_unique<SortOrder>(*order);
                        std::vector<SSortOrder> asGiven(order->aSort, order->aSort + order->cSorts);
                        m_view.Sort(std::move(taken));
                        m_sorts.swap(asGiven);
                    });
    }

    HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet* order) override
    {
        return Call("IMAPITable::QuerySortOrder",
                    [&]
                    {
                        Require(order != nullptr);
                        *order = nullptr;
                        Buffer<SSortOrderSet> set(Allocate(CbNewSSortOrderSet(m_sorts.size())));
                        set->cSorts = static_cast<ULONG>(m_sorts.size());
                        set->cCategories = 0;
                        set->cExpanded = 0;
                        std::copy(m_sorts.begin(), m_sorts.end(), set->aSort);
                        *order = set.Detach();
                    });
    }

    HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG flags, LPSRowSet* rows) override
    {
        return Call("IMAPITable::QueryRows",
                    [&]
                    {
                        RequireFlags(flags, TBL_NOADVANCE);
                        Require(rows != nullptr);
                        *rows = nullptr;
                        *rows = ReadRows(count, (flags & TBL_NOADVANCE) == 0);
                    });
    }

    HRESULT STDMETHODCALLTYPE Abort() override
    {
        return Guarded("IMAPITable::Abort", [] {});
    }

    HRESULT STDMETHODCALLTYPE ExpandRow(ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*) override
    {
        return Guarded("IMAPITable::ExpandRow", []() -> HRESULT { return MAPI_E_NO_SUPPORT; });
    }

    HRESULT STDMETHODCALLTYPE CollapseRow(ULONG, LPBYTE, ULONG, ULONG*) override
    {
        return Guarded("IMAPITable::CollapseRow", []() -> HRESULT { return MAPI_E_NO_SUPPORT; });
    }

    HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG* status) override
    {
        return Guarded("IMAPITable::WaitForCompletion",
                       [&]
                       {
                           if (status)
                               *status = TBLSTAT_COMPLETE;
                       });
    }

    HRESULT STDMETHODCALLTYPE GetCollapseState(ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*) override
    {
        return Guarded("IMAPITable::GetCollapseState", []() -> HRESULT { return MAPI_E_NO_SUPPORT; });
    }

    HRESULT STDMETHODCALLTYPE SetCollapseState(ULONG, ULONG, LPBYTE, BOOKMARK*) override
    {
        return Guarded("IMAPITable::SetCollapseState", []() -> HRESULT { return MAPI_E_NO_SUPPORT; });
    }

protected:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPITable}); }

private:
    template <typename Body>
    HRESULT Call(const char* method, Body&& body)
    {
        return Guarded(method,
                       [&]() -> decltype(body())
                       {
                           const std::lock_guard<std::mutex> hold(m_lock);
                           return body();
                       });
    }

    // Text columns in the form in which the table was asked for.
    std::vector<ULONG> InOwnForm(std::vector<ULONG> columns) const
    {
        const ULONG form = m_options.unicode ? PT_UNICODE : PT_STRING8;
        for (ULONG& tag : columns)
        {
            const ULONG many = PROP_TYPE(tag) & MV_FLAG;
            if (IsTextType(PROP_TYPE(tag) & ~many))
                tag = CHANGE_PROP_TYPE(tag, form | many);
        }
        return columns;
    }

    std::vector<ULONG> Columns()
    {
        return m_columns.empty() ? InOwnForm(m_view.Rows().DefaultColumns()) : m_columns;
    }

    SRowSet* ReadRows(LONG count, bool advance)
    {
        const std::vector<ULONG> columns = Columns();
        const TableView::Cursor before = m_view.GetCursor();
        const std::vector<RowKey> keys = m_view.Take(count, advance);
        try
        {
            return BuildRows(keys, columns);
        }
        catch (...)
        {
            // The cursor moves only when the rows are there to be handed out.
            m_view.SetCursor(before);
            throw;
        }
    }

    SRowSet* BuildRows(const std::vector<RowKey>& keys, const std::vector<ULONG>& columns)
    {
        RowSetBuffer rows(keys.size());
        BuildOptions options;
        options.unicode = m_options.unicode;
        m_view.Rows().Read(
            keys.data(), keys.size(),
            [&](size_t, const ValueSource& values)
            { rows.Add(BuildValues(columns.data(), columns.size(), values, options), columns.size()); });
        return rows.Detach();
    }

    std::mutex m_lock;
    TableOptions m_options;
    TableView m_view;
    std::vector<ULONG> m_columns; // empty: the default ones
    std::vector<SSortOrder> m_sorts;
};

} // namespace

Ref<IMAPITable> CreateTable(std::shared_ptr<RowSource> rows, const TableOptions& options)
{
    return Ref<IMAPITable>::Adopt(new Table(std::move(rows), options));
}

} // namespace zebstore
