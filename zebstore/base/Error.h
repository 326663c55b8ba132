// The provider's one exception: a MAPI result code and one sentence for people.
#pragma once

#include "platform/mapi.h"

#include <exception>
#include <string>
#include <utility>

namespace zebstore
{

/// Thrown inside the provider; the call guard turns it into its result code and keeps the text for GetLastError.
class Error : public std::exception
{
public:
    /// @param text one sentence naming the thing and the place, UTF-8; may be empty.
    explicit Error(HRESULT code, std::string text = {})
        : m_code(code)
        , m_text(std::move(text))
    {
    }

    HRESULT Code() const { return m_code; }
    const char* what() const noexcept override { return m_text.c_str(); }

private:
    HRESULT m_code;
    std::string m_text;
};

/// Whether a result tells of the store's disk, or of who uses it, and not of the property or the object that was asked
/// for: it fails a whole call that otherwise reports problems of single properties.
inline bool IsOfDisk(HRESULT code)
{
    return code == MAPI_E_DISK_ERROR || code == MAPI_E_NOT_ENOUGH_DISK || code == MAPI_E_BUSY;
}

/// Throws Error when `code` is a failure; warnings pass.
inline void Check(HRESULT code, const char* text = "")
{
    if (FAILED(code))
    {
        throw Error(code, text);
    }
}

/// Throws MAPI_E_INVALID_PARAMETER when an argument does not hold what its method needs.
inline void Require(bool condition, const char* text = "")
{
    if (!condition)
    {
        throw Error(MAPI_E_INVALID_PARAMETER, text);
    }
}

/// Throws MAPI_E_UNKNOWN_FLAGS when `flags` has a bit that is not in `known`.
inline void RequireFlags(ULONG flags, ULONG known)
{
    if (flags & ~known)
    {
        throw Error(MAPI_E_UNKNOWN_FLAGS, "unknown flags");
    }
}

} // namespace zebstore
