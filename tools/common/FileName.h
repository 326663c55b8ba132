// Names of files that are made from text which others chose.
#pragma once

#include <string>

namespace zeb::tools
{

/// A name that every file system takes and that stays in its directory: separators, control characters and what Windows
/// reserves are replaced, long names shortened before their extension.
/// @param otherwise the name when nothing is left
std::string SafeFileName(const std::string& name, const std::string& otherwise);

/// The path of a file of a directory that does not exist: the name, or "name (2).ext" and so on.
std::string FreeFile(const std::string& directory, const std::string& name);

/// Creates a directory and those above it, unless it is there. @throws ToolError naming it
void MakeDirectory(const std::string& directory);

} // namespace zeb::tools
