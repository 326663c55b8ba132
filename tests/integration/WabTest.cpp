// The Windows Address Book through the library, with the embedded provider as its library.
#include "tests/integration/AddressBooks.h"

#include "framework/ComError.h"
#include "platform/module.h"
#include "platform/registry.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace zeb::test
{
namespace
{

using Names = std::vector<std::string>;

class Wab : public Host
{
protected:
    Wab()
    {
        platform::RegistryKey::Create(platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath")
            .SetStringValue("", platform::OwnFolder() + ZEB_STORE_LIBRARY);
        Start();
        CreateProfile("test", File("test.zeb"));
        {
            CZebSession session = LogOn();
            {
                CZebAddressBook book = session.OpenAddressBook(nullptr, AB_NO_DIALOG);
                m_user = AddEntry(book, "Ada Brandt", "ada@example.org").String();
                const CZebBinary list = AddEntry(book, "Team", nullptr);
                AddMember(book, list, CZebBinary(m_user));
                m_list = list.String();
            }
            session.Logoff(0, 0, 0);
        }
        Stop();
    }

    CZebAPI& Library() { return Zeb_GetMAPI(); }

    CStringA m_user, m_list; ///< identifiers as text: MAPI memory is freed with the provider
};

TEST_F(Wab, OpensTheDefaultProfilesAddressBook)
{
    Library().Initialize(true);
    EXPECT_TRUE(Library().IsWAB());
    EXPECT_TRUE(Library().WasInitialized());
    {
        CZebAddressBook book = Library().GetWABAddressBook(false);
        ASSERT_TRUE(book.IsValid());
        EXPECT_TRUE(book.IsWAB());
        EXPECT_EQ(book.GetObjectType(), ULONG(MAPI_ADDRBOOK));
        EXPECT_EQ(NamesOf(RowsOf(book.OpenMainContainer(nullptr).GetContentsTable(0), true)),
                  (Names{"Ada Brandt", "Team"}));
    }
    Library().Uninitialize(nullptr);
    EXPECT_FALSE(Library().IsWAB());
    EXPECT_FALSE(Library().WasInitialized());
}

TEST_F(Wab, EveryOpenEntryTakesTheMarking)
{
    Library().Initialize(true);
    {
        CZebAddressBook book = Library().GetWABAddressBook(false);
        CZebABContainer root = book.OpenRootContainer(MAPI_BEST_ACCESS);
        EXPECT_TRUE(root.IsWAB());
        EXPECT_FALSE(root.IsExchange());
        CZebABContainer directory;
        root.OpenEntry(ContainerID(book, "Global Address List"), directory, MAPI_BEST_ACCESS);
        EXPECT_TRUE(directory.IsWAB());
        EXPECT_TRUE(directory.IsExchange());
        CZebDistList list;
        directory.OpenEntry(CZebBinary(m_list), list, MAPI_BEST_ACCESS);
        EXPECT_TRUE(list.IsWAB());
        const std::vector<BookRow> members = RowsOf(list.GetContentsTable(0), true);
        ASSERT_EQ(NamesOf(members), (Names{"Ada Brandt"}));
        CZebABItem item;
        list.OpenEntry(members[0].id, item, MAPI_BEST_ACCESS);
        EXPECT_TRUE(item.IsWAB());
        CZebMailUser converted = item;
        EXPECT_FALSE(converted.IsWAB());
        CZebMailUser user;
        book.OpenEntry(CZebBinary(m_user), user, MAPI_BEST_ACCESS);
        EXPECT_TRUE(user.IsWAB());
        EXPECT_STREQ(user.GetStringPropA(PR_EMAIL_ADDRESS_A), "ada@example.org");
        EXPECT_TRUE(book.OpenMainContainer("").IsWAB());
    }
    Library().Uninitialize(nullptr);
}

TEST_F(Wab, AnotherInstanceHasItsOwnBook)
{
    Library().Initialize(true);
    {
        CZebAddressBook first = Library().GetWABAddressBook(false);
        CZebAddressBook same = Library().GetWABAddressBook(false);
        CZebAddressBook another = Library().GetWABAddressBook(true);
        EXPECT_EQ(first.GetInterface().Get(), same.GetInterface().Get());
        EXPECT_NE(first.GetInterface().Get(), another.GetInterface().Get());
        EXPECT_TRUE(another.IsWAB());
        CZebAddressBook copy(another);
        another.Free();
        EXPECT_TRUE(copy.OpenRootContainer(MAPI_BEST_ACCESS).IsValid());
    }
    Library().Uninitialize(nullptr);
}

TEST_F(Wab, MemoryComesFromBoundWabObject)
{
    Library().Initialize(true);
    {
        char* root = static_cast<char*>(Zeb_MemAllocate(100, nullptr));
        EXPECT_EQ(root[99], 0);
        char* more = static_cast<char*>(Zeb_MemAllocate(1000, root));
        EXPECT_EQ(more[999], 0);
        Zeb_MemFree(root);
        CZebBinary binary("00FF");
        EXPECT_STREQ(binary.String(), "00FF");
    }
    Library().Uninitialize(nullptr);
    EXPECT_EQ(FailureOf([] { Zeb_MemAllocate(1, nullptr); }).result, MAPI_E_NOT_INITIALIZED);
}

TEST_F(Wab, IdentifiersCompareAsTextsIgnoringCase)
{
    Library().Initialize(true);
    {
        CZebAddressBook book = Library().GetWABAddressBook(false);
        EXPECT_TRUE(book.CompareEntryIDs("00AB", "00ab"));
        EXPECT_FALSE(book.CompareEntryIDs("00AB", "00AC"));
        EXPECT_TRUE(book.CompareEntryIDs(nullptr, ""));
    }
    Library().Uninitialize(nullptr);
}

TEST_F(Wab, SessionsAndUtilitiesAreMissing)
{
    Library().Initialize(true);
    {
        CZebAddressBook book = Library().GetWABAddressBook(false);
        EXPECT_EQ(FailureOf([&] { Library().OpenSession(nullptr, nullptr); }).result, MAPI_E_CALL_FAILED);
        const CZebBinary contacts = ContainerID(book, "Contacts");
        HRESULT raised = S_OK;
        try
        {
            book.OpenContainer(contacts, MAPI_BEST_ACCESS);
        }
        catch (const _com_error& error)
        {
            raised = error.Error();
        }
        EXPECT_EQ(raised, E_POINTER) << "the folder that is wrapped is opened by a session";
        CZebABContainer asContainer;
        book.OpenEntry(contacts, asContainer, MAPI_BEST_ACCESS);
        EXPECT_TRUE(asContainer.IsWAB());
        CZebTable table = asContainer.GetContentsTable(0);
        EXPECT_EQ(table.GetRowCount(), 0u);
        SRowSet* rows = nullptr;
        EXPECT_EQ(FailureOf([&] { table.QueryAllRows(&rows, nullptr, nullptr); }).result, MAPI_E_CALL_FAILED);
    }
    Library().Uninitialize(nullptr);
}

TEST_F(Wab, EntriesAreChangedThroughIt)
{
    Library().Initialize(true);
    {
        CZebAddressBook book = Library().GetWABAddressBook(false);
        CZebMailUser user;
        book.OpenEntry(CZebBinary(m_user), user, MAPI_BEST_ACCESS);
        user.SetDisplayName("Zara");
        EXPECT_EQ(NamesOf(RowsOf(book.OpenMainContainer(nullptr).GetContentsTable(0), true)), (Names{"Team", "Zara"}));
    }
    Library().Uninitialize(nullptr);
}

/// Counts notifications.
class CountingSink final : public IMAPIAdviseSink
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_references; }
    ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION) override
    {
        m_told += count;
        return 0;
    }
    bool WaitForOne() const
    {
        for (int i = 0; i < 1000 && m_told == 0; ++i)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return m_told != 0;
    }
    ULONG References() const { return m_references; }

private:
    std::atomic<ULONG> m_references{1};
    std::atomic<ULONG> m_told{0};
};

TEST_F(Wab, TablesNotifyUntilTheStop)
{
    CountingSink sink;
    Library().Initialize(true);
    {
        CZebAddressBook book = Library().GetWABAddressBook(false);
        CZebTable table = book.OpenMainContainer(nullptr).GetContentsTable(0);
        ULONG connection = 0;
        table.Advise(&sink, &connection);
        AddEntry(book, "Boris", "boris@example.org");
        EXPECT_TRUE(sink.WaitForOne());
        table.Unadvise(connection);
    }
    Library().Uninitialize(nullptr);
    EXPECT_EQ(sink.References(), 1u);
}

TEST_F(Wab, MapiAndTheWabTakeTurns)
{
    for (int i = 0; i < 2; ++i)
    {
        Library().Initialize(true);
        EXPECT_TRUE(Library().GetWABAddressBook(true).IsValid());
        Library().Uninitialize(nullptr);
        Library().SetWasFailed(false);
        Start();
        {
            CZebSession session = LogOn();
            EXPECT_TRUE(session.OpenAddressBook(nullptr, 0).IsValid());
            session.Logoff(0, 0, 0);
        }
        Stop();
    }
}

TEST_F(Wab, WithoutADefaultProfileFailsCleanly)
{
    Start();
    {
        CZebProfAdmin administration = CZebProfAdmin::Open();
        const CComPtr<IProfAdmin> profiles = administration.GetInterface();
        EXPECT_EQ(profiles->DeleteProfile(reinterpret_cast<LPTSTR>(const_cast<char*>("test")), 0), S_OK);
    }
    Stop();
    EXPECT_EQ(FailureOf([&] { Library().Initialize(true); }).result, MAPI_E_NOT_FOUND);
    EXPECT_FALSE(Library().IsWAB());
    EXPECT_TRUE(Library().WasFailed());
    Library().Uninitialize(nullptr);
}

} // namespace
} // namespace zeb::test
