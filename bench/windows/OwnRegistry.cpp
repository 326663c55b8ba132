#include "bench/Stores.h"

#include <filesystem>

namespace bench
{

void UseOwnRegistry(const std::string& folder)
{
    std::filesystem::create_directories(folder);
    RegisterProvider("zebstore.dll");
}

} // namespace bench
