// The search for a MAPI provider, with an account of everything it looked at.
#pragma once

#include "platform/mapi.h"
#include "zebapi/constants/OfficeBitness.h"

#include <functional>
#include <string>
#include <vector>

namespace zeb
{

/// The places where a provider is looked for, in their order.
enum class ProviderStep
{
    Outlook,         ///< Outlook's entry among the registered mail clients
    Common,          ///< MAPI32.DLL in the common MAPI folder
    CommonSubfolder, ///< MAPI32.DLL in the common MAPI folder's NT\ (or 95\)
    System,          ///< MAPI32.DLL of the system
};

/// A name for people: "Outlook", "common MAPI", "common MAPI, sub-folder", "system".
const char* ProviderStepName(ProviderStep step);

/// What CheckMAPIDll found out about one library.
struct ProviderClass
{
    EnumOfficeBitness bitness = OfficeBitnessNone;
    bool loaded = false;
    std::string loadError;                    ///< why nothing was loaded, in the system's words; empty when it was
    std::string resolved;                     ///< the file that the loader takes for the path; empty when there is none
    const char* missingDecorated = nullptr;   ///< first decorated name that is not exported; null when all are
    const char* missingUndecorated = nullptr; ///< likewise; null also when the list was not tried
};

/// One place that was looked at.
struct ProviderCandidate
{
    ProviderStep step = ProviderStep::Outlook;
    /// Where the path came from, registry key and value or call, or why there is none; a sentence without a
    /// full stop.
    std::string origin;
    std::string path;      ///< as it is handed to the loader; empty when the place named none
    bool examined = false; ///< whether the library at `path` was classified
    ProviderClass found;
};

/// The whole search.
struct ProviderReport
{
    std::vector<ProviderCandidate> candidates; ///< in the order of the search, the chosen one last
    std::string path;                          ///< the provider to use; empty when there is none
    EnumOfficeBitness bitness = OfficeBitnessNone;
};

/// What the search asks the machine for besides the registry.
struct ProviderEnvironment
{
    /// The system's library folder with one trailing backslash; empty when the system does not tell.
    std::function<std::string()> systemDir;
    /// Whether this is an NT system: names the sub-folder of the common MAPI folder.
    std::function<bool()> isNT;
    /// The path that is loaded for a path of the search; the path itself unless a test puts another folder
    /// under it.
    std::function<std::string(const std::string& path)> locate;

    /// The machine as it is.
    static ProviderEnvironment Machine();
};

/// Loads a library, sees which list of entry points it exports whole, and unloads it. Writes its lines with Log.
ProviderClass CheckMAPIDll(const std::string& path, const ProviderEnvironment& environment);

/// Runs the search; Zeb_GetMapiDllPath is this on the machine as it is. Writes the same lines to the log.
ProviderReport SearchProvider(const ProviderEnvironment& environment = ProviderEnvironment::Machine());

/// The system's library folder with one trailing backslash; empty when the system does not tell.
std::string GetSystemDir();

} // namespace zeb
