#include "tools/zeb/StoreExports.h"

#include "platform/module.h"
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/Profiles.h"
#include "zebapi/search/ProviderSearch.h"

namespace zeb::tools
{

std::string StoreFileOf(const std::string& profile)
{
    const HostMapi mapi;
    CZebProfAdmin administration = CZebProfAdmin::Open();
    const std::string file = FileOfStore(administration, profile);
    if (file.empty())
    {
        throw ToolError("profile '" + ValidUtf8(NameOfProfile(administration, profile)) + "' has no zebstore store");
    }
    return file;
}

void* FindStoreExport(const char* name)
{
    const std::string path = SearchProvider().path;
    std::string reason;
    // Kept for the process: the host's own start loads and releases it too.
    const platform::ModuleHandle module = platform::LoadModule(
        path, platform::ModuleKeep | platform::ModuleQuiet | platform::ModuleOwnFolderDeps, &reason);
    void* const found = module != nullptr ? platform::FindExport(module, name) : nullptr;
    if (found == nullptr)
    {
        throw ToolError("the provider '" + Utf8FromNarrow(path) + "' cannot maintain store files: " +
                        (module != nullptr ? std::string("it is not zebstore") : Utf8FromNarrow(reason)));
    }
    return found;
}

} // namespace zeb::tools
