#include "zebstore/tables/Table.h"

#include "zebstore/tables/TableState.h"

namespace zebstore
{

namespace
{

class Table : public Object<IMAPITable>
{
public:
    Table(std::shared_ptr<RowSource> rows, const TableOptions& options)
        : m_state(std::make_shared<TableState>(std::move(rows), options))
    {
    }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT code, ULONG flags, LPMAPIERROR* error) override
    {
        return Guarded("IMAPITable::GetLastError", [&] { return LastErrorAsMapi(code, flags, error); });
    }

    HRESULT STDMETHODCALLTYPE Advise(ULONG events, LPMAPIADVISESINK sink, ULONG_PTR* connection) override
    {
        return Guarded("IMAPITable::Advise", [&]
        {
            Require(connection != nullptr, "the output pointer is null");
            *connection = 0;
            Require(sink != nullptr, "the advise sink is null");
            if (!(events & fnevTableModified))
            {
                throw Error(MAPI_E_NO_SUPPORT, "tables notify of fnevTableModified only");
            }
            *connection = m_state->Advise(sink);
        });
    }

    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR connection) override
    {
        return Guarded("IMAPITable::Unadvise", [&] { m_state->Unadvise(connection); });
    }

    HRESULT STDMETHODCALLTYPE GetStatus(ULONG* status, ULONG* type) override
    {
        return Guarded("IMAPITable::GetStatus", [&]
        {
            Require(status != nullptr && type != nullptr);
            *status = TBLSTAT_COMPLETE;
            *type = m_state->Options().type;
        });
    }

    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG flags) override
    {
        return Call("IMAPITable::SetColumns", [&]
        {
            RequireFlags(flags, TBL_BATCH | TBL_ASYNC);
            Require(tags != nullptr && tags->cValues > 0, "the list of columns is empty");
            m_state->SetColumns({tags->aulPropTag, tags->aulPropTag + tags->cValues});
        });
    }

    HRESULT STDMETHODCALLTYPE QueryColumns(ULONG flags, LPSPropTagArray* tags) override
    {
        return Call("IMAPITable::QueryColumns", [&]
        {
            RequireFlags(flags, TBL_ALL_COLUMNS);
            Require(tags != nullptr);
            *tags = nullptr;
            const std::vector<ULONG> columns = flags & TBL_ALL_COLUMNS ? m_state->AllColumns() : m_state->Columns();
            const size_t size = CbNewSPropTagArray(columns.size());
            Buffer<SPropTagArray> array(Allocate(size));
            array->cValues = static_cast<ULONG>(columns.size());
            std::copy(columns.begin(), columns.end(), array->aulPropTag);
            *tags = array.Detach();
        });
    }

    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG flags, ULONG* count) override
    {
        return Call("IMAPITable::GetRowCount", [&]
        {
            RequireFlags(flags, TBL_NOWAIT);
            Require(count != nullptr);
            *count = m_state->Current().Count();
        });
    }

    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG count, LONG* sought) override
    {
        return Call("IMAPITable::SeekRow", [&]() -> HRESULT
        {
            LONG moved = 0;
            const HRESULT result = m_state->Current().Seek(origin, count, moved);
            if (sought != nullptr)
            {
                *sought = moved;
            }
            return result;
        });
    }

    HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG numerator, ULONG denominator) override
    {
        return Call("IMAPITable::SeekRowApprox", [&] { m_state->Current().SeekApprox(numerator, denominator); });
    }

    HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override
    {
        return Call("IMAPITable::QueryPosition", [&]
        {
            Require(row != nullptr && numerator != nullptr && denominator != nullptr);
            TableView& view = m_state->Current();
            const ULONG count = view.Count();
            *row = view.Position();
            *numerator = *row;
            *denominator = count > 0 ? count : 1;
        });
    }

    HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) override
    {
        return Call("IMAPITable::FindRow", [&]() -> HRESULT
        {
            RequireFlags(flags, DIR_BACKWARD);
            Require(restriction != nullptr, "the restriction is null");
            const Restriction wanted(*restriction);
            return m_state->Current().Find(wanted, origin, (flags & DIR_BACKWARD) != 0);
        });
    }

    HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction restriction, ULONG flags) override
    {
        return Call("IMAPITable::Restrict", [&]
        {
            RequireFlags(flags, TBL_BATCH | TBL_ASYNC);
            m_state->Restrict(restriction);
        });
    }

    HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK* bookmark) override
    {
        return Call("IMAPITable::CreateBookmark", [&]
        {
            Require(bookmark != nullptr);
            *bookmark = m_state->Current().CreateBookmark();
        });
    }

    HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK bookmark) override
    {
        return Call("IMAPITable::FreeBookmark", [&] { m_state->FreeBookmark(bookmark); });
    }

    HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet order, ULONG flags) override
    {
        return Call("IMAPITable::SortTable", [&]
        {
            RequireFlags(flags, TBL_BATCH | TBL_ASYNC);
            Require(order != nullptr, "the sort order is null");
            m_state->Sort(*order);
        });
    }

    HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet* order) override
    {
        return Call("IMAPITable::QuerySortOrder", [&]
        {
            Require(order != nullptr);
            *order = nullptr;
            const std::vector<SSortOrder>& sorts = m_state->Sorts();
            Buffer<SSortOrderSet> set(Allocate(CbNewSSortOrderSet(sorts.size())));
            set->cSorts = static_cast<ULONG>(sorts.size());
            set->cCategories = 0;
            set->cExpanded = 0;
            std::copy(sorts.begin(), sorts.end(), set->aSort);
            *order = set.Detach();
        });
    }

    HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG flags, LPSRowSet* rows) override
    {
        return Call("IMAPITable::QueryRows", [&]
        {
            RequireFlags(flags, TBL_NOADVANCE);
            Require(rows != nullptr);
            *rows = nullptr;
            *rows = m_state->ReadRows(count, (flags & TBL_NOADVANCE) == 0);
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
        return Guarded("IMAPITable::WaitForCompletion", [&]
        {
            if (status != nullptr)
            {
                *status = TBLSTAT_COMPLETE;
            }
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
    template <class Body>
    HRESULT Call(const char* method, Body&& body)
    {
        return Guarded(method, [&]() -> decltype(body())
        {
            const std::lock_guard hold(m_state->Lock());
            return body();
        });
    }

    ~Table() override { m_state->Close(); }

    const std::shared_ptr<TableState> m_state;
};

} // namespace

Ref<IMAPITable> CreateTable(std::shared_ptr<RowSource> rows, const TableOptions& options)
{
    return Ref<IMAPITable>::Adopt(new Table(std::move(rows), options));
}

} // namespace zebstore
