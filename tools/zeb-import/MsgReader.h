// Reads .msg files.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/Notes.h"

#include <string>

namespace zeb::tools
{

/// Reads the message of a .msg file, with recipients, attachments and embedded messages. Binaries above 256 KiB are
/// read when they are written. Properties that the store maintains are left out.
/// @param file path, UTF-8
/// @throws platform::CompoundError, ToolError when it is damaged, or embedded messages are nested more than 32 deep
MessageContent ReadMsg(const std::string& file, Notes& notes);

} // namespace zeb::tools
