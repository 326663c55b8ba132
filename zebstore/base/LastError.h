// The text of each thread's last failed call.
#pragma once

#include "zebstore/base/Error.h"

#include <string>

namespace zebstore
{

/// Remembers this thread's last error; without memory for the text, only the code.
void RememberError(HRESULT code, const char* text) noexcept;

/// Forgets this thread's last error text when it belongs to `code`: the call failed without one of its own.
void ForgetErrorText(HRESULT code) noexcept;

/// The text of this thread's last failed call when it failed with `code`; else empty. UTF-8.
std::string LastErrorText(HRESULT code);

} // namespace zebstore
