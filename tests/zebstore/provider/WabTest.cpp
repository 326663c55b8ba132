#include "tests/zebstore/provider/AddressBookFixture.h"

#include <cstring>
#include <filesystem>

namespace zebstore
{
namespace
{

class WabMode : public AddressBookProvider
{
protected:
    ~WabMode() override
    {
        m_wabBook = {};
        m_wab = {};
    }

    HRESULT Open(const char* file = nullptr)
    {
        WAB_PARAM param{};
        param.cbSize = sizeof(param);
        param.szFileName = const_cast<char*>(file);
        param.ulFlags = WAB_ENABLE_PROFILES;
        IAddrBook* book = nullptr;
        IWABObject* wab = nullptr;
        const HRESULT result = WABOpen(&book, &wab, &param, 0);
        EXPECT_EQ(book != nullptr, SUCCEEDED(result));
        EXPECT_EQ(wab != nullptr, SUCCEEDED(result));
        m_wabBook = Ref<IAddrBook>::Adopt(book);
        m_wab = Ref<IWABObject>::Adopt(wab);
        return result;
    }

    Ref<IAddrBook> m_wabBook;
    Ref<IWABObject> m_wab;
};

TEST_F(WabMode, GivesTheDefaultProfilesBook)
{
    AddUser("Ada");
    m_book = {};
    m_session = {};
    MAPIUninitialize();
    ASSERT_EQ(Open(), S_OK);
    m_book = m_wabBook;
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada"}));
    AddUser("Boris");
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada", "Boris"}));
    EXPECT_EQ(MAPIInitialize(nullptr), S_OK);
}

TEST_F(WabMode, OpensTheFileThatIsNamed)
{
    AddUser("Ada");
    EXPECT_EQ(Admin()->DeleteProfile(Text("Main"), 0), S_OK);
    EXPECT_EQ(Open(), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Open(m_path.c_str()), S_OK);
    m_book = m_wabBook;
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada"}));
    EXPECT_EQ(Open(m_folder.File("none.zeb").c_str()), MAPI_E_NOT_FOUND);
}

TEST_F(WabMode, AReadOnlyFileRefusesWrites)
{
    namespace fs = std::filesystem;
    const Bytes ada = AddUser("Ada");
    m_book = {};
    m_session = {};
    const auto writing = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(m_path, writing, fs::perm_options::remove);
    ASSERT_EQ(Open(m_path.c_str()), S_OK);
    m_book = m_wabBook;
    IMAPITable* table = nullptr;
    ASSERT_EQ(Root()->GetHierarchyTable(0, &table), S_OK);
    {
        const Rows rows(table, {PR_CONTAINER_FLAGS, PR_ACCESS_LEVEL});
        ASSERT_EQ(rows.Count(), 2u);
        EXPECT_EQ(rows.Cell(0, 0).Value.l, LONG(AB_RECIPIENTS | AB_UNMODIFIABLE));
        EXPECT_EQ(rows.Cell(0, 1).Value.l, 0);
    }
    const auto user = OpenInBook<IMailUser>(ada);
    EXPECT_EQ(GetText(user.Get(), PR_DISPLAY_NAME_A), "Ada");
    EXPECT_EQ(Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, "B")), MAPI_E_NO_ACCESS);
    OpenInBook<IMailUser>(ada, MAPI_MODIFY, nullptr, MAPI_E_NO_ACCESS);
    fs::permissions(m_path, fs::perms::owner_write, fs::perm_options::add);
}

TEST_F(WabMode, ItsObjectGivesMemoryInChains)
{
    ASSERT_EQ(Open(), S_OK);
    const long before = g_liveBuffers;
    void* root = nullptr;
    ASSERT_EQ(m_wab->AllocateBuffer(100, &root), S_OK);
    std::memset(root, 1, 100);
    void* more = nullptr;
    ASSERT_EQ(m_wab->AllocateMore(50, root, &more), S_OK);
    std::memset(more, 2, 50);
    EXPECT_EQ(g_liveBuffers, before + 1);
    EXPECT_EQ(m_wab->FreeBuffer(root), S_OK);
    EXPECT_EQ(g_liveBuffers, before);
    EXPECT_EQ(m_wab->AllocateMore(1, nullptr, &more), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(m_wab->AllocateBuffer(1, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(WabMode, ItsObjectAnswersToIUnknown)
{
    ASSERT_EQ(Open(), S_OK);
    void* object = nullptr;
    ASSERT_EQ(m_wab->QueryInterface(IID_IUnknown, &object), S_OK);
    EXPECT_EQ(object, static_cast<void*>(m_wab.Get()));
    m_wab->Release();
    EXPECT_EQ(m_wab->QueryInterface(IID_IMAPIProp, &object), E_NOINTERFACE);
}

TEST_F(WabMode, WhatItLacksSaysSo)
{
    ASSERT_EQ(Open(), S_OK);
    EXPECT_EQ(m_wab->Backup(nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->Import(nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->Find(nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->VCardDisplay(nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->LDAPUrl(nullptr, nullptr, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->VCardCreate(nullptr, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->VCardRetrieve(nullptr, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->GetMe(nullptr, 0, nullptr, nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_wab->SetMe(nullptr, 0, SBinary{}, 0), MAPI_E_NO_SUPPORT);
    MAPIERROR* error = nullptr;
    EXPECT_EQ(m_wab->GetLastError(MAPI_E_NO_SUPPORT, 0, &error), S_OK);
    const Buffer<MAPIERROR> owner(error);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(WABOpen(nullptr, nullptr, nullptr, 0), MAPI_E_INVALID_PARAMETER);
}

} // namespace
} // namespace zebstore
