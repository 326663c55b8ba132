// A host with its own environment: an empty registry, a folder for files, the embedded provider registered.
#pragma once

#include "tests/integration/Route.h"
#include "tests/support/Environment.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "zebapi/ZebAPI.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace zeb::test
{

/// False in programs whose threads a trace would order.
extern bool g_hostsAreTraced;

/// Registers the embedded provider in this program's folder as the machine's provider.
void RegisterStore();
/// Creates a profile whose store is `file`. Needs MAPI started.
void CreateStoreProfile(const std::string& name, const std::string& file, bool makeDefault);

/// MAPI is not started. Nothing outlives a test: at the end the provider's trace must show no live objects, no bad
/// frees, and no live buffers except the extended errors that exceptions keep.
class Host : public testing::Test
{
protected:
    Host();
    ~Host() override;

    /// Starts MAPI. @throws CZebException*
    void Start();
    /// Logs off and stops MAPI.
    void Stop();
    /// Creates a profile whose store is `file`. Needs Start().
    void CreateProfile(const std::string& name, const std::string& file, bool makeDefault = true);
    CZebSession LogOn(const char* profile = nullptr);
    /// Starts MAPI, logs on to a new default profile, returns its session and store, and logs off.
    template <class Use>
    void WithStore(Use use)
    {
        Start();
        CreateProfile("mine", File("mine.zeb"));
        CZebSession session = LogOn();
        {
            CZebMsgStore store = OpenDefaultStore(session);
            use(session, store);
        }
        session.Logoff(0, 0, 0);
    }
    std::string File(const std::string& name) const { return m_folder.File(name); }

private:
    RegistryScope m_registry;
    TempFolder m_folder;
    std::string m_trace; // empty when another reader uses it
    std::optional<EnvironmentScope> m_traced;
};

/// A host that is logged on to its own store.
class StoreHost : public Host
{
protected:
    StoreHost();
    ~StoreHost() override;

    void LogOff();
    /// Logs off and on again, and reopens the store.
    void LogOnAgain();
    /// Opens an object of the store with the best access.
    template <class Wrapper>
    Wrapper Opened(const SBinary& id)
    {
        Wrapper opened;
        m_store->OpenEntry(id, opened, MAPI_BEST_ACCESS);
        return opened;
    }
    CZebFolder Inbox() { return m_store->OpenInboxFolder(MAPI_BEST_ACCESS); }
    CZebTable Contents() { return Inbox().GetContentsTable(MAPI_UNICODE); }
    /// Adds a message to the inbox: subject, importance, size of the body in characters.
    void AddMessage(const char* subject, long importance, int bodySize = 0);

    std::unique_ptr<CZebSession> m_session;
    std::unique_ptr<CZebMsgStore> m_store;
};

/// The data of the CZebException* thrown by `body`. Fails the test and returns empty when none is thrown.
struct Failure
{
    HRESULT result = S_OK;
    std::string text;
    std::string context; ///< CZebException::GetContext
};
template <class Body>
Failure FailureOf(Body&& body)
{
    try
    {
        body();
    }
    catch (CZebException* exception)
    {
        Failure thrown{exception->GetResult(), Zeb_GetExceptionDescription(exception).GetString(),
                       exception->GetContext().GetString()};
        exception->Delete();
        return thrown;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

} // namespace zeb::test
