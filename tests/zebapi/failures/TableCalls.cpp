// Tables, rows, restrictions, sort orders, notifications.
#include "Calls.h"

namespace zeb::test
{

namespace
{

NOTIFICATION Changed()
{
    NOTIFICATION notification = {};
    notification.ulEventType = fnevTableModified;
    notification.info.tab.ulTableEvent = TABLE_CHANGED;
    return notification;
}

CAdviseSink* NewSink(CAdviseSinkDelegate* delegate)
{
    const ProviderScope host; // the block is the host's
    return new CAdviseSink(delegate);
}

/// Calls `body` with a sink that is released afterwards.
template <class Body>
void WithSink(CAdviseSinkDelegate* delegate, Body&& body)
{
    struct Releaser
    {
        CAdviseSink* sink;
        ~Releaser() { sink->Release(); }
    } releaser{NewSink(delegate)};
    body(*releaser.sink);
}

template <class Body>
void WithDelegate(Body&& body)
{
    CAdviseSinkDelegate delegate;
    TABLE_NOTIFICATION notification = Changed().info.tab;
    body(delegate, &notification);
}

} // namespace

const std::vector<Call<World>>& TableCalls()
{
    static const std::vector<Call<World>> calls = {
        {"CZebTable::Advise",
         [](World& w)
         {
             WithSink(&w.zcached,
                      [&](CAdviseSink& sink)
                      {
                          ULONG connection = 0;
                          w.zcached.Free();
                          w.ztable.Advise(&sink, &connection);
                          w.ztable.Unadvise(connection);
                      });
         }},
        {"CZebTable::CZebTable", [](World& w) { CZebTable table(w.ztable); }},
        {"CZebTable::CZebTable", [](World& w) { CZebTable table(&w.table); }},
        {"CZebTable::CreateBookmark",
         [](World& w)
         {
             const ULONG bookmark = w.ztable.CreateBookmark();
             w.ztable.FreeBookmark(bookmark);
         }},
        {"CZebTable::FindRow", [](World& w) { w.ztable.FindRow(w.restriction, BOOKMARK_BEGINNING, 0); }},
        {"CZebTable::Free", [](World& w) { w.ztable.Free(); }},
        {"CZebTable::FreeBookmark", [](World& w) { w.ztable.FreeBookmark(77); }},
        {"CZebTable::GetRowCount", [](World& w) { w.ztable.GetRowCount(); }},
        {"CZebTable::IsValid", [](World& w) { w.ztable.IsValid(); }},
        {"CZebTable::QueryAllRows",
         [](World& w)
         {
             CZebRowSet rows;
             w.ztable.QueryAllRows(&rows, nullptr, nullptr);
         }},
        {"CZebTable::QueryColumns",
         [](World& w)
         {
             CZebPropTagArray columns;
             w.ztable.QueryColumns(&columns, TBL_ALL_COLUMNS);
         }},
        {"CZebTable::QueryPosition", [](World& w) { w.ztable.QueryPosition(); }},
        {"CZebTable::QueryRows",
         [](World& w)
         {
             CZebRowSet rows;
             w.ztable.QueryRows(&rows, 0, w.restriction, w.order);
         }},
        {"CZebTable::Restrict", [](World& w) { w.ztable.Restrict(w.restriction, 0); }},
        {"CZebTable::RowsOf",
         [](World& w)
         {
             for (CZebRow row : w.ztable.Rows({PR_ENTRYID, PR_SUBJECT_A}))
             {
                 row.Count();
             }
         }},
        {"CZebTable::SeekRow", [](World& w) { w.ztable.SeekRow(BOOKMARK_BEGINNING, 1, nullptr); }},
        {"CZebTable::SetColumns", [](World& w) { w.ztable.SetColumns(w.tags); }},
        {"CZebTable::SetColumns", [](World& w) { w.ztable.SetColumns(ULONG{2}, PR_ENTRYID, PR_SUBJECT_A); }},
        {"CZebTable::SetColumns", [](World&) { CZebTable().SetColumns(ULONG{2}, PR_ENTRYID, PR_SUBJECT_A); }},
        {"CZebTable::SortTable", [](World& w) { w.ztable.SortTable(w.order); }},
        {"CZebTable::Unadvise", [](World& w) { w.ztable.Unadvise(77); }},
        {"CZebTable::operator=",
         [](World& w)
         {
             CZebTable table;
             table = w.ztable;
         }},
        {"CZebTable::operator=", [](World& w) { w.ztable = CZebTable(); }},

        {"CZebTableRows::Advance", [](World& w) { CZebTableRows(w.ztable).Advance(); }},
        {"CZebTableRows::CZebTableRows", [](World& w) { CZebTableRows rows(w.ztable); }},
        {"CZebTableRows::Current",
         [](World& w)
         {
             CZebTableRows rows(w.ztable);
             rows.begin();
             rows.Current();
         }},
        {"CZebTableRows::Current", [](World& w) { CZebTableRows(w.ztable).Current(); }},
        {"CZebTableRows::IsAtEnd", [](World& w) { CZebTableRows(w.ztable).IsAtEnd(); }},
        {"CZebTableRows::begin", [](World& w) { CZebTableRows(w.ztable).begin(); }},
        {"CZebTableRows::end", [](World& w) { CZebTableRows(w.ztable).end(); }},

        {"CZebCachedTable::Bind", [](World& w) { w.zcached.Bind(); }},
        {"CZebCachedTable::BindChecked", [](World& w) { w.zcached.BindChecked(); }},
        {"CZebCachedTable::CZebCachedTable", [](World& w) { CZebCachedTable table(w.ztable); }},
        {"CZebCachedTable::CZebCachedTable",
         [](World& w)
         {
             w.zcached.Free();
             CZebCachedTable table(&w.table);
         }},
        {"CZebCachedTable::CZebCachedTable",
         [](World&)
         {
             const CZebCachedTable none;
             CZebCachedTable table(none);
         }},
        {"CZebCachedTable::EmptyCache", [](World& w) { w.zcached.EmptyCache(); }},
        {"CZebCachedTable::FindRow", [](World& w) { w.zcached.FindRow(w.restriction, BOOKMARK_BEGINNING, 0); }},
        {"CZebCachedTable::Free", [](World& w) { w.zcached.Free(); }},
        {"CZebCachedTable::OnTable_Modified",
         [](World& w)
         {
             TABLE_NOTIFICATION notification = Changed().info.tab;
             w.zcached.OnTable_Modified(&notification);
         }},
        {"CZebCachedTable::Restrict", [](World& w) { w.zcached.Restrict(w.restriction, 0); }},
        {"CZebCachedTable::SeekRow", [](World& w) { w.zcached.SeekRow(BOOKMARK_BEGINNING, 1, nullptr); }},
        {"CZebCachedTable::SetOwnerWindow", [](World& w) { w.zcached.SetOwnerWindow(nullptr); }},
        {"CZebCachedTable::SetOwnerWindow",
         [](World& w)
         {
             // No window of this number: the message goes nowhere.
             w.zcached.SetOwnerWindow(reinterpret_cast<HWND>(static_cast<ULONG_PTR>(0x7FFE)));
             NOTIFICATION notification = Changed();
             w.table.Sink()->OnNotify(1, &notification);
         }},
        {"CZebCachedTable::SortTable", [](World& w) { w.zcached.SortTable(w.order); }},
        {"CZebCachedTable::Unbind", [](World& w) { w.zcached.Unbind(); }},
        {"CZebCachedTable::operator=", [](World& w) { static_cast<CZebTable&>(w.zcached) = w.ztable; }},
        {"CZebCachedTable::operator=",
         [](World&)
         {
             const CZebCachedTable none;
             CZebCachedTable table;
             table = none;
         }},
        {"CZebCachedTable::operator[]",
         [](World& w)
         {
             w.zcached.EmptyCache();
             w.zcached[2][PR_SUBJECT_A].String(false);
         }},
        {"CZebCachedTable::operator[]", [](World& w) { w.zcached[99]; }},

        {"CZebRow::CZebRow", [](World&) { CZebRow(nullptr, nullptr).IsExists(PR_SUBJECT_A); }},
        {"CZebRow::CZebRow", [](World& w) { CZebRow row(w.rows[0]); }},
        {"CZebRow::CheckValid", [](World&) { OpenRow(nullptr, nullptr).CheckValid(); }},
        {"CZebRow::Count", [](World&) { CZebRow(nullptr, nullptr).Count(); }},
        {"CZebRow::FindTag", [](World&) { OpenRow(nullptr, nullptr).FindTag(PR_SUBJECT_A); }},
        {"CZebRow::GetAt", [](World& w) { w.rows[0].GetAt(99); }},
        {"CZebRow::IsExists", [](World& w) { w.rows[0].IsExists(PR_BODY_A); }},
        {"CZebRow::IsRealValueAt", [](World& w) { w.rows[0].IsRealValueAt(0); }},
        {"CZebRow::TagAt", [](World& w) { w.rows[0].TagAt(0); }},
        {"CZebRow::hasRealValue", [](World& w) { w.rows[0].hasRealValue(PR_SUBJECT_A); }},
        {"CZebRow::operator=",
         [](World& w)
         {
             CZebRow row(nullptr, nullptr);
             row = w.rows[0];
         }},
        {"CZebRow::operator[]", [](World& w) { w.rows[0][PR_BODY_A]; }},
        {"CZebRow::operator[]", [](World& w) { w.rows[0][PR_SUBJECT_A] = "Another subject"; }},

        {"CZebRowSet::CZebRowSet", [](World&) { CZebRowSet rows; }},
        {"CZebRowSet::CZebRowSet",
         [](World&)
         {
             const CZebRowSet none;
             CZebRowSet rows(none);
         }},
        {"CZebRowSet::CheckValid", [](World&) { OpenRows().CheckValid(); }},
        {"CZebRowSet::Count", [](World&) { CZebRowSet().Count(); }},
        {"CZebRowSet::DetachToNew", [](World& w) { std::unique_ptr<CZebRowSet>(w.rows.DetachToNew()); }},
        {"CZebRowSet::Empty", [](World& w) { w.rows.Empty(); }},
        {"CZebRowSet::Get", [](World& w) { w.rows.Get(); }},
        {"CZebRowSet::IsValid", [](World& w) { w.rows.IsValid(); }},
        {"CZebRowSet::operator&", [](World& w) { &w.rows; }},
        {"CZebRowSet::operator=",
         [](World&)
         {
             const CZebRowSet none;
             CZebRowSet rows;
             rows = none;
         }},
        {"CZebRowSet::operator[]", [](World& w) { w.rows[99]; }},
        {"CZebRowSetArray::CZebRowSetArray", [](World&) { CZebRowSetArray sets; }},
        {"CZebRowSetArray::RemoveAll",
         [](World&)
         {
             CZebRowSetArray sets;
             sets.Add(nullptr);
             sets.RemoveAll();
         }},
        {"CZebRowSetArray::RemoveAt",
         [](World& w)
         {
             CZebRowSetArray sets;
             std::unique_ptr<CZebRowSet> set(w.rows.DetachToNew());
             sets.Add(set.get());
             set.release();
             sets.RemoveAt(0);
         }},

        {"CZebRestriction::CZebRestriction", [](World&) { OpenRestriction().IsEmpty(); }},
        {"CZebRestriction::CZebRestriction", [](World&) { OpenRestriction(nullptr, nullptr).IsEmpty(); }},
        {"CZebRestriction::CZebRestriction",
         [](World& w) { CZebRestriction(static_cast<const CZebRestriction&>(w.restriction)).IsEmpty(); }},
        {"CZebRestriction::CheckValid", [](World&) { OpenRestriction().CheckValid(); }},
        {"CZebRestriction::CreateAnd", [](World& w) { w.restriction.CreateAnd(2); }},
        {"CZebRestriction::CreateBitMask", [](World& w) { w.restriction.CreateBitMask(PR_MESSAGE_FLAGS, 1, BMR_EQZ); }},
        {"CZebRestriction::CreateCompareProps",
         [](World& w) { w.restriction.CreateCompareProps(PR_SUBJECT_A, PR_BODY_A, RELOP_EQ); }},
        {"CZebRestriction::CreateContent",
         [](World& w) { w.restriction.CreateContent(PR_SUBJECT_A, "text", FL_SUBSTRING); }},
        {"CZebRestriction::CreateContentA",
         [](World& w) { w.restriction.CreateContentA(PR_SUBJECT_A, "text", FL_SUBSTRING); }},
        {"CZebRestriction::CreateContentW",
         [](World& w) { w.restriction.CreateContentW(PR_SUBJECT_W, ZEBW("text"), FL_SUBSTRING); }},
        {"CZebRestriction::CreateExist", [](World& w) { w.restriction.CreateExist(PR_SUBJECT_A); }},
        {"CZebRestriction::CreateNot", [](World& w) { w.restriction.CreateNot().CreateExist(PR_SUBJECT_A); }},
        {"CZebRestriction::CreateOr", [](World& w) { w.restriction.CreateOr(2); }},
        {"CZebRestriction::CreateProp",
         [](World& w) { w.restriction.CreateProp(PR_SUBJECT_A, RELOP_EQ) = "Another"; }},
        {"CZebRestriction::CreateSubRestriction",
         [](World& w) { w.restriction.CreateSubRestriction(PR_MESSAGE_RECIPIENTS).CreateExist(PR_EMAIL_ADDRESS_A); }},
        {"CZebRestriction::IsEmpty", [](World& w) { w.restriction.IsEmpty(); }},
        {"CZebRestriction::operator type", [](World&) { OpenRestriction().operator SRestriction*(); }},
        {"CZebRestriction::operator=",
         [](World& w)
         {
             OpenRestriction view;
             static_cast<CZebRestriction&>(view) = w.restriction;
         }},
        {"CZebRestriction::operator[]", [](World& w) { w.restriction[-1]; }},
        {"CZebRestriction::operator[]", [](World& w) { w.restriction[ULONG{99}]; }},
        {"CZebRestrictionAllocator::Allocate", [](World& w) { w.restriction.Allocate(); }},
        {"CZebRestrictionAllocator::CZebRestrictionAllocator", [](World&) { CZebRestrictionAllocator restriction; }},
        {"CZebRestrictionAllocator::Free", [](World& w) { w.restriction.Free(); }},
        {"CZebRestrictionAllocator::operator=",
         [](World& w) { static_cast<CZebRestriction&>(w.restriction) = OpenRestriction(); }},
        {"CZebRestrictionAllocator::operator=",
         [](World& w)
         {
             const CZebRestrictionAllocator none;
             w.restriction = none;
         }},

        {"CZebSortOrder::Add", [](World& w) { w.order.Add(PR_BODY_A, TABLE_SORT_DESCEND); }},
        {"CZebSortOrder::Allocate", [](World& w) { w.order.Allocate(9); }},
        {"CZebSortOrder::CZebSortOrder", [](World& w) { CZebSortOrder order(w.order); }},
        {"CZebSortOrder::CZebSortOrder", [](World&) { CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_ASCEND); }},
        {"CZebSortOrder::Empty", [](World& w) { w.order.Empty(); }},
        {"CZebSortOrder::GetCount", [](World& w) { w.order.GetCount(); }},
        {"CZebSortOrder::IsValid", [](World& w) { w.order.IsValid(); }},
        {"CZebSortOrder::operator type", [](World&) { CZebSortOrder(0, 0).operator SSortOrderSet*(); }},
        {"CZebSortOrder::operator&", [](World& w) { &w.order; }},
        {"CZebSortOrder::operator=",
         [](World& w)
         {
             CZebSortOrder order(0, 0);
             order = w.order;
         }},

        {"CAdviseSink::AddRef",
         [](World&)
         {
             WithSink(nullptr,
                      [](CAdviseSink& sink)
                      {
                          sink.AddRef();
                          sink.Release();
                      });
         }},
        {"CAdviseSink::AwaitDeliveries", [](World& w) { CAdviseSink::AwaitDeliveries(&w.zcached); }},
        {"CAdviseSink::CAdviseSink", [](World&) { CAdviseSink sink(nullptr); }},
        {"CAdviseSink::CAdviseSink",
         [](World&)
         {
             const CAdviseSink sink(nullptr);
             CAdviseSink copy(sink);
         }},
        {"CAdviseSink::Cut", [](World&) { CAdviseSink(nullptr).Cut(); }},
        {"CAdviseSink::OnNotify",
         [](World& w)
         {
             WithSink(&w.zcached,
                      [](CAdviseSink& sink)
                      {
                          NOTIFICATION notification = Changed();
                          sink.OnNotify(1, &notification);
                      });
         }},
        {"CAdviseSink::QueryInterface",
         [](World&)
         {
             WithSink(nullptr,
                      [](CAdviseSink& sink)
                      {
                          void* result = nullptr;
                          sink.QueryInterface(IID_IMAPIProp, &result);
                      });
         }},
        {"CAdviseSink::Release", [](World&) { WithSink(nullptr, [](CAdviseSink&) {}); }},
        {"CAdviseSink::operator=",
         [](World&)
         {
             CAdviseSink sink(nullptr);
             sink = CAdviseSink(nullptr);
         }},
        {"CAdviseSinkBinder::Advise",
         [](World& w)
         {
             w.zcached.Free();
             CAdviseSinkBinder binder(&w.zcached, nullptr);
             binder.Advise(w.ztable);
         }},
        {"CAdviseSinkBinder::AdviseChecked",
         [](World& w)
         {
             w.zcached.Free();
             CAdviseSinkBinder binder(&w.zcached, nullptr);
             binder.AdviseChecked(w.ztable);
         }},
        {"CAdviseSinkBinder::CAdviseSinkBinder",
         [](World& w)
         {
             w.zcached.Free();
             CAdviseSinkBinder binder(&w.zcached, &w.ztable);
         }},
        {"CAdviseSinkBinder::CAdviseSinkBinder",
         [](World&)
         {
             const CAdviseSinkBinder binder(nullptr, nullptr);
             CAdviseSinkBinder copy(binder);
         }},
        {"CAdviseSinkBinder::Unadvise", [](World&) { CAdviseSinkBinder(nullptr, nullptr).Unadvise(); }},
        {"CAdviseSinkBinder::operator=",
         [](World&)
         {
             CAdviseSinkBinder binder(nullptr, nullptr);
             binder = CAdviseSinkBinder(nullptr, nullptr);
         }},
        {"CAdviseSinkDelegate::CAdviseSinkDelegate", [](World&) { CAdviseSinkDelegate delegate; }},
        {"CAdviseSinkDelegate::CAdviseSinkDelegate",
         [](World&)
         {
             const CAdviseSinkDelegate delegate;
             CAdviseSinkDelegate copy(delegate);
         }},
        {"CAdviseSinkDelegate::OnTableModified_Changed",
         [](World&) { WithDelegate([](auto& d, auto*) { d.OnTableModified_Changed(); }); }},
        {"CAdviseSinkDelegate::OnTableModified_Error",
         [](World&) { WithDelegate([](auto& d, auto*) { d.OnTableModified_Error(); }); }},
        {"CAdviseSinkDelegate::OnTableModified_Reload",
         [](World&) { WithDelegate([](auto& d, auto*) { d.OnTableModified_Reload(); }); }},
        {"CAdviseSinkDelegate::OnTableModified_ReloadCommon",
         [](World&) { WithDelegate([](auto& d, auto*) { d.OnTableModified_ReloadCommon(); }); }},
        {"CAdviseSinkDelegate::OnTableModified_Row_Added",
         [](World&) { WithDelegate([](auto& d, auto* n) { d.OnTableModified_Row_Added(n); }); }},
        {"CAdviseSinkDelegate::OnTableModified_Row_Deleted",
         [](World&) { WithDelegate([](auto& d, auto* n) { d.OnTableModified_Row_Deleted(n); }); }},
        {"CAdviseSinkDelegate::OnTableModified_Row_Modified",
         [](World&) { WithDelegate([](auto& d, auto* n) { d.OnTableModified_Row_Modified(n); }); }},
        {"CAdviseSinkDelegate::OnTable_Modified",
         [](World&) { WithDelegate([](auto& d, auto* n) { d.OnTable_Modified(n); }); }},
        {"CAdviseSinkDelegate::operator=",
         [](World&)
         {
             CAdviseSinkDelegate delegate;
             delegate = CAdviseSinkDelegate();
         }},
    };
    return calls;
}

} // namespace zeb::test
