#include "bench/Stores.h"

#include <cstdlib>
#include <filesystem>

namespace bench
{

void UseOwnRegistry(const std::string& folder)
{
    std::filesystem::create_directories(folder);
    const std::string file = folder + "/registry.reg";
    setenv("ZEBAPI_REGISTRY", file.c_str(), 1);
    RegisterProvider("libzebstore.so");
}

} // namespace bench
