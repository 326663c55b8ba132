// One line of a .jsonl file as a message; docs/load-format.md is its description.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/PropertyWriter.h"

#include <string>

namespace zeb::tools
{

struct LoadLine
{
    FolderPath folder;
    bool associated = false;
    MessageContent message;
};

/// Reads one line. Everything about it is checked; nothing is written anywhere.
/// @throws ToolError with the reason, without file and line
LoadLine ParseLoadLine(const std::string& line);

} // namespace zeb::tools
