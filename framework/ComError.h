// The error of compiler COM support, thrown by value: _com_error; Error() returns the result code.
#pragma once

#include "platform/mapi.h"

#ifdef _WIN32

#include <comdef.h>

#else

class _com_error
{
public:
    explicit _com_error(HRESULT result)
        : m_result(result)
    {
    }
    virtual ~_com_error() = default;
    _com_error(const _com_error&) = default;
    _com_error& operator=(const _com_error&) = default;

    HRESULT Error() const noexcept { return m_result; }

private:
    HRESULT m_result;
};

#endif

namespace zeb
{

/// @throws _com_error with `result`
[[noreturn]] inline void RaiseComError(HRESULT result)
{
    throw _com_error(result);
}

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::RaiseComError;
#endif
