// One line of a .jsonl file: a message, or an entry of the address book; docs/load-format.md is its description.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/PropertyWriter.h"
#include "tools/zeb/LoadAddress.h"

#include <optional>
#include <string>

namespace zeb::tools
{

struct LoadLine
{
    std::optional<AddressLine> address; ///< when set, the line is an entry of the address book, no message
    FolderPath folder;
    bool isFolder = false; ///< the line is about the folder itself, whose properties are the message's
    bool associated = false;
    MessageContent message;
};

/// Reads one line. Everything about it is checked; nothing is written anywhere.
/// @throws ToolError with the reason, without file and line
LoadLine ParseLoadLine(const std::string& line);

} // namespace zeb::tools
