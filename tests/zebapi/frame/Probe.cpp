// A host: looks for a provider with the shared library, starts it, and ends with or without stopping it.
//
// frame_probe OUTPUT stop|leave             MAPI
// frame_probe OUTPUT wab-stop|wab-leave LIBRARY   the Windows Address Book, registered as LIBRARY
#include "platform/registry.h"
#include "tests/support/RegistryScope.h"
#include "zebapi/ZebAPI.h"

#include <cstdio>
#include <fstream>
#include <string>

namespace
{

std::string Start(bool wab)
{
    try
    {
        Zeb_GetMAPI().Initialize(wab);
        return "started";
    }
    catch (CZebException* exception)
    {
        const std::string description(Zeb_GetExceptionDescription(exception));
        exception->Delete();
        return "failed with " + description;
    }
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 3)
    {
        return 2;
    }
    RegistryScope registry;
    std::ofstream output(arguments[1], std::ios::trunc);
    const std::string mode = arguments[2];
    const bool wab = mode.compare(0, 3, "wab") == 0;
    if (wab)
    {
        zeb::platform::RegistryKey::Create(zeb::platform::RegistryRoot::LocalMachine,
                                           "Software\\Microsoft\\WAB\\DLLPath")
            .SetStringValue("", count > 3 ? arguments[3] : "");
    }
    else
    {
        EnumOfficeBitness bitness = OfficeBitnessNone;
        const std::string path(Zeb_GetMapiDllPath(bitness));
        output << "found '" << path << "', class " << bitness << "\n";
    }
    output << Start(wab) << "\n";
    if (Zeb_GetMAPI().WasInitialized())
    {
        Zeb_MemFree(Zeb_MemAllocate(100, nullptr));
        output << "allocated\n";
    }
    if (mode == "stop" || mode == "wab-stop")
    {
        Zeb_GetMAPI().Uninitialize(nullptr);
        output << "stopped\n";
    }
    return 0;
}
