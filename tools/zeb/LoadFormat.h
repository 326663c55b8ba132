// One line of a .jsonl file: a message, or an entry of the address book; docs/load-format.md describes the format.
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
    std::optional<AddressLine> address; ///< when set, the line is an entry of the address book, not a message
    FolderPath folder;
    bool isFolder = false; ///< the line describes the folder itself; `message` holds its properties
    bool associated = false;
    MessageContent message;
};

/// Parses and validates one line; writes nothing.
/// @throws ToolError with the reason, without file and line
LoadLine ParseLoadLine(const std::string& line);

} // namespace zeb::tools
