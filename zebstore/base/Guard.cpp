#include "zebstore/base/Guard.h"

#include "platform/text.h"
#include "zebstore/base/Memory.h"

#include <cstring>
#include <new>

namespace zebstore
{

HRESULT ResultOfCurrentException() noexcept
{
    try
    {
        throw;
    }
    catch (const Error& error)
    {
        const HRESULT code = FAILED(error.Code()) ? error.Code() : MAPI_E_CALL_FAILED;
        RememberError(code, error.what());
        return code;
    }
    catch (const std::bad_alloc&)
    {
        RememberError(MAPI_E_NOT_ENOUGH_MEMORY, "out of memory");
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    catch (const std::exception& error)
    {
        RememberError(MAPI_E_CALL_FAILED, error.what());
        return MAPI_E_CALL_FAILED;
    }
    catch (...)
    {
        RememberError(MAPI_E_CALL_FAILED, "unknown failure");
        return MAPI_E_CALL_FAILED;
    }
}

HRESULT LastErrorAsMapi(HRESULT code, ULONG flags, MAPIERROR** error)
{
    Require(error != nullptr, "the output pointer is null");
    *error = nullptr;
    RequireFlags(flags, MAPI_UNICODE);
    const std::string text = FAILED(code) ? LastErrorText(code) : std::string();
    if (text.empty())
    {
        return S_OK;
    }
    const zeb::platform::WideString wide = zeb::platform::WideFromUtf8(text.data(), text.size());
    const bool unicode = (flags & MAPI_UNICODE) != 0;
    Buffer<MAPIERROR> result(Allocate(sizeof(MAPIERROR)));
    std::memset(result.Get(), 0, sizeof(MAPIERROR));
    result->ulVersion = MAPI_ERROR_VERSION;
    if (unicode)
    {
        result->lpszError = reinterpret_cast<LPTSTR>(CopyWide(wide.c_str(), result.Get()));
        result->lpszComponent = reinterpret_cast<LPTSTR>(CopyWide(ZEBW("zebstore"), result.Get()));
    }
    else
    {
        const std::string narrow = zeb::platform::NarrowFromWide(wide.data(), wide.size());
        result->lpszError = reinterpret_cast<LPTSTR>(CopyNarrow(narrow.c_str(), result.Get()));
        result->lpszComponent = reinterpret_cast<LPTSTR>(CopyNarrow("zebstore", result.Get()));
    }
    *error = result.Detach();
    return S_OK;
}

} // namespace zebstore
