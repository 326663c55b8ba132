#include "platform/text.h"
#include "tests/zebstore/provider/AddressBookFixture.h"

#include <utility>

namespace zebstore
{
namespace
{

using AddressIds = AddressBookProvider;

TEST_F(AddressIds, OneOffIdentifiersOpenToUsers)
{
    const Bytes narrow = OneOff("Eve", "smtp", "eve@example.org", MAPI_SEND_NO_RICH_INFO);
    ULONG type = 0;
    const auto user = OpenInBook<IMailUser>(narrow, MAPI_BEST_ACCESS, &type);
    EXPECT_EQ(type, MAPI_MAILUSER);
    EXPECT_EQ(GetText(user.Get(), PR_DISPLAY_NAME_A), "Eve");
    EXPECT_EQ(GetText(user.Get(), PR_ADDRTYPE_A), "smtp");
    EXPECT_EQ(GetText(user.Get(), PR_EMAIL_ADDRESS_A), "eve@example.org");
    EXPECT_EQ(GetText(user.Get(), SmtpAddress), "eve@example.org");
    const auto rich = Get(user.Get(), PR_SEND_RICH_INFO);
    ASSERT_NE(rich.Get(), nullptr);
    EXPECT_FALSE(rich->Value.b);
    ULONG size = 0;
    ENTRYID* id = nullptr;
    EXPECT_EQ(Book().CreateOneOff(reinterpret_cast<LPTSTR>(const_cast<WCHAR*>(ZEBW("Zo\u00eb"))),
                                  reinterpret_cast<LPTSTR>(const_cast<WCHAR*>(ZEBW("SMTP"))),
                                  reinterpret_cast<LPTSTR>(const_cast<WCHAR*>(ZEBW("z@example.org"))), MAPI_UNICODE,
                                  &size, &id),
              S_OK);
    const Buffer<ENTRYID> owner(id);
    const BYTE* bytes = reinterpret_cast<const BYTE*>(id);
    const auto wide = OpenInBook<IMailUser>(Bytes(bytes, bytes + size));
    const auto name = Get(wide.Get(), PR_DISPLAY_NAME_W);
    ASSERT_NE(name.Get(), nullptr);
    EXPECT_EQ(zeb::platform::WideString(name->Value.lpszW), ZEBW("Zo\u00eb"));
}

TEST_F(AddressIds, AnUnnamedOneOffShowsAddress)
{
    const auto user = OpenInBook<IMailUser>(OneOff(nullptr, "SMTP", "eve@example.org"));
    EXPECT_EQ(GetText(user.Get(), PR_DISPLAY_NAME_A), "eve@example.org");
}

TEST_F(AddressIds, EveryCutIdentifierIsRefused)
{
    const Bytes contact = AddContact("Ada", {"ada@example.org"});
    IMAPITable* table = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(0, &table), S_OK);
    const Bytes contactEntry = Rows(table, {PR_ENTRYID}).BytesCell(0, 0);
    for (const Bytes& whole :
         {DirectoryId(), ContactsId(), AddUser("U"), AddList("L"), contactEntry, OneOff("E", "SMTP", "e@x.org")})
    {
        for (size_t size = 1; size < whole.size(); ++size)
        {
            OpenInBook<IMAPIProp>(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), 0, nullptr,
                                  MAPI_E_INVALID_ENTRYID);
            ASSERT_NE(BookErrorText(MAPI_E_INVALID_ENTRYID).find("entry identifier"), std::string::npos);
        }
    }
    Bytes damaged = DirectoryId();
    damaged.back() ^= 1;
    OpenInBook<IMAPIProp>(damaged, 0, nullptr, MAPI_E_INVALID_ENTRYID);
    OpenInBook<IMAPIProp>(contact, 0, nullptr, MAPI_E_INVALID_ENTRYID);
}

TEST_F(AddressIds, ChangedAndLongerIdentifiersOpenNothing)
{
    AddContact("Ada", {"ada@example.org"});
    IMAPITable* table = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(0, &table), S_OK);
    const Bytes contact = Rows(table, {PR_ENTRYID}).BytesCell(0, 0);
    const auto opens = [&](const Bytes& id)
    {
        IUnknown* object = nullptr;
        const HRESULT code = Book().OpenEntry(static_cast<ULONG>(id.size()), Id(id), nullptr, 0, nullptr, &object);
        const Ref<IUnknown> owner = Ref<IUnknown>::Adopt(object);
        EXPECT_TRUE(SUCCEEDED(code) || code == MAPI_E_INVALID_ENTRYID || code == MAPI_E_NOT_FOUND) << code;
        return SUCCEEDED(code);
    };
    for (const Bytes& whole : {DirectoryId(), AddUser("U"), AddList("L"), contact})
    {
        for (size_t at = 0; at < whole.size(); ++at)
        {
            Bytes damaged = whole;
            damaged[at] ^= 0x40;
            EXPECT_FALSE(opens(damaged)) << whole.size() << " bytes, at " << at;
        }
    }
    const Bytes root = GetBytes(Root().Get(), PR_ENTRYID);
    for (Bytes longer : {root, DirectoryId(), ContactsId(), AddUser("V"), contact})
    {
        ASSERT_TRUE(opens(longer));
        longer.push_back(0);
        EXPECT_FALSE(opens(longer)) << longer.size() << " bytes";
    }
}

TEST_F(AddressIds, HaveVersionAndKindAfterProvider)
{
    AddContact("Ada", {"ada@example.org"});
    IMAPITable* table = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(0, &table), S_OK);
    const Bytes contact = Rows(table, {PR_ENTRYID}).BytesCell(0, 0);
    const std::pair<Bytes, Bytes> expected[] = {{AddUser("U"), {1, 0, 0, 0, 0, 0, 0, 0}},
                                                {AddList("L"), {1, 0, 0, 0, 1, 0, 0, 0}},
                                                {DirectoryId(), {1, 0, 0, 0, 0, 1, 0, 0}},
                                                {ContactsId(), {3, 0, 0, 0, 3, 0, 0, 0}},
                                                {contact, {3, 0, 0, 0, 4, 0, 0, 0}}};
    for (const auto& [id, numbers] : expected)
    {
        ASSERT_GE(id.size(), 28u);
        EXPECT_EQ(Bytes(id.begin() + 20, id.begin() + 28), numbers);
    }
}

TEST_F(AddressIds, ConfusingUsersAndListsIsRefused)
{
    constexpr size_t kindAt = 24;
    for (Bytes id : {AddUser("U"), AddList("L")})
    {
        id[kindAt] ^= 1;
        OpenInBook<IMAPIProp>(id, 0, nullptr, MAPI_E_INVALID_ENTRYID);
        EXPECT_NE(BookErrorText(MAPI_E_INVALID_ENTRYID).find("list"), std::string::npos);
    }
}

TEST_F(AddressIds, AContactsCutFolderIsNamed)
{
    Bytes id = ContactsId();
    id.resize(id.size() - 5);
    OpenInBook<IMAPIProp>(id, 0, nullptr, MAPI_E_INVALID_ENTRYID);
    EXPECT_NE(BookErrorText(MAPI_E_INVALID_ENTRYID).find("identifier of the contacts folder"), std::string::npos)
        << BookErrorText(MAPI_E_INVALID_ENTRYID);
}

TEST_F(AddressIds, AnotherStoresEntryIsRefused)
{
    const Bytes user = AddUser("Ada");
    EXPECT_EQ(MakeProfile("Other", m_folder.File("other.zeb")), S_OK);
    IMAPISession* session = nullptr;
    ASSERT_EQ(MAPILogonEx(0, Text("Other"), nullptr, MAPI_EXTENDED | MAPI_NEW_SESSION, &session), S_OK);
    const Ref<IMAPISession> owner = Ref<IMAPISession>::Adopt(session);
    ULONG type = 0;
    IUnknown* object = nullptr;
    EXPECT_EQ(session->OpenEntry(static_cast<ULONG>(user.size()), Id(user), nullptr, 0, &type, &object),
              MAPI_E_INVALID_ENTRYID);
}

} // namespace
} // namespace zebstore
