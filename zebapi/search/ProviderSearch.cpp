#include "zebapi/search/ProviderSearch.h"

#include "platform/module.h"
#include "qorlog/QorLog.h"
#include "qorth/DllLoader.h"
#include "qorth/System.h"
#include "zebapi/constants/internal/EntryPoints.h"
#include "zebapi/search/Registry.h"

#include <utility>

namespace zeb
{

namespace
{

// Modes of CDllLoader: a library that is only examined, and one whose FGetComponentPath is called.
constexpr long ModeClassify = 20;
constexpr long ModeStub = 4;

constexpr char OutlookKey[] = "SOFTWARE\\Clients\\Mail\\Microsoft Outlook";
constexpr char OutlookValue[] = "DLLPathEx";
constexpr char CommonKey[] = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr char CommonValue[] = "CommonFilesDir";
constexpr char CommonMapiFolder[] = "System\\Mapi\\1033\\";
constexpr char ProviderFile[] = "MAPI32.DLL";

using ComponentPathFunction = BOOL WINAPI(LPCSTR component, LPCSTR qualifier, LPSTR path, DWORD size, BOOL install);
constexpr char MapiComponent[] = "{FF1D0740-D227-11D1-A4B0-006008AF820E}";
constexpr size_t ComponentPathSize = 260;

std::string RegistryValue(const char* key, const char* value)
{
    return std::string("HKEY_LOCAL_MACHINE\\") + key + ", value " + value;
}

/// @return the first name of the list that is not exported; null when all are
const char* FirstMissing(const CDllLoader& library, const char* const* names)
{
    for (; *names != nullptr; ++names)
    {
        if (library.GetProc(*names) == nullptr)
        {
            Log("ZebAPI", "Dll does not contains '%s'", *names);
            return *names;
        }
    }
    return nullptr;
}

/// A folder with a trailing backslash and its source, or an empty one and the reason.
struct MapiFolder
{
    std::string path;
    std::string origin;
};

/// The path that FGetComponentPath returns for MAPI; empty when it returns none.
std::string ComponentPath(ComponentPathFunction* componentPath)
{
    for (const char* qualifier : {OutlookLanguageQualifier, OfficeLanguageQualifier, static_cast<const char*>(nullptr)})
    {
        // One byte more than the size passed to the function, always zero.
        char buffer[ComponentPathSize + 1] = {};
        if (componentPath(MapiComponent, qualifier, buffer, ComponentPathSize, TRUE) && buffer[0] != '\0')
        {
            return buffer;
        }
    }
    return std::string();
}

MapiFolder GetOfficeMAPIDir(const ProviderEnvironment& environment)
{
    std::string stub = environment.systemDir() + "mapistub.dll";
    CDllLoader library(environment.locate(stub).c_str(), ModeStub);
    if (library.IsEmpty())
    {
        const std::string reason = stub + " does not load (" + library.Reason().GetString() + ")";
        stub = "mapi32.dll";
        if (!library.Load(environment.locate(stub).c_str(), ModeStub))
        {
            return {"", reason + ", nor does " + stub + " (" + library.Reason().GetString() + ")"};
        }
    }
    ComponentPathFunction* componentPath = nullptr;
    if (!library.GetProc("FGetComponentPath", componentPath))
    {
        return {"", stub + " does not export FGetComponentPath"};
    }
    const std::string file = ComponentPath(componentPath);
    if (file.empty())
    {
        return {"", "FGetComponentPath of " + stub + " knows no MAPI component"};
    }
    const CStringA folder = QorCheckLastSlash(QorGetFilePath(file.c_str()));
    if (folder.IsEmpty())
    {
        return {"", "FGetComponentPath of " + stub + " gives no folder but '" + file + "'"};
    }
    return {folder.GetString(), "FGetComponentPath of " + stub};
}

MapiFolder GetCommonMAPIDir(const ProviderEnvironment& environment)
{
    MapiFolder office = GetOfficeMAPIDir(environment);
    if (!office.path.empty())
    {
        return office;
    }
    const CStringA common = OpenRegistry(HKEY_LOCAL_MACHINE, CommonKey).StringValue(CommonValue);
    if (common.IsEmpty())
    {
        return {"", office.origin + ", and there is no " + RegistryValue(CommonKey, CommonValue)};
    }
    return {std::string(common) + CommonMapiFolder, RegistryValue(CommonKey, CommonValue)};
}

/// One run of the search.
class Search
{
public:
    explicit Search(const ProviderEnvironment& environment)
        : m_environment(environment)
    {
    }

    ProviderReport Run()
    {
        if (!TryOutlook() && !TryCommon())
        {
            TrySystem();
        }
        return std::move(m_report);
    }

private:
    bool TryOutlook()
    {
        LLog(3, "ZebAPI", "Checking Outlook MAPI...");
        const CQorRegKey key = OpenRegistry(HKEY_LOCAL_MACHINE, OutlookKey);
        if (!key.IsOpen())
        {
            Absent(ProviderStep::Outlook, std::string("there is no HKEY_LOCAL_MACHINE\\") + OutlookKey);
            return false;
        }
        const std::string path(key.StringValue(OutlookValue));
        const bool isProvider = Examine(ProviderStep::Outlook, RegistryValue(OutlookKey, OutlookValue), path);
        if (path.empty() || !isProvider)
        {
            return false;
        }
        LLog(3, "ZebAPI", "Outlook MAPI is correct: %s", path.c_str());
        return Choose();
    }

    bool TryCommon()
    {
        const MapiFolder folder = GetCommonMAPIDir(m_environment);
        LLog(3, "ZebAPI", "Checking common MAPI: %s", folder.path.c_str());
        if (folder.path.empty())
        {
            Absent(ProviderStep::Common, folder.origin);
            return false;
        }
        if (Examine(ProviderStep::Common, folder.origin, folder.path + ProviderFile))
        {
            return Choose();
        }
        const std::string nested = folder.path + (m_environment.isNT() ? "NT\\" : "95\\") + ProviderFile;
        if (!Examine(ProviderStep::CommonSubfolder, folder.origin, nested))
        {
            return false;
        }
        LLog(3, "ZebAPI", "Common MAPI is correct: %s", nested.c_str());
        return Choose();
    }

    bool TrySystem()
    {
        LLog(3, "ZebAPI", "Check system MAPI: %s", ProviderFile);
        if (!Examine(ProviderStep::System, "next to this library or in the system folder", ProviderFile))
        {
            return false;
        }
        LLog(3, "ZebAPI", "System MAPI is correct: %s", ProviderFile);
        return Choose();
    }

    /// Classifies the library at `path`. @return whether it is a provider
    bool Examine(ProviderStep step, const std::string& origin, const std::string& path)
    {
        ProviderCandidate candidate;
        candidate.step = step;
        candidate.origin = origin;
        candidate.path = path;
        candidate.examined = true;
        candidate.found = CheckMAPIDll(path, m_environment);
        m_report.candidates.push_back(std::move(candidate));
        return m_report.candidates.back().found.bitness != OfficeBitnessNone;
    }

    void Absent(ProviderStep step, const std::string& why)
    {
        ProviderCandidate candidate;
        candidate.step = step;
        candidate.origin = why;
        m_report.candidates.push_back(std::move(candidate));
    }

    /// Selects the candidate examined last. @return true
    bool Choose()
    {
        const ProviderCandidate& chosen = m_report.candidates.back();
        m_report.path = chosen.path;
        m_report.bitness = chosen.found.bitness;
        return true;
    }

    const ProviderEnvironment& m_environment;
    ProviderReport m_report;
};

} // namespace

const char* ProviderStepName(ProviderStep step)
{
    switch (step)
    {
    case ProviderStep::Outlook:
        return "Outlook";
    case ProviderStep::Common:
        return "common MAPI";
    case ProviderStep::CommonSubfolder:
        return "common MAPI, sub-folder";
    case ProviderStep::System:
        break;
    }
    return "system";
}

std::string GetSystemDir()
{
    return std::string(QorCheckLastSlash(platform::SystemFolder().c_str()));
}

ProviderEnvironment ProviderEnvironment::Machine()
{
    return {&GetSystemDir, &QorIsNTRunning, [](const std::string& path) { return path; }};
}

ProviderClass CheckMAPIDll(const std::string& path, const ProviderEnvironment& environment)
{
    ProviderClass found;
    const std::string located = environment.locate(path);
    Log("ZebAPI", "Checking '%s'", path.c_str());
    // A relative path would depend on the current folder, where anyone may have placed a file.
    const bool isFixed = located.empty() || platform::IsBareOrAbsolutePath(located);
    CDllLoader library;
    if (!isFixed || !library.Load(located.c_str(), ModeClassify))
    {
        Log("ZebAPI", "Unable to load '%s'", path.c_str());
        found.resolved = isFixed ? platform::ResolveModulePath(located) : std::string();
        found.loadError =
            isFixed ? std::string(library.Reason()) : path + ": is neither a bare file name nor an absolute path";
        return found;
    }
    found.resolved = platform::ResolveModulePath(located);
    found.loaded = true;
    found.missingDecorated = FirstMissing(library, DecoratedTestList);
    if (found.missingDecorated == nullptr)
    {
        Log("ZebAPI", "'%s' is correct and MAPI is for 32-bit Office.", path.c_str());
        found.bitness = OfficeBitness32;
        return found;
    }
    found.missingUndecorated = FirstMissing(library, UndecoratedTestList);
    if (found.missingUndecorated == nullptr)
    {
        Log("ZebAPI", "'%s' is correct and MAPI is for 64-bit Office.", path.c_str());
        found.bitness = OfficeBitness64;
    }
    return found;
}

ProviderReport SearchProvider(const ProviderEnvironment& environment)
{
    return Search(environment).Run();
}

} // namespace zeb
