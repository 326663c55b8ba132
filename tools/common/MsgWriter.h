// Writes .msg files.
#pragma once

#include "tools/common/PropertyWriter.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// Writes a message with its recipients, attachments and embedded messages to a new .msg file. Values with a source are
/// copied piece by piece, and their sources are at their end then. Properties that the store maintains
/// (PropertyReader.h, IsStoresOwn) are not written.
/// @param file path, UTF-8; it does not exist
/// @return a text for each property that is left out
/// @throws platform::CompoundError, and whatever a source throws
std::vector<std::string> WriteMsg(const MessageContent& content, const std::string& file);

} // namespace zeb::tools
