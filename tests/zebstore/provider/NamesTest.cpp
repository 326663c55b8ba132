#include "tests/zebstore/provider/ProviderFixture.h"

#include <algorithm>
#include <cstring>

namespace zebstore
{
namespace
{

constexpr GUID SomeSet = {0x11223344, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 8}};

class NamedProperties : public Provider
{
protected:
    MAPINAMEID Number(LONG number)
    {
        MAPINAMEID name{};
        name.lpguid = const_cast<GUID*>(&SomeSet);
        name.ulKind = MNID_ID;
        name.Kind.lID = number;
        return name;
    }

    MAPINAMEID Word(const WCHAR* word)
    {
        MAPINAMEID name{};
        name.lpguid = const_cast<GUID*>(&SomeSet);
        name.ulKind = MNID_STRING;
        name.Kind.lpwstrName = const_cast<WCHAR*>(word);
        return name;
    }
};

TEST_F(NamedProperties, GetStableNumbersWhenAsked)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    MAPINAMEID number = Number(0x8005);
    MAPINAMEID word = Word(ZEBW("Keywords"));
    LPMAPINAMEID names[] = {&number, &word};
    LPSPropTagArray tags = nullptr;
    EXPECT_EQ(inbox->GetIDsFromNames(2, names, 0, &tags), MAPI_W_ERRORS_RETURNED);
    EXPECT_EQ(PROP_TYPE(tags->aulPropTag[0]), PT_ERROR);
    MAPIFreeBuffer(tags);
    ASSERT_EQ(inbox->GetIDsFromNames(2, names, MAPI_CREATE, &tags), S_OK);
    const Buffer<SPropTagArray> owner(tags);
    ASSERT_EQ(tags->cValues, 2u);
    EXPECT_GE(PROP_ID(tags->aulPropTag[0]), 0x8000u);
    EXPECT_NE(tags->aulPropTag[0], tags->aulPropTag[1]);
    LPSPropTagArray again = nullptr;
    ASSERT_EQ(OpenMessage(SaveMessage(*inbox))->GetIDsFromNames(2, names, 0, &again), S_OK);
    EXPECT_EQ(again->aulPropTag[0], tags->aulPropTag[0]);
    MAPIFreeBuffer(again);
}

TEST_F(NamedProperties, GiveTheirNames)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    MAPINAMEID number = Number(0x8005);
    MAPINAMEID word = Word(ZEBW("Keywords"));
    LPMAPINAMEID names[] = {&number, &word};
    LPSPropTagArray tags = nullptr;
    ASSERT_EQ(inbox->GetIDsFromNames(2, names, MAPI_CREATE, &tags), S_OK);
    const Buffer<SPropTagArray> owner(tags);
    LPMAPINAMEID* found = nullptr;
    ULONG count = 0;
    ASSERT_EQ(inbox->GetNamesFromIDs(&tags, nullptr, 0, &count, &found), S_OK);
    const Buffer<LPMAPINAMEID> foundOwner(found);
    ASSERT_EQ(count, 2u);
    EXPECT_EQ(found[0]->ulKind, ULONG(MNID_ID));
    EXPECT_EQ(found[0]->Kind.lID, 0x8005);
    EXPECT_EQ(std::memcmp(found[1]->Kind.lpwstrName, ZEBW("Keywords"), 18), 0);
    EXPECT_TRUE(IsEqualGUID(*found[1]->lpguid, SomeSet));

    SizedSPropTagArray(2, asked) = {2, {PROP_TAG(PT_UNSPECIFIED, 0xFFF0), PR_SUBJECT_A}};
    LPSPropTagArray list = reinterpret_cast<LPSPropTagArray>(&asked);
    LPMAPINAMEID* others = nullptr;
    ASSERT_EQ(inbox->GetNamesFromIDs(&list, nullptr, 0, &count, &others), MAPI_W_ERRORS_RETURNED);
    const Buffer<LPMAPINAMEID> otherOwner(others);
    EXPECT_EQ(others[0], nullptr);
    ASSERT_NE(others[1], nullptr);
    EXPECT_TRUE(IsEqualGUID(*others[1]->lpguid, PS_MAPI));
    EXPECT_EQ(others[1]->Kind.lID, 0x37);
}

TEST_F(NamedProperties, AreListedBySetAndKind)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    MAPINAMEID number = Number(0x8005);
    MAPINAMEID word = Word(ZEBW("Keywords"));
    LPMAPINAMEID names[] = {&number, &word};
    LPSPropTagArray tags = nullptr;
    ASSERT_EQ(inbox->GetIDsFromNames(2, names, MAPI_CREATE, &tags), S_OK);
    MAPIFreeBuffer(tags);
    const auto countOf = [&](ULONG flags)
    {
        LPSPropTagArray all = nullptr;
        LPMAPINAMEID* found = nullptr;
        ULONG count = 0;
        GUID set = SomeSet;
        EXPECT_EQ(inbox->GetNamesFromIDs(&all, &set, flags, &count, &found), S_OK);
        MAPIFreeBuffer(all);
        MAPIFreeBuffer(found);
        return count;
    };
    EXPECT_EQ(countOf(0), 2u);
    EXPECT_EQ(countOf(MAPI_NO_STRINGS), 1u);
    EXPECT_EQ(countOf(MAPI_NO_IDS), 1u);
}

TEST_F(NamedProperties, AreAllListedWithoutNames)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    MAPINAMEID number = Number(0x8005);
    LPMAPINAMEID names[] = {&number};
    LPSPropTagArray tags = nullptr;
    ASSERT_EQ(inbox->GetIDsFromNames(1, names, MAPI_CREATE, &tags), S_OK);
    const ULONG made = tags->aulPropTag[0];
    MAPIFreeBuffer(tags);
    ASSERT_EQ(inbox->GetIDsFromNames(0, nullptr, 0, &tags), S_OK);
    const Buffer<SPropTagArray> all(tags);
    EXPECT_NE(std::find(tags->aulPropTag, tags->aulPropTag + tags->cValues, made), tags->aulPropTag + tags->cValues);
    EXPECT_EQ(inbox->GetIDsFromNames(0, nullptr, MAPI_CREATE, &tags), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(tags, nullptr);
}

TEST_F(NamedProperties, OfMapisSetAreTheTags)
{
    MAPINAMEID name = Number(0x37);
    GUID set = PS_MAPI;
    name.lpguid = &set;
    LPMAPINAMEID names[] = {&name};
    LPSPropTagArray tags = nullptr;
    ASSERT_EQ(Inbox()->GetIDsFromNames(1, names, MAPI_CREATE, &tags), S_OK);
    EXPECT_EQ(PROP_ID(tags->aulPropTag[0]), 0x37u);
    MAPIFreeBuffer(tags);
    name.lpguid = nullptr;
    EXPECT_EQ(Inbox()->GetIDsFromNames(1, names, MAPI_CREATE, &tags), MAPI_E_INVALID_PARAMETER);
}

} // namespace
} // namespace zebstore
