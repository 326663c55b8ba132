// Registry access of the library; failures are CZebExceptions.
#pragma once

#include "platform/narrow.h"
#include "platform/registry.h"
#include "qorth/RegKey.h"
#include "zebapi/frame/Exception.h"

namespace zeb
{

/// Opens a registry key for reading; a key that is absent or denied to this user is not open.
/// @throws CZebException* MAPI_E_CALL_FAILED when the registry cannot be read, with the reason as its extended error
inline CQorRegKey OpenRegistry(HKEY root, const char* path, const char* file = ZEB_FILE, int line = ZEB_LINE,
                               const char* operation = ZEB_CALLER)
{
    try
    {
        return CQorRegKey(root, path, 0, 1);
    }
    catch (const platform::RegistryError& error)
    {
        framework::WithMemory([&]
        {
            CZebException::ThrowWithError(MAPI_E_CALL_FAILED, platform::NarrowFromUtf8(error.what()).c_str(), file,
                                          line, operation);
        });
        framework::ThrowOutOfMemory();
    }
}

} // namespace zeb
