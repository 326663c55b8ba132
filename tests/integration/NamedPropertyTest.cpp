// Named properties: the library's own and the host's, through the mapping of a store.
#include "tests/integration/Host.h"

#include <filesystem>
#include <map>

namespace zeb::test
{
namespace
{

constexpr ULONG FirstNamedTag = 0x80000000;
constexpr GUID AddressSet = {0x00062004, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr GUID OwnSet = {0x6B29A9C9, 0x8B5B, 0x4C6F, {0xB4, 0x93, 0x2E, 0x8C, 0x84, 0xA2, 0xF3, 0xF2}};
// Some of the library's symbolic tags: e-mail address and display name of a contact, two of its own.
constexpr ULONG EmailAddress = 0x8083001F;
constexpr ULONG EmailName = 0x8080001E;
constexpr ULONG OwnNumber = 0x89050003;
constexpr ULONG OwnBinary = 0x89570102;

class NamedProperty : public StoreHost
{
protected:
    CZebMessage NewMessage() { return Inbox().CreateMessage(0); }

    /// The name of a tag of the store, as "set number" or "set text".
    static std::string NameOf(CZebIProp& object, ULONG tag)
    {
        CZebPropTagArray tags;
        tags.AddOne(tag);
        SPropTagArray* asked = tags;
        ULONG count = 0;
        MAPINAMEID** names = nullptr;
        const CComPtr<IMAPIProp> raw = object.GetInterface();
        ThrowIfFailed(raw->GetNamesFromIDs(&asked, nullptr, 0, &count, &names), raw);
        std::string text = "none";
        if (count == 1 && names[0] != nullptr)
        {
            text = IsEqualGUID(*names[0]->lpguid, AddressSet) ? "address "
                   : IsEqualGUID(*names[0]->lpguid, OwnSet)   ? "own "
                                                              : "other ";
            text += names[0]->ulKind == MNID_ID ? std::to_string(names[0]->Kind.lID) : "text";
        }
        Zeb_MemFree(names);
        return text;
    }
};

TEST_F(NamedProperty, EachTagHasAStoreTag)
{
    CZebMessage message = NewMessage();
    CZebNameIdHelper helper;
    const ULONG count = helper;
    std::map<ULONG, ULONG> idOfReal;
    for (ULONG i = 0; i < count; ++i)
    {
        const ULONG symbolic = helper.GetTag(i, PT_UNICODE);
        const ULONG real = message.GetRealTag(symbolic, true);
        EXPECT_EQ(PROP_TYPE(real), static_cast<ULONG>(PT_UNICODE));
        if (symbolic < FirstNamedTag)
        {
            EXPECT_EQ(real, symbolic) << "an ordinary tag";
            continue;
        }
        EXPECT_GE(real, FirstNamedTag);
        const bool own = PROP_ID(symbolic) >= 0x8900;
        EXPECT_EQ(NameOf(message, real), (own ? "own " : "address ") + std::to_string(PROP_ID(symbolic)));
        const auto known = idOfReal.emplace(real, symbolic).first;
        EXPECT_EQ(known->second, symbolic) << "two names under one tag";
    }
    EXPECT_EQ(message.GetTagsMap().GetCount(), 48);
}

TEST_F(NamedProperty, AreTheSameThroughoutAStore)
{
    CZebMessage message = NewMessage();
    CZebFolder inbox = Inbox();
    EXPECT_EQ(inbox.GetRealTag(EmailAddress, true), message.GetRealTag(EmailAddress, true));
    EXPECT_EQ(m_store->GetRealTag(OwnNumber, true), message.GetRealTag(OwnNumber, true));
}

TEST_F(NamedProperty, AreWrittenAndReadAcrossSessions)
{
    CZebMessage message = NewMessage();
    const ULONG address = message.GetRealTag(EmailAddress, true);
    BYTE bytes[] = {1, 2, 3};
    CZebPropValArray values(4);
    values[address] = ZEBW("a@example.org");
    values[message.GetRealTag(EmailName, true)] = "A";
    values[message.GetRealTag(OwnNumber, true)] = static_cast<LONG>(7);
    values[message.GetRealTag(OwnBinary, true)] = SBinary{sizeof bytes, bytes};
    message.SetProps(values, true, nullptr);
    const CZebBinary id = message.GetEntryID();
    message.Free();
    LogOnAgain();

    CZebMessage again = Opened<CZebMessage>(id);
    EXPECT_EQ(again.GetRealTag(EmailAddress, true), address);
    CZebPropTagArray tags;
    tags.Add(EmailAddress, EmailName, OwnNumber, OwnBinary, PR_OBJECT_TYPE, 0);
    tags.ApplyTo(again);
    CZebPropValArray read;
    ULONG* const count = read.CountPtr();
    again.GetProps(tags, count, &read, 0);
    ASSERT_EQ(read.Count(), 5u);
    EXPECT_EQ(std::basic_string<WCHAR>(static_cast<const WCHAR*>(read.GetAt(0))), ZEBW("a@example.org"));
    EXPECT_STREQ(static_cast<const char*>(read.GetAt(1)), "A");
    EXPECT_EQ(static_cast<LONG>(read.GetAt(2)), 7);
    EXPECT_STREQ(read.GetAt(3).String(true), "010203");
    EXPECT_EQ(static_cast<LONG>(read.GetAt(4)), MAPI_MESSAGE);
}

TEST_F(NamedProperty, OutsideTheListAreUnknown)
{
    CZebMessage message = NewMessage();
    EXPECT_EQ(message.GetRealTag(0x8999001E, false), 0u);
    EXPECT_EQ(FailureOf([&] { message.GetRealTag(0x8999001E, true); }).result, MAPI_E_BAD_VALUE);
    EXPECT_EQ(message.GetNameFromTag(message.GetRealTag(EmailAddress, true), false), 0u);
    EXPECT_EQ(FailureOf([&] { message.GetNameFromTag(0x8083001F, true); }).result, MAPI_E_BAD_VALUE);
}

TEST_F(NamedProperty, HaveTheirOwnNumbersPerStore)
{
    // The host's own name comes first in the other store, so the library's move by one.
    const ULONG here = NewMessage().GetRealTag(EmailAddress, true);
    CreateProfile("other", File("other.zeb"), false);
    CZebSession session = LogOn("other");
    {
        CZebMsgStore store = OpenDefaultStore(session);
        GUID set = IID_IMessage;
        std::basic_string<WCHAR> text = ZEBW("Keywords");
        MAPINAMEID name{};
        name.lpguid = &set;
        name.ulKind = MNID_STRING;
        name.Kind.lpwstrName = text.data();
        MAPINAMEID* names[] = {&name};
        CZebPropTagArray tags;
        const CComPtr<IMAPIProp> raw = store.GetInterface();
        ThrowIfFailed(raw->GetIDsFromNames(1, names, MAPI_CREATE, &tags), raw);
        EXPECT_EQ(NameOf(store, tags[0]), "other text");
        const ULONG there = store.GetRealTag(EmailAddress, true);
        EXPECT_NE(there, here);
        EXPECT_EQ(NameOf(store, there), "address " + std::to_string(PROP_ID(EmailAddress)));

        // A wrapper assigned an object of another store queries that store.
        CZebMessage message = NewMessage();
        EXPECT_EQ(message.GetRealTag(EmailAddress, true), here);
        message = store.OpenInboxFolder(MAPI_BEST_ACCESS).CreateMessage(0);
        EXPECT_EQ(message.GetRealTag(EmailAddress, true), there);

        // A copied property keeps its name and gets the target store's identifier.
        CZebMessage source = NewMessage();
        CZebPropValArray values(1);
        values[here] = ZEBW("a@example.org");
        source.SetProps(values, false, nullptr);
        const CComPtr<IMAPIProp> from = source.GetInterface();
        ThrowIfFailed(
            from->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMAPIProp, message.GetInterface().Get(), 0, nullptr),
            from);
        EXPECT_STREQ(message.GetStringProp(CHANGE_PROP_TYPE(there, PT_STRING8)), "a@example.org");
    }
    session.Logoff(0, 0, 0);
}

TEST_F(NamedProperty, AReadOnlyStoreAddsNone)
{
    namespace fs = std::filesystem;
    const std::string file = File("test.zeb");
    const auto reopenForReading = [&]
    {
        LogOff();
        fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
        LogOnAgain();
    };
    reopenForReading();
    {
        CZebFolder inbox = Inbox();
        EXPECT_EQ(inbox.GetRealTag(EmailAddress, false), 0u) << "none was made, and none can be";
        EXPECT_EQ(inbox.GetTagsMap().GetCount(), 1);
        EXPECT_EQ(FailureOf([&] { inbox.GetRealTag(EmailAddress, true); }).result, MAPI_E_BAD_VALUE);
    }
    LogOff();
    fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);
    LogOnAgain();
    const ULONG made = Inbox().GetRealTag(EmailAddress, true);
    reopenForReading();
    EXPECT_EQ(Inbox().GetRealTag(EmailAddress, true), made);
    LogOff();
    fs::permissions(file, fs::perms::owner_write, fs::perm_options::add);
}

} // namespace
} // namespace zeb::test
