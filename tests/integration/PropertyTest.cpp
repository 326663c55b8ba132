// Properties of every type, written by the host and read back from the store's file.
#include "tests/integration/Host.h"

#include <cstring>
#include <functional>

namespace zeb::test
{
namespace
{

class PropertyRoundTrip : public StoreHost
{
protected:
    /// Saves `value` in a new message, reopens the message and passes the stored value to `check`.
    void RoundTrip(const SPropValue& value, const std::function<void(const SPropValue&)>& check)
    {
        CZebMessage written = Inbox().CreateMessage(0);
        SPropValue copy = value;
        written.SetProps(1, &copy, nullptr);
        written.SaveChanges(KEEP_OPEN_READWRITE);
        CZebMessage read;
        m_store->OpenEntry(written.GetEntryID(), read, MAPI_BEST_ACCESS);
        CZebPropTagArray tags;
        tags.AddOne(value.ulPropTag);
        CZebPropValArray values;
        ULONG* const count = values.CountPtr();
        read.GetProps(tags, count, &values, 0);
        ASSERT_EQ(values.Count(), 1u);
        const SPropValue& back = static_cast<const SPropValue&>(values.GetAt(0));
        ASSERT_EQ(back.ulPropTag, value.ulPropTag);
        check(back);
    }

    static SPropValue Value(ULONG type)
    {
        SPropValue value{};
        value.ulPropTag = PROP_TAG(type, 0x6801);
        return value;
    }
};

TEST_F(PropertyRoundTrip, Numbers)
{
    SPropValue value = Value(PT_I2);
    value.Value.i = -12345;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_EQ(back.Value.i, -12345); });
    value = Value(PT_LONG);
    value.Value.l = -2147483647 - 1;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_EQ(back.Value.l, -2147483647 - 1); });
    value = Value(PT_I8);
    value.Value.li.QuadPart = -9223372036854775807LL;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_EQ(back.Value.li.QuadPart, -9223372036854775807LL); });
    value = Value(PT_CURRENCY);
    value.Value.cur.int64 = 123456789;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_EQ(back.Value.cur.int64, 123456789); });
    value = Value(PT_R4);
    value.Value.flt = 0.25f;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_EQ(back.Value.flt, 0.25f); });
    value = Value(PT_DOUBLE);
    value.Value.dbl = -1.0 / 3;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_EQ(back.Value.dbl, -1.0 / 3); });
    value = Value(PT_APPTIME);
    value.Value.at = 45000.5;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_EQ(back.Value.at, 45000.5); });
    value = Value(PT_BOOLEAN);
    value.Value.b = 1;
    RoundTrip(value, [](const SPropValue& back) { EXPECT_NE(back.Value.b, 0); });
    value = Value(PT_SYSTIME);
    value.Value.ft = {0x89ABCDEF, 0x01D01234};
    RoundTrip(value, [](const SPropValue& back)
    {
        EXPECT_EQ(back.Value.ft.dwLowDateTime, 0x89ABCDEFu);
        EXPECT_EQ(back.Value.ft.dwHighDateTime, 0x01D01234u);
    });
}

TEST_F(PropertyRoundTrip, TextAndBytes)
{
    SPropValue value = Value(PT_STRING8);
    value.Value.lpszA = const_cast<char*>("plain text");
    RoundTrip(value, [](const SPropValue& back) { EXPECT_STREQ(back.Value.lpszA, "plain text"); });
    value = Value(PT_UNICODE);
    const std::basic_string<WCHAR> wide = ZEBW("Gr\u00fc\u00dfe \u4f60\u597d \U0001F600");
    value.Value.lpszW = const_cast<WCHAR*>(wide.c_str());
    RoundTrip(value, [&](const SPropValue& back) { EXPECT_EQ(wide, back.Value.lpszW); });
    value = Value(PT_BINARY);
    BYTE bytes[] = {0, 255, 10, 0};
    value.Value.bin = {sizeof bytes, bytes};
    RoundTrip(value, [&](const SPropValue& back)
    {
        ASSERT_EQ(back.Value.bin.cb, sizeof bytes);
        EXPECT_EQ(std::memcmp(back.Value.bin.lpb, bytes, sizeof bytes), 0);
    });
    value = Value(PT_CLSID);
    GUID guid = IID_IMessage;
    value.Value.lpguid = &guid;
    RoundTrip(value, [&](const SPropValue& back) { EXPECT_EQ(std::memcmp(back.Value.lpguid, &guid, sizeof guid), 0); });
}

TEST_F(PropertyRoundTrip, ManyValues)
{
    SPropValue value = Value(PT_MV_LONG);
    LONG numbers[] = {3, -1, 2};
    value.Value.MVl = {3, numbers};
    RoundTrip(value, [&](const SPropValue& back)
    {
        ASSERT_EQ(back.Value.MVl.cValues, 3u);
        EXPECT_EQ(std::memcmp(back.Value.MVl.lpl, numbers, sizeof numbers), 0);
    });
    value = Value(PT_MV_I2);
    short shorts[] = {-7, 7};
    value.Value.MVi = {2, shorts};
    RoundTrip(value, [&](const SPropValue& back)
    {
        ASSERT_EQ(back.Value.MVi.cValues, 2u);
        EXPECT_EQ(back.Value.MVi.lpi[0], -7);
    });
    value = Value(PT_MV_STRING8);
    char one[] = "one", empty[] = "";
    LPSTR texts[] = {one, empty};
    value.Value.MVszA = {2, texts};
    RoundTrip(value, [&](const SPropValue& back)
    {
        ASSERT_EQ(back.Value.MVszA.cValues, 2u);
        EXPECT_STREQ(back.Value.MVszA.lppszA[0], "one");
        EXPECT_STREQ(back.Value.MVszA.lppszA[1], "");
    });
    value = Value(PT_MV_UNICODE);
    std::basic_string<WCHAR> wide = ZEBW("\u00e9");
    LPWSTR wides[] = {wide.data()};
    value.Value.MVszW = {1, wides};
    RoundTrip(value, [&](const SPropValue& back)
    {
        ASSERT_EQ(back.Value.MVszW.cValues, 1u);
        EXPECT_EQ(wide, back.Value.MVszW.lppszW[0]);
    });
    value = Value(PT_MV_BINARY);
    BYTE byte = 9;
    SBinary binaries[] = {{1, &byte}, {0, nullptr}};
    value.Value.MVbin = {2, binaries};
    RoundTrip(value, [&](const SPropValue& back)
    {
        ASSERT_EQ(back.Value.MVbin.cValues, 2u);
        ASSERT_EQ(back.Value.MVbin.lpbin[0].cb, 1u);
        EXPECT_EQ(back.Value.MVbin.lpbin[0].lpb[0], 9);
        EXPECT_EQ(back.Value.MVbin.lpbin[1].cb, 0u);
    });
}

TEST_F(PropertyRoundTrip, NamedPropertiesKeepTheirTag)
{
    GUID set = {0x12345678, 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}};
    std::basic_string<WCHAR> text = ZEBW("Keywords");
    MAPINAMEID byNumber{}, byText{};
    byNumber.lpguid = byText.lpguid = &set;
    byNumber.ulKind = MNID_ID;
    byNumber.Kind.lID = 0x8503;
    byText.ulKind = MNID_STRING;
    byText.Kind.lpwstrName = text.data();
    MAPINAMEID* names[] = {&byNumber, &byText};

    const auto tagsIn = [&](CZebMsgStore& store, ULONG flags)
    {
        CZebPropTagArray tags;
        const CComPtr<IMAPIProp> object = store.OpenInboxFolder(MAPI_BEST_ACCESS).GetInterface();
        ThrowIfFailed(object->GetIDsFromNames(2, names, flags, &tags), object);
        return tags;
    };
    const CZebPropTagArray made = tagsIn(*m_store, MAPI_CREATE);
    EXPECT_GE(PROP_ID(made[0]), 0x8000u);
    EXPECT_GE(PROP_ID(made[1]), 0x8000u);
    EXPECT_NE(PROP_ID(made[0]), PROP_ID(made[1]));

    CZebMessage message = Inbox().CreateMessage(0);
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_LONG, PROP_ID(made[0]));
    value.Value.l = 42;
    message.SetProps(1, &value, nullptr);
    message.SaveChanges(KEEP_OPEN_READWRITE);
    const CZebBinary id = message.GetEntryID();
    message.Free();

    LogOnAgain();
    const CZebPropTagArray found = tagsIn(*m_store, 0);
    EXPECT_EQ(PROP_ID(found[0]), PROP_ID(made[0]));
    EXPECT_EQ(PROP_ID(found[1]), PROP_ID(made[1]));
    m_store->OpenEntry(id, message, MAPI_BEST_ACCESS);
    CZebPropValArray values;
    message.GetProps(values, 1, value.ulPropTag);
    EXPECT_EQ(static_cast<LONG>(values[value.ulPropTag]), 42);
}

TEST_F(PropertyRoundTrip, LargeTextGoesThroughAStream)
{
    CZebMessage message = Inbox().CreateMessage(0);
    std::string body;
    for (int i = 0; body.size() < 1'000'000; ++i)
    {
        body += "line " + std::to_string(i) + "\r\n";
    }
    {
        const CComPtr<IStream> stream = message.OpenProperty(PR_BODY_A, MAPI_CREATE | MAPI_MODIFY);
        ULONG written = 0;
        ThrowIfFailed(stream->Write(body.data(), static_cast<ULONG>(body.size()), &written));
        EXPECT_EQ(written, body.size());
        ThrowIfFailed(stream->Commit(STGC_DEFAULT));
    }
    message.SaveChanges(KEEP_OPEN_READWRITE);
    CZebMessage read;
    m_store->OpenEntry(message.GetEntryID(), read, MAPI_BEST_ACCESS);
    EXPECT_EQ(read.GetLongString(PR_BODY_A).GetString(), body);
}

TEST_F(PropertyRoundTrip, UnsavedMessagesLeaveNothing)
{
    CZebMessage message = Inbox().CreateMessage(0);
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "never";
    message.SetProps(values, false, nullptr);
    message.Free();
    EXPECT_EQ(Contents().GetRowCount(), 0u);
}

TEST_F(PropertyRoundTrip, MissingPropertiesAreEmptyOrErrors)
{
    CZebMessage message = Inbox().CreateMessage(0);
    message.SaveChanges(KEEP_OPEN_READWRITE);
    EXPECT_TRUE(message.GetStringProp(PR_REPORT_TEXT_A).IsEmpty());
    CZebPropValArray values;
    message.GetProps(values, 1, PR_REPORT_TEXT_A);
    EXPECT_EQ(values.GetAt(0).GetType(), static_cast<ULONG>(PT_ERROR));
    EXPECT_FALSE(values.hasRealValue(PR_REPORT_TEXT_A));
}

} // namespace
} // namespace zeb::test
