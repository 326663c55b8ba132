// What every program of the cookbook begins with: MAPI is started and a session is open for the length of a scope.
#pragma once

#include "zebapi/ZebAPI.h"

#include <cstdio>

/// Starts MAPI and logs on to the default profile; the destructor does the reverse, also after an exception.
/// Declare it before everything that is opened through it: stores, folders and tables must be released before MAPI ends.
class Mapi
{
public:
    Mapi() = default;
    ~Mapi() { m_session.Logoff(0, 0, 0); }
    Mapi(const Mapi&) = delete;
    Mapi& operator=(const Mapi&) = delete;

    CZebSession& Session() { return m_session; }
    CZebMsgStore OpenStore() { return m_session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS); }
    CZebFolder OpenInbox() { return OpenStore().OpenInboxFolder(MAPI_BEST_ACCESS); }

private:
    struct Library
    {
        Library() { Zeb_GetMAPI().Initialize(false); }
        ~Library() { Zeb_GetMAPI().Uninitialize(nullptr); }
    };

    Library m_library; // first: it ends after the session
    CZebSession m_session = Zeb_GetMAPI().OpenSession(nullptr, nullptr);
};

/// The end of each main: prints the current exception, whatever its type, and returns the exit code.
inline int ReportFailure()
{
    std::fprintf(stderr, "%s\n", Zeb_DescribeCurrentException().GetString());
    return 1;
}
