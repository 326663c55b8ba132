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

TEST(ProviderUtilities, HexadecimalTextNeedsItsPlaces)
{
    BYTE bytes[2] = {9, 9};
    char text[] = "unchanged";
    EXPECT_FALSE(FBinFromHex(nullptr, bytes));
    EXPECT_FALSE(FBinFromHex(Text("00"), nullptr));
    EXPECT_FALSE(FBinFromHex(Text("g0"), bytes));
    EXPECT_TRUE(FBinFromHex(Text(""), bytes));
    EXPECT_EQ(ScBinFromHexBounded(nullptr, bytes, 2), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(ScBinFromHexBounded(Text("00"), nullptr, 1), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(ScBinFromHexBounded(Text(""), nullptr, 0), S_OK);
    EXPECT_EQ(ScBinFromHexBounded(Text("00"), nullptr, 0), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(bytes[0], 9);
    HexFromBin(nullptr, 1, text);
    EXPECT_STREQ(text, "unchanged");
    HexFromBin(bytes, 1, nullptr);
    HexFromBin(nullptr, 0, text);
    EXPECT_STREQ(text, "");
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

TEST(ProviderUtilities, NotificationsOfMailAndErrorsAreCopied)
{
    BYTE id[] = {1, 2, 3};
    BYTE parent[] = {4, 5};
    char messageClass[] = "IPM.Note";
    MAPIERROR error{};
    NOTIFICATION notifications[3] = {};
    notifications[0].ulEventType = fnevCriticalError;
    notifications[0].info.err = {sizeof(id), reinterpret_cast<LPENTRYID>(id), MAPI_E_CALL_FAILED, 0, &error};
    notifications[1].ulEventType = notifications[2].ulEventType = fnevNewMail;
    notifications[1].info.newmail = {sizeof(id),
                                     reinterpret_cast<LPENTRYID>(id),
                                     sizeof(parent),
                                     reinterpret_cast<LPENTRYID>(parent),
                                     0,
                                     messageClass,
                                     7};
    notifications[2].info.newmail = notifications[1].info.newmail;
    notifications[2].info.newmail.ulFlags = MAPI_UNICODE;
    alignas(16) BYTE block[1024];
    ASSERT_EQ(ScCopyNotifications(3, notifications, block, nullptr), S_OK);
    const auto* copies = reinterpret_cast<const NOTIFICATION*>(block);
    EXPECT_NE(static_cast<void*>(copies[0].info.err.lpEntryID), static_cast<void*>(id));
    EXPECT_EQ(std::memcmp(copies[0].info.err.lpEntryID, id, sizeof(id)), 0);
    EXPECT_EQ(copies[0].info.err.scode, MAPI_E_CALL_FAILED);
    EXPECT_EQ(copies[0].info.err.lpMAPIError, nullptr) << "it belongs to the sender";
    EXPECT_EQ(std::memcmp(copies[1].info.newmail.lpParentID, parent, sizeof(parent)), 0);
    EXPECT_NE(copies[1].info.newmail.lpszMessageClass, messageClass);
    EXPECT_STREQ(copies[1].info.newmail.lpszMessageClass, "IPM.Note");
    EXPECT_EQ(copies[1].info.newmail.ulMessageFlags, 7u);
    EXPECT_EQ(copies[2].info.newmail.lpszMessageClass, nullptr);
}

TEST(ProviderUtilities, NotificationsOfTablesAreCopied)
{
    BYTE key[] = {9, 8};
    char subject[] = "Hello";
    SPropValue cells[] = {NarrowValue(PR_SUBJECT_A, subject), LongValue(PR_MESSAGE_FLAGS, 5)};
    NOTIFICATION notification{};
    notification.ulEventType = fnevTableModified;
    notification.info.tab.ulTableEvent = TABLE_ROW_ADDED;
    notification.info.tab.propIndex.ulPropTag = PR_INSTANCE_KEY;
    notification.info.tab.propIndex.Value.bin = {sizeof(key), key};
    notification.info.tab.propPrior = LongValue(PR_NULL, 0);
    notification.info.tab.row = {0, 2, cells};
    alignas(16) BYTE block[1024];
    ULONG size = 0;
    ASSERT_EQ(ScCopyNotifications(1, &notification, block, &size), S_OK);
    EXPECT_GE(size, sizeof(notification) + sizeof(cells) + sizeof(subject) + sizeof(key));
    const auto& copy = reinterpret_cast<const NOTIFICATION*>(block)->info.tab;
    EXPECT_NE(copy.propIndex.Value.bin.lpb, key);
    EXPECT_EQ(std::memcmp(copy.propIndex.Value.bin.lpb, key, sizeof(key)), 0);
    ASSERT_EQ(copy.row.cValues, 2u);
    EXPECT_NE(copy.row.lpProps, cells);
    EXPECT_NE(copy.row.lpProps[0].Value.lpszA, subject);
    EXPECT_STREQ(copy.row.lpProps[0].Value.lpszA, "Hello");
    EXPECT_EQ(copy.row.lpProps[1].Value.l, 5);
}

TEST(ProviderUtilities, OtherNotificationsAreNotCopied)
{
    NOTIFICATION notification{};
    notification.ulEventType = fnevExtended;
    BYTE block[256];
    EXPECT_EQ(ScCopyNotifications(1, &notification, block, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(ScCopyNotifications(1, nullptr, block, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(ScCopyNotifications(1, &notification, nullptr, nullptr), MAPI_E_INVALID_PARAMETER);
}

SCODE WINAPI AllocateNothing(ULONG, LPVOID, LPVOID* block)
{
    *block = nullptr;
    return S_OK;
}

SCODE WINAPI RefuseToAllocate(ULONG, LPVOID, LPVOID*)
{
    return MAPI_E_CALL_FAILED;
}

TEST(ProviderUtilities, PropCopyMoreNeedsItsMemory)
{
    SPropValue dest{};
    SPropValue value = NarrowValue(PR_SUBJECT_A, "x");
    EXPECT_EQ(PropCopyMore(&dest, &value, AllocateNothing, nullptr), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(PropCopyMore(&dest, &value, RefuseToAllocate, nullptr), MAPI_E_CALL_FAILED);
    value.ulPropTag = PROP_TAG(PT_MV_STRING8, 0x6600);
    value.Value.MVszA = {2, nullptr};
    EXPECT_EQ(PropCopyMore(&dest, &value, AllocateNothing, nullptr), MAPI_E_INVALID_PARAMETER)
        << "a count without elements";
    value.ulPropTag = PROP_TAG(PT_MV_CLSID, 0x6600);
    GUID guid = IID_IMessage;
    value.Value.MVguid = {0x7FFFFFFF, &guid};
    EXPECT_EQ(PropCopyMore(&dest, &value, AllocateNothing, nullptr), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(dest.ulPropTag, 0u);
}

TEST(ProviderUtilities, PropCopyMoreCopiesInstances)
{
    BYTE bytes[] = {1, 2, 3};
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_MV_BINARY | MV_INSTANCE, 0x6600);
    value.Value.bin = {sizeof(bytes), bytes};
    CopyAndCheck(value, [&](const _PV& copy)
    {
        EXPECT_NE(copy.bin.lpb, bytes);
        EXPECT_EQ(std::memcmp(copy.bin.lpb, bytes, sizeof(bytes)), 0);
    });
    value = LongValue(PROP_TAG(PT_MV_LONG | MV_INSTANCE, 0x6600), 77);
    CopyAndCheck(value, [](const _PV& copy) { EXPECT_EQ(copy.l, 77); });
    value = LongValue(PROP_TAG(0x1077 | MV_INSTANCE, 0x6600), 77);
    SPropValue dest{};
    EXPECT_EQ(PropCopyMore(&dest, &value, AllocateNothing, nullptr), MAPI_E_INVALID_TYPE);
}

TEST(ProviderUtilities, PropCopyMoreCopiesIdentifiersAndWideTexts)
{
    GUID guids[] = {IID_IMessage, IID_IMsgStore};
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_MV_CLSID, 0x6600);
    value.Value.MVguid = {2, guids};
    CopyAndCheck(value, [&](const _PV& copy)
    {
        EXPECT_NE(copy.MVguid.lpguid, guids);
        EXPECT_EQ(std::memcmp(copy.MVguid.lpguid, guids, sizeof(guids)), 0);
    });
    WCHAR wide[] = {'a', 0x20AC, 0};
    WCHAR* texts[] = {wide, nullptr};
    value.ulPropTag = PROP_TAG(PT_MV_UNICODE, 0x6600);
    value.Value.MVszW = {2, texts};
    CopyAndCheck(value, [&](const _PV& copy)
    {
        EXPECT_NE(copy.MVszW.lppszW[0], wide);
        EXPECT_EQ(std::memcmp(copy.MVszW.lppszW[0], wide, sizeof(wide)), 0);
        EXPECT_EQ(copy.MVszW.lppszW[1], nullptr);
    });
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
