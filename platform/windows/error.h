// The system's words for its error codes.
#pragma once

#include "platform/mapi.h"

#include <string>

namespace zeb::platform
{

/// The message of a system error code, without its line end; `subject` stands where the message names a file.
std::string SystemMessage(DWORD code, const std::string& subject = std::string());

} // namespace zeb::platform
