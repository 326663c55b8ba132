// A host that loads the library itself, opens the Windows Address Book and unloads the library.
//
// frame_unload_probe OUTPUT ZEBAPI WAB TRACE    the library, the library of the WAB, and the file that the WAB traces into
#include "platform/module.h"
#include "platform/registry.h"
#include "tests/support/RegistryScope.h"
#include "zebapi/Mapiload.h"

#include <fstream>
#include <iterator>
#include <string>

namespace
{

using GetMapi = CZebAPI& (*)();

/// Zeb_GetMAPI as either C++ ABI spells it.
GetMapi FindGetMapi(zeb::platform::ModuleHandle module)
{
    for (const char* name : {"_Z11Zeb_GetMAPIv", "?Zeb_GetMAPI@@YAAEAVCZebAPI@@XZ"})
    {
        if (void* address = zeb::platform::FindExport(module, name))
        {
            return reinterpret_cast<GetMapi>(address);
        }
    }
    return nullptr;
}

std::string Contents(const char* path)
{
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

} // namespace

/// The library abandons these objects by design, including its log.
extern "C" int __lsan_is_turned_off()
{
    return 1;
}

int main(int count, char** arguments)
{
    if (count != 5)
    {
        return 2;
    }
    const RegistryScope registry;
    zeb::platform::RegistryKey::Create(zeb::platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath")
        .SetStringValue("", arguments[3]);
    std::ofstream output(arguments[1], std::ios::trunc);
    const zeb::platform::ModuleHandle module = zeb::platform::LoadModule(arguments[2], 0);
    const GetMapi getMapi = FindGetMapi(module);
    if (getMapi == nullptr)
    {
        output << "no Zeb_GetMAPI\n";
        return 1;
    }
    try
    {
        getMapi().Initialize(true);
    }
    catch (...)
    {
        output << "not started\n";
        return 1;
    }
    output << "started\n";
    const std::string before = Contents(arguments[4]);
    zeb::platform::UnloadModule(module);
    output << (Contents(arguments[4]) == before ? "unloaded\n" : "the provider was called\n");
    return 0;
}
