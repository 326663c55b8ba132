// Objects that cross the library's boundary, and resources after it is stopped.
#include "tests/integration/Content.h"

#include <fstream>

namespace zeb::test
{
namespace
{

using Boundary = Host;

TEST_F(Boundary, ExceptionsAreCaughtByEachType)
{
    Start();
    bool caught = false;
    try
    {
        LogOn("no such profile");
    }
    catch (CException* exception)
    {
        caught = true;
        EXPECT_NE(dynamic_cast<CZebException*>(exception), nullptr);
        EXPECT_TRUE(exception->IsKindOf(RUNTIME_CLASS(CException)));
        EXPECT_FALSE(Zeb_GetExceptionDescription(exception).IsEmpty());
        exception->Delete();
    }
    EXPECT_TRUE(caught);
    caught = false;
    try
    {
        LogOn("no such profile");
    }
    catch (CObject* object)
    {
        caught = true;
        static_cast<CException*>(object)->Delete();
    }
    EXPECT_TRUE(caught);
}

TEST_F(Boundary, AnEmptyWrapperRaisesComError)
{
    CZebTable table;
    EXPECT_THROW(table.GetRowCount(), _com_error);
    CZebFolder folder;
    EXPECT_THROW(folder.GetContentsTable(0), _com_error);
    CZebSession session(nullptr);
    EXPECT_THROW(session.GetMsgStoresTable(), _com_error);
}

TEST_F(Boundary, OpeningFoldersAsMessagesIsRefused)
{
    WithStore([&](CZebSession& session, CZebMsgStore& store)
    {
        const CZebBinary folder = store.OpenInboxFolder(MAPI_BEST_ACCESS).GetEntryID();
        CZebMessage message;
        const HRESULT byStore = FailureOf([&] { store.OpenEntry(folder, message, MAPI_BEST_ACCESS); }).result;
        EXPECT_TRUE(byStore == MAPI_E_INVALID_TYPE || byStore == MAPI_E_INTERFACE_NOT_SUPPORTED) << std::hex << byStore;
        EXPECT_FALSE(message.IsValid());
        // Without a specific interface the object is opened, and then refused because of its type.
        CZebMailUser user;
        EXPECT_EQ(FailureOf([&] { session.OpenEntry(folder, user, MAPI_BEST_ACCESS); }).result, MAPI_E_INVALID_TYPE);
        EXPECT_FALSE(user.IsValid());
    });
}

TEST_F(Boundary, AFailureCarriesTheProvidersSentence)
{
    WithStore([&](CZebSession&, CZebMsgStore& store)
    {
        CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
        CZebMessage nothing;
        const Failure thrown = FailureOf([&] { inbox.OpenEntry(CZebBinary("00112233"), nothing, MAPI_BEST_ACCESS); });
        EXPECT_LT(thrown.result, 0);
        EXPECT_FALSE(thrown.text.empty());
    });
}

/// The last non-empty line of a file.
std::string LastLine(const std::string& name)
{
    std::ifstream file(name);
    std::string line, last;
    while (std::getline(file, line))
    {
        if (!line.empty())
        {
            last = line.substr(0, line.find('\r'));
        }
    }
    return last;
}

TEST_F(Boundary, NothingOfTheProviderOutlivesStop)
{
    const std::string trace = File("trace.txt"), empty = File("empty.txt");
    {
        const EnvironmentScope traced("ZEBSTORE_TRACE", empty);
        Start();
        Stop();
    }
    const std::string before = LastLine(empty);
    {
        const EnvironmentScope traced("ZEBSTORE_TRACE", trace);
        Start();
        CreateProfile("mine", File("mine.zeb"));
        CZebSession session = LogOn();
        {
            CZebMsgStore store = OpenDefaultStore(session);
            CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
            SaveMessage(inbox, "a");
            CZebTable table = inbox.GetContentsTable(0);
            CZebRowSet rows;
            table.QueryRows(&rows, 0, nullptr, nullptr);
            CZebRestrictionAllocator restriction;
            restriction.Allocate();
            restriction.CreateContent(PR_SUBJECT_A, "a", FL_SUBSTRING);
            table.Restrict(restriction, 0);
            FailureOf([&] { inbox.OpenFolderByName("Nowhere"); });
        }
        Zeb_GetMAPI().Uninitialize(&session);
    }
    // A library that stays loaded also counts what earlier tests left by design.
    EXPECT_EQ(LastLine(trace), before);
    EXPECT_EQ(before.rfind("live objects 0, ", 0), 0u) << before;
    EXPECT_NE(before.find(", bad frees 0"), std::string::npos) << before;
}

} // namespace
} // namespace zeb::test
