#include "platform/registry.h"

namespace zeb::platform
{

std::vector<std::string> RegistryKey::SubKeyNames(RegistryRoot root, const std::string& path)
{
    std::vector<std::string> names;
    if (const auto key = Open(root, path))
    {
        for (unsigned long i = 0; auto name = key->SubKeyName(i); ++i)
        {
            names.push_back(std::move(*name));
        }
    }
    return names;
}

} // namespace zeb::platform
