#include "tests/zebapi/slots/Slots.h"
#include "zebapi/AdviseSink.h"
#include "zebapi/CachedTable.h"
#include "zebapi/Restrict.h"
#include "zebapi/RowSet.h"
#include "zebapi/SortOrder.h"

namespace zeb::test
{

SLOTS(CZebTable, 0, 18, 0)
SLOT(CZebTable, 1, operator=, CZebTable&(const CZebTable& other))
SLOT(CZebTable, 2, Advise, void(IMAPIAdviseSink* sink, ULONG* connection))
SLOT(CZebTable, 3, Unadvise, void(ULONG connection))
SLOT(CZebTable, 4, IsValid, bool() const)
SLOT(CZebTable, 5, SetColumns, void(ULONG count, ...))
SLOT(CZebTable, 6, SetColumns, void(SPropTagArray* columns))
SLOT(CZebTable, 7, SortTable, void(SSortOrderSet* order))
SLOT(CZebTable, 8, QueryRows, void(SRowSet** rows, LONG count, SRestriction* restriction, SSortOrderSet* order))
SLOT(CZebTable, 9, QueryAllRows, void(SRowSet** rows, SRestriction* restriction, SSortOrderSet* order))
SLOT(CZebTable, 10, CreateBookmark, ULONG())
SLOT(CZebTable, 11, FreeBookmark, void(ULONG bookmark))
SLOT(CZebTable, 12, GetRowCount, ULONG())
SLOT(CZebTable, 13, QueryPosition, ULONG())
SLOT(CZebTable, 14, SeekRow, void(ULONG origin, LONG rowCount, LONG* rowsSought))
SLOT(CZebTable, 15, FindRow, bool(SRestriction* restriction, ULONG origin, ULONG flags))
SLOT(CZebTable, 16, Restrict, void(SRestriction* restriction, ULONG flags))
SLOT(CZebTable, 17, Free, void())

SLOTS(CZebCachedTable, 18, MsvcAbi ? 23 : 24, 0)
SLOT(CZebCachedTable, 1, operator=, CZebTable&(const CZebTable& table))
SLOT(CZebCachedTable, 7, SortTable, void(SSortOrderSet* order))
SLOT(CZebCachedTable, 14, SeekRow, void(ULONG origin, LONG rowCount, LONG* rowsSought))
SLOT(CZebCachedTable, 15, FindRow, bool(SRestriction* restriction, ULONG origin, ULONG flags))
SLOT(CZebCachedTable, 16, Restrict, void(SRestriction* restriction, ULONG flags))
SLOT(CZebCachedTable, 17, Free, void())
SLOT(CZebCachedTable, 18, Bind, void())
SLOT(CZebCachedTable, 19, Unbind, void())
SLOT(CZebCachedTable, 20, EmptyCache, void())
SLOT(CZebCachedTable, 21, SetOwnerWindow, void(HWND window))
SLOT(CZebCachedTable, 22, operator[], CZebRow(ULONG index))
// An operation of the second base; a call of it goes by that base's table in the MSVC ABI.
SLOT(CZebCachedTable, MsvcAbi ? NoSlot : 23, OnTable_Modified, void(TABLE_NOTIFICATION* notification))

SLOTS(CZebRowSet, 0, 8, 1)
SLOT(CZebRowSet, 0, CheckValid, void() const)
SLOT(CZebRowSet, 2, Empty, void())
SLOT(CZebRowSet, 3, Count, ULONG() const)
SLOT(CZebRowSet, 4, IsValid, bool() const)
SLOT(CZebRowSet, 5, operator&, SRowSet**())
SLOT(CZebRowSet, 6, DetachToNew, CZebRowSet*())
SLOT(CZebRowSet, 7, operator[], CZebRow(ULONG index) const)

SLOTS(CZebRow, 0, 11, 2)
SLOT(CZebRow, 0, CheckValid, void() const)
SLOT(CZebRow, 1, FindTag, int(ULONG propTag) const)
SLOT(CZebRow, 3, operator=, CZebRow&(const CZebRow& other))
SLOT(CZebRow, 4, Count, ULONG() const)
SLOT(CZebRow, 5, TagAt, ULONG(int index) const)
SLOT(CZebRow, 6, IsRealValueAt, bool(int index) const)
SLOT(CZebRow, 7, GetAt, CZebOnePropVal(int index) const)
SLOT(CZebRow, 8, operator[], CZebOnePropVal(ULONG propTag) const)
SLOT(CZebRow, 9, IsExists, bool(ULONG propTag) const)
SLOT(CZebRow, 10, hasRealValue, bool(ULONG propTag) const)

SLOTS(CZebRestriction, 0, 17, 1)
SLOT(CZebRestriction, 0, CheckValid, void() const)
SLOT(CZebRestriction, 2, IsEmpty, bool())
SLOT(CZebRestriction, 3, CreateAnd, void(ULONG count))
SLOT(CZebRestriction, 4, CreateOr, void(ULONG count))
SLOT(CZebRestriction, 5, CreateNot, CZebRestriction())
SLOT(CZebRestriction, 6, CreateProp, CZebOnePropVal(ULONG propTag, ULONG relop))
SLOT(CZebRestriction, 7, CreateExist, void(ULONG propTag))
SLOT(CZebRestriction, 8, CreateCompareProps, void(ULONG propTag1, ULONG propTag2, ULONG relop))
SLOT(CZebRestriction, 9, CreateContentA, void(ULONG propTag, const char* text, ULONG fuzzyLevel))
SLOT(CZebRestriction, 10, CreateContentW, void(ULONG propTag, const WCHAR* text, ULONG fuzzyLevel))
SLOT(CZebRestriction, 11, CreateContent, void(ULONG propTag, const char* text, ULONG fuzzyLevel))
SLOT(CZebRestriction, 12, CreateBitMask, void(ULONG propTag, ULONG mask, ULONG relBMR))
SLOT(CZebRestriction, 13, operator[], CZebRestriction(int index))
SLOT(CZebRestriction, 14, operator[], CZebRestriction(ULONG index))
SLOT(CZebRestriction, 15, operator=, CZebRestriction&(const CZebRestriction& other))
SLOT(CZebRestriction, 16, operator SRestriction*, SRestriction*())

SLOTS(CZebRestrictionAllocator, 17, 19, 1)
SLOT(CZebRestrictionAllocator, 15, operator=, CZebRestriction&(const CZebRestriction& other))
SLOT(CZebRestrictionAllocator, 17, Allocate, void())
SLOT(CZebRestrictionAllocator, 18, Free, void())

SLOTS(CAdviseSinkDelegate, 0, 9, 0)
SLOT(CAdviseSinkDelegate, 1, OnTable_Modified, void(TABLE_NOTIFICATION* notification))
SLOT(CAdviseSinkDelegate, 2, OnTableModified_ReloadCommon, void())
SLOT(CAdviseSinkDelegate, 3, OnTableModified_Changed, void())
SLOT(CAdviseSinkDelegate, 4, OnTableModified_Error, void())
SLOT(CAdviseSinkDelegate, 5, OnTableModified_Reload, void())
SLOT(CAdviseSinkDelegate, 6, OnTableModified_Row_Added, void(TABLE_NOTIFICATION* notification))
SLOT(CAdviseSinkDelegate, 7, OnTableModified_Row_Deleted, void(TABLE_NOTIFICATION* notification))
SLOT(CAdviseSinkDelegate, 8, OnTableModified_Row_Modified, void(TABLE_NOTIFICATION* notification))

SLOTS(CAdviseSinkBinder, 0, 3, 0)
SLOT(CAdviseSinkBinder, 1, Advise, void(CZebTable& table))
SLOT(CAdviseSinkBinder, 2, Unadvise, void())

SLOTS(CZebRowSetArray, 5, 7, 1)
SLOT(CZebRowSetArray, 5, RemoveAt, void(INT_PTR index))
SLOT(CZebRowSetArray, 6, RemoveAll, void())

SLOTS(CZebSortOrder, 0, 9, 1)
SLOT(CZebSortOrder, 0, Allocate, void(int count))
SLOT(CZebSortOrder, 2, Empty, void())
SLOT(CZebSortOrder, 3, GetCount, int() const)
SLOT(CZebSortOrder, 4, IsValid, bool() const)
SLOT(CZebSortOrder, 5, Add, void(ULONG propTag, ULONG order))
SLOT(CZebSortOrder, 6, operator=, CZebSortOrder&(const CZebSortOrder& other))
SLOT(CZebSortOrder, 7, operator SSortOrderSet*, SSortOrderSet*())
SLOT(CZebSortOrder, 8, operator&, SSortOrderSet**())

// The sink's methods have MAPI's calling convention, which a type given as an argument would lose.
TEST(Slots, TheSinkFollowsItsInterface)
{
    EXPECT_EQ(SlotOf(&CAdviseSink::QueryInterface), 0u);
    EXPECT_EQ(SlotOf(&CAdviseSink::AddRef), 1u);
    EXPECT_EQ(SlotOf(&CAdviseSink::Release), 2u);
    EXPECT_EQ(SlotOf(&CAdviseSink::OnNotify), 3u);
    // The destructor comes next, and nothing after it.
    EXPECT_EQ(SlotOf(&Following<CAdviseSink>::Last), EntryOfSlot(5, 4));
}

} // namespace zeb::test
