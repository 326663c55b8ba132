// The system's error texts.
#pragma once

#include "platform/mapi.h"

#include <string>

namespace zeb::platform
{

/// The message of a system error code, without its line end; `subject` replaces the message's placeholder for a file
/// name.
std::string SystemMessage(DWORD code, const std::string& subject = std::string());

} // namespace zeb::platform
