// The search for a MAPI provider, with a report of every candidate.
#pragma once

#include "platform/mapi.h"
#include "zebapi/constants/OfficeBitness.h"

#include <functional>
#include <string>
#include <vector>

namespace zeb
{

/// The steps of the search, in order.
enum class ProviderStep
{
    Outlook,         ///< Outlook's entry of the registered mail clients
    Common,          ///< MAPI32.DLL in the common MAPI folder
    CommonSubfolder, ///< MAPI32.DLL in the common MAPI folder's NT\ (or 95\)
    System,          ///< MAPI32.DLL of the system
};

/// A display name: "Outlook", "common MAPI", "common MAPI, sub-folder", "system".
const char* ProviderStepName(ProviderStep step);

/// The result of CheckMAPIDll for one library.
struct ProviderClass
{
    EnumOfficeBitness bitness = OfficeBitnessNone;
    bool loaded = false;
    std::string loadError; ///< the system's error text when the library was not loaded; empty otherwise
    std::string resolved;  ///< the file that the loader uses for the path; empty when there is none
    const char* missingDecorated = nullptr;   ///< first decorated name that is not exported; null when all are
    const char* missingUndecorated = nullptr; ///< likewise; null also when the list was not checked
};

/// One candidate of the search.
struct ProviderCandidate
{
    ProviderStep step = ProviderStep::Outlook;
    /// The source of the path, registry key and value or call, or why there is none; a sentence without a full stop.
    std::string origin;
    std::string path;      ///< as passed to the loader; empty when the step yields none
    bool examined = false; ///< whether the library at `path` was classified
    ProviderClass found;
};

/// The result of the search.
struct ProviderReport
{
    std::vector<ProviderCandidate> candidates; ///< in the order of the search, the selected one last
    std::string path;                          ///< the provider to use; empty when there is none
    EnumOfficeBitness bitness = OfficeBitnessNone;
};

/// What the search needs from the machine in addition to the registry.
struct ProviderEnvironment
{
    /// The system's library folder with one trailing backslash; empty when unknown.
    std::function<std::string()> systemDir;
    /// Whether this is an NT system: names the sub-folder of the common MAPI folder.
    std::function<bool()> isNT;
    /// The path to load for a path of the search; the path itself unless a test redirects it.
    std::function<std::string(const std::string& path)> locate;

    /// The real machine.
    static ProviderEnvironment Machine();
};

/// Loads a library, checks which list of entry points it exports completely, and unloads it. Logs its lines.
ProviderClass CheckMAPIDll(const std::string& path, const ProviderEnvironment& environment);

/// Runs the search; Zeb_GetMapiDllPath runs it on the real machine. Writes the same lines to the log.
ProviderReport SearchProvider(const ProviderEnvironment& environment = ProviderEnvironment::Machine());

/// The system's library folder with one trailing backslash; empty when unknown.
std::string GetSystemDir();

} // namespace zeb
