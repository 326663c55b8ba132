// The embedded provider's exports for the files of stores.
#pragma once

#include <string>

namespace zeb::tools
{

/// The file of a profile's store, UTF-8. @throws ToolError when the profile has no zebstore store
std::string StoreFileOf(const std::string& profile);

/// An export of the provider of this machine.
/// @throws ToolError when it has none of that name, because it is not zebstore or older
void* FindStoreExport(const char* name);

/// The same with its type.
template <class Function>
Function* StoreExport(const char* name)
{
    return reinterpret_cast<Function*>(FindStoreExport(name));
}

} // namespace zeb::tools
