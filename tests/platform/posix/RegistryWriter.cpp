// Writes values into the registry named by ZEBAPI_REGISTRY: registry_writer NAME COUNT writes NAME\0 .. NAME\COUNT-1.
#include "platform/registry.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

using zeb::platform::RegistryKey;
using zeb::platform::RegistryRoot;

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        return 2;
    }
    try
    {
        for (int i = 0; i < std::atoi(argv[2]); ++i)
        {
            RegistryKey::Create(RegistryRoot::CurrentUser, std::string(argv[1]) + "\\" + std::to_string(i))
                .SetStringValue("by", argv[1]);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
