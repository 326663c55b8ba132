#include "tools/zeb/Versions.h"

#include "platform/module.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/Settings.h"
#include "zebapi/ZebAPI.h"
#include "zebapi/search/ProviderSearch.h"
#include "zebstore/zebstore.h"

namespace zeb::tools
{
namespace
{

/// "zebstore 1.2.3 (SQLite 3.45.6), C:\...\zebstore.dll"; another provider by its file alone.
std::string ProviderVersion()
{
    const std::string path = SearchProvider().path;
    if (path.empty())
    {
        return "none; 'zeb doctor' says why";
    }
    const platform::ModuleHandle module = platform::LoadModule(
        path, platform::ModuleKeep | platform::ModuleQuiet | platform::ModuleOwnFolderDeps, nullptr);
    void* const found = module != nullptr ? platform::FindExport(module, "ZebStoreVersion") : nullptr;
    const std::string version =
        found != nullptr ? std::string(reinterpret_cast<ZEBSTORE_VERSION*>(found)()) + ", " : "";
    return version + Utf8FromNarrow(path);
}

std::string VersionOfProvider()
{
    try
    {
        return ProviderVersion();
    }
    catch (...)
    {
        return CurrentFailure();
    }
}

} // namespace

std::string VersionDetails()
{
    const std::string settings = SettingsFileOf("zeb");
    return std::string("library   zebapi ") + Zeb_GetVersion() + "\nprovider  " + OneLine(VersionOfProvider()) +
           "\nsettings  " + (settings.empty() ? "none" : OneLine(ValidUtf8(settings)));
}

} // namespace zeb::tools
