#include "tests/zebstore/provider/ProviderFixture.h"

#include <cstring>

namespace zebstore
{
namespace
{

TEST(ProviderUtilities, HexTextGoesBothWays)
{
    BYTE bytes[3] = {0x0A, 0xFF, 0x10};
    char text[7];
    HexFromBin(bytes, 3, text);
    EXPECT_STREQ(text, "0AFF10");
    BYTE back[4] = {9, 9, 9, 9};
    EXPECT_TRUE(FBinFromHex(text, back));
    EXPECT_EQ(std::memcmp(bytes, back, 3), 0);
    EXPECT_EQ(back[3], 9);
    EXPECT_FALSE(FBinFromHex(Text("0G"), back));
    EXPECT_FALSE(FBinFromHex(Text("123"), back));
    EXPECT_EQ(ScBinFromHexBounded(Text("0aff10"), back, 3), S_OK);
    EXPECT_EQ(ScBinFromHexBounded(Text("0aff10ee"), back, 3), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(back[3], 9);
}

TEST(ProviderUtilities, ReleaseOfNothingIsNothing)
{
    EXPECT_EQ(UlRelease(nullptr), 0u);
    FreeProws(nullptr);
}

/// Copies `value` to a separate block and passes the copy to `check`, after the original is overwritten.
template <class Check>
void CopyAndCheck(SPropValue value, Check check)
{
    void* parent = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(sizeof(SPropValue), &parent), S_OK);
    const Buffer<SPropValue> copy(parent);
    ASSERT_EQ(PropCopyMore(copy.Get(), &value, MAPIAllocateMore, parent), S_OK);
    EXPECT_EQ(copy->ulPropTag, value.ulPropTag);
    check(copy->Value);
}

TEST(ProviderUtilities, PropCopyMoreCopiesDeeply)
{
    SPropValue value{};
    char text[] = "narrow";
    value.ulPropTag = PR_SUBJECT_A;
    value.Value.lpszA = text;
    CopyAndCheck(value, [&](const _PV& copy)
    {
        EXPECT_NE(copy.lpszA, text);
        EXPECT_STREQ(copy.lpszA, "narrow");
    });
    char* texts[] = {text, text};
    value.ulPropTag = PROP_TAG(PT_MV_STRING8, 0x6600);
    value.Value.MVszA.cValues = 2;
    value.Value.MVszA.lppszA = texts;
    CopyAndCheck(value, [&](const _PV& copy)
    {
        EXPECT_NE(copy.MVszA.lppszA, texts);
        EXPECT_NE(copy.MVszA.lppszA[1], text);
        EXPECT_STREQ(copy.MVszA.lppszA[1], "narrow");
    });
    BYTE bytes[] = {1, 2, 3};
    SBinary binaries[] = {{3, bytes}, {0, nullptr}};
    value.ulPropTag = PROP_TAG(PT_MV_BINARY, 0x6600);
    value.Value.MVbin.cValues = 2;
    value.Value.MVbin.lpbin = binaries;
    CopyAndCheck(value, [&](const _PV& copy)
    {
        EXPECT_NE(copy.MVbin.lpbin[0].lpb, bytes);
        EXPECT_EQ(std::memcmp(copy.MVbin.lpbin[0].lpb, bytes, 3), 0);
        EXPECT_EQ(copy.MVbin.lpbin[1].cb, 0u);
    });
}

TEST(ProviderUtilities, PropCopyMoreCopiesEveryWidth)
{
    std::int64_t numbers[] = {0x1122334455667788, -5};
    const struct
    {
        ULONG type;
        size_t width;
    } kinds[] = {{PT_MV_I2, 2},      {PT_MV_LONG, 4},     {PT_MV_R4, 4},      {PT_MV_DOUBLE, 8},
                 {PT_MV_APPTIME, 8}, {PT_MV_CURRENCY, 8}, {PT_MV_SYSTIME, 8}, {PT_MV_I8, 8}};
    for (const auto& kind : kinds)
    {
        SPropValue value{};
        value.ulPropTag = PROP_TAG(kind.type, 0x6600);
        value.Value.MVli.cValues = static_cast<ULONG>(sizeof(numbers) / kind.width);
        value.Value.MVli.lpli = reinterpret_cast<LARGE_INTEGER*>(numbers);
        CopyAndCheck(value, [&](const _PV& copy)
        {
            EXPECT_NE(static_cast<void*>(copy.MVli.lpli), static_cast<void*>(numbers));
            EXPECT_EQ(std::memcmp(copy.MVli.lpli, numbers, sizeof(numbers)), 0);
        });
    }
    GUID guid = IID_IMessage;
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_CLSID, 0x6600);
    value.Value.lpguid = &guid;
    CopyAndCheck(value, [&](const _PV& copy) { EXPECT_TRUE(IsEqualGUID(*copy.lpguid, guid) && copy.lpguid != &guid); });
}

TEST(ProviderUtilities, PropCopyMoreRefusesOthers)
{
    SPropValue dest{};
    SPropValue value{};
    value.ulPropTag = PROP_TAG(0x77, 0x6600);
    void* parent = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(1, &parent), S_OK);
    EXPECT_EQ(PropCopyMore(&dest, &value, MAPIAllocateMore, parent), MAPI_E_INVALID_TYPE);
    value = NarrowValue(PR_SUBJECT_A, "x");
    EXPECT_EQ(PropCopyMore(&dest, &value, nullptr, parent), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(PropCopyMore(nullptr, &value, MAPIAllocateMore, parent), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(dest.ulPropTag, 0u);
    value = LongValue(PR_MESSAGE_FLAGS, 7);
    EXPECT_EQ(PropCopyMore(&dest, &value, nullptr, parent), S_OK);
    EXPECT_EQ(dest.Value.l, 7);
    MAPIFreeBuffer(parent);
}

TEST(ProviderUtilities, NotificationsAreCopiedIntoOneBlock)
{
    BYTE id[] = {1, 2, 3, 4, 5};
    SizedSPropTagArray(2, tags) = {2, {PR_SUBJECT_A, PR_BODY_A}};
    NOTIFICATION notification{};
    notification.ulEventType = fnevObjectModified;
    notification.info.obj.cbEntryID = sizeof(id);
    notification.info.obj.lpEntryID = reinterpret_cast<LPENTRYID>(id);
    notification.info.obj.lpPropTagArray = reinterpret_cast<LPSPropTagArray>(&tags);
    alignas(16) BYTE block[1024];
    ULONG size = 0;
    ASSERT_EQ(ScCopyNotifications(1, &notification, block, &size), S_OK);
    EXPECT_LT(size, sizeof(block));
    const auto* copy = reinterpret_cast<const NOTIFICATION*>(block);
    EXPECT_NE(copy->info.obj.lpEntryID, notification.info.obj.lpEntryID);
    EXPECT_EQ(std::memcmp(copy->info.obj.lpEntryID, id, sizeof(id)), 0);
    EXPECT_EQ(copy->info.obj.lpPropTagArray->aulPropTag[1], PR_BODY_A);
    EXPECT_EQ(ScCopyNotifications(0, &notification, block, &size), MAPI_E_INVALID_PARAMETER);
}

TEST(ProviderUtilities, WhatIsNotDoneSaysSo)
{
    EXPECT_EQ(RTFSync(nullptr, 0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(CreateTable(nullptr, nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
}

class QueryAllRows : public Provider
{
protected:
    Ref<IMAPITable> Contents(IMAPIFolder& folder)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(folder.GetContentsTable(0, &table), S_OK);
        return Ref<IMAPITable>::Adopt(table);
    }
};

TEST_F(QueryAllRows, AppliesColumnsRestrictionAndSort)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    for (const char* subject : {"b", "c", "a", "x"})
    {
        SaveMessage(*inbox, subject);
    }
    const Ref<IMAPITable> table = Contents(*inbox);
    EXPECT_EQ(table->SeekRow(BOOKMARK_END, 0, nullptr), S_OK);
    SizedSPropTagArray(1, columns) = {1, {PR_SUBJECT_A}};
    SizedSSortOrderSet(1, order) = {1, 0, 0, {{PR_SUBJECT_A, TABLE_SORT_ASCEND}}};
    SPropValue value = NarrowValue(PR_SUBJECT_A, "x");
    SRestriction restriction{};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty = {RELOP_NE, PR_SUBJECT_A, &value};
    LPSRowSet rows = nullptr;
    ASSERT_EQ(HrQueryAllRows(table.Get(), reinterpret_cast<LPSPropTagArray>(&columns), &restriction,
                             reinterpret_cast<LPSSortOrderSet>(&order), 0, &rows),
              S_OK);
    ASSERT_EQ(rows->cRows, 3u);
    EXPECT_STREQ(rows->aRow[0].lpProps[0].Value.lpszA, "a");
    EXPECT_STREQ(rows->aRow[2].lpProps[0].Value.lpszA, "c");
    FreeProws(rows);
}

TEST_F(QueryAllRows, RefusesMoreRowsThanAskedFor)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    for (int i = 0; i < 3; ++i)
    {
        SaveMessage(*inbox);
    }
    const Ref<IMAPITable> table = Contents(*inbox);
    LPSRowSet rows = nullptr;
    EXPECT_EQ(HrQueryAllRows(table.Get(), nullptr, nullptr, nullptr, 2, &rows), MAPI_E_TABLE_TOO_BIG);
    EXPECT_EQ(rows, nullptr);
    ASSERT_EQ(HrQueryAllRows(table.Get(), nullptr, nullptr, nullptr, 3, &rows), S_OK);
    EXPECT_EQ(rows->cRows, 3u);
    FreeProws(rows);
}

TEST_F(QueryAllRows, OfEmptyTablesGivesEmptySets)
{
    LPSRowSet rows = nullptr;
    ASSERT_EQ(HrQueryAllRows(Contents(*Inbox()).Get(), nullptr, nullptr, nullptr, 0, &rows), S_OK);
    EXPECT_EQ(rows->cRows, 0u);
    FreeProws(rows);
}

using OneProperty = Provider;

TEST_F(OneProperty, FailsWithItsCellsCode)
{
    const Ref<IMessage> message = OpenMessage(SaveMessage(*Inbox()));
    HRESULT code = S_OK;
    EXPECT_EQ(Get(message.Get(), PR_BODY_A, &code).Get(), nullptr);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
    SPropValue size = LongValue(PR_MESSAGE_SIZE, 1);
    EXPECT_EQ(HrSetOneProp(message.Get(), &size), MAPI_E_COMPUTED);
    EXPECT_EQ(HrSetOneProp(message.Get(), nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(HrGetOneProp(nullptr, PR_BODY_A, nullptr), MAPI_E_INVALID_PARAMETER);
}

} // namespace
} // namespace zebstore
