#include "tests/integration/Host.h"

#include "tests/integration/Route.h"
#include "zebstore/zebstore.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace zeb::test
{
namespace
{

LPTSTR Text(const std::string& text)
{
    return reinterpret_cast<LPTSTR>(const_cast<char*>(text.c_str()));
}

/// Every shutdown in the trace must be clean.
void ExpectCleanTrace(const std::string& name)
{
    // What earlier tests of this process left by design; a library that stays loaded still counts it.
    static long kept = 0;
    std::ifstream file(name, std::ios::binary); // a name may contain a character that ends a text file
    bool started = false, ended = false;
    for (std::string line; std::getline(file, line);)
    {
        long objects = 0, buffers = 0, frees = 0;
        started = started || line.find(" MAPIInitialize 0x00000000") != std::string::npos;
        // An exception keeps the provider's text, a list of identifiers its block of entries.
        for (const char* keeping :
             {"::GetLastError 0x00000000", " IMAPIFolder::DeleteMessages ", " IMAPIFolder::CopyMessages "})
        {
            kept += line.find(keeping) != std::string::npos;
        }
        if (std::sscanf(line.c_str(), "live objects %ld, live buffers %ld, bad frees %ld", &objects, &buffers,
                        &frees) != 3)
        {
            EXPECT_NE(line.rfind("bad free: ", 0), 0u) << line;
            continue;
        }
        ended = true;
        EXPECT_EQ(objects, 0) << line;
        EXPECT_EQ(frees, 0) << line;
        EXPECT_LE(buffers, kept) << line;
    }
    EXPECT_TRUE(ended || !started) << "the provider was started and not ended";
}

} // namespace

bool g_hostsAreTraced = true;

void RegisterStore()
{
    RegisterProvider();
}

Host::Host()
{
    RegisterStore();
    if (!g_hostsAreTraced || std::getenv("ZEBSTORE_TRACE"))
    {
        return;
    }
    m_trace = File("provider-trace.txt");
    m_traced.emplace("ZEBSTORE_TRACE", m_trace);
}

Host::~Host()
{
    Stop();
    Zeb_GetMAPI().SetWasFailed(false);
    if (!m_trace.empty())
    {
        ExpectCleanTrace(m_trace);
    }
}

void Host::Start()
{
    Zeb_GetMAPI().Initialize(false);
}

void Host::Stop()
{
    if (Zeb_GetMAPI().WasInitialized())
    {
        Zeb_GetMAPI().Uninitialize(nullptr);
    }
}

void Host::CreateProfile(const std::string& name, const std::string& file, bool makeDefault)
{
    CreateStoreProfile(name, file, makeDefault);
}

void CreateStoreProfile(const std::string& name, const std::string& file, bool makeDefault)
{
    CZebProfAdmin administration = CZebProfAdmin::Open();
    const CComPtr<IProfAdmin> profiles = administration.GetInterface();
    ThrowIfFailed(profiles->CreateProfile(Text(name), nullptr, 0, 0), profiles);
    CComPtr<IMsgServiceAdmin> services;
    ThrowIfFailed(profiles->AdminServices(Text(name), nullptr, 0, 0, services.Put()), profiles);
    ThrowIfFailed(services->CreateMsgService(Text(ZEBSTORE_SERVICE_NAME), Text(ZEBSTORE_SERVICE_NAME), 0, 0), services);
    CComPtr<IMAPITable> raw;
    ThrowIfFailed(services->GetMsgServiceTable(0, raw.Put()), services);
    CZebTable table(raw.Get());
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    const CZebOnePropVal uid = rows[0][PR_SERVICE_UID];
    SPropValue path{};
    path.ulPropTag = PR_ZEBSTORE_PATH_A;
    path.Value.lpszA = const_cast<char*>(file.c_str());
    ThrowIfFailed(services->ConfigureMsgService(
                      reinterpret_cast<LPMAPIUID>(static_cast<const SPropValue&>(uid).Value.bin.lpb), 0, 0, 1, &path),
                  services);
    if (makeDefault)
    {
        ThrowIfFailed(profiles->SetDefaultProfile(Text(name), 0), profiles);
    }
}

CZebSession Host::LogOn(const char* profile)
{
    return Zeb_GetMAPI().OpenSession(nullptr, profile);
}

StoreHost::StoreHost()
{
    Start();
    CreateProfile("test", File("test.zeb"));
    LogOnAgain();
}

StoreHost::~StoreHost()
{
    LogOff();
}

void StoreHost::LogOff()
{
    m_store.reset();
    if (m_session)
    {
        m_session->Logoff(0, 0, 0);
    }
    m_session.reset();
}

void StoreHost::LogOnAgain()
{
    LogOff();
    m_session = std::make_unique<CZebSession>(LogOn());
    m_store = std::make_unique<CZebMsgStore>(OpenDefaultStore(*m_session));
}

void StoreHost::AddMessage(const char* subject, long importance, int bodySize)
{
    CZebPropValArray properties(4);
    properties[PR_SUBJECT_A] = subject;
    properties[PR_IMPORTANCE] = static_cast<LONG>(importance);
    if (bodySize > 0)
    {
        properties[PR_BODY_A] = std::string(static_cast<size_t>(bodySize), 'b').c_str();
    }
    Inbox().CreateMessage(properties, true, 0);
}

} // namespace zeb::test
