// Folders and messages as lines of a .jsonl file; docs/load-format.md is its description.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/PropertyWriter.h"

#include <nlohmann/json.hpp>

#include <string>

namespace zeb::tools
{

/// The name by which a .jsonl file calls a property; empty when a file can not carry it.
std::string NameInFile(const Property& property);

/// The values of a property whose source, if it has one, is read to its end.
nlohmann::json ValueInFile(const Property& property);

/// A value as a .jsonl file has it, appended as JSON text; a source is copied piece by piece.
void AppendValue(std::string& out, const Property& property);

/// The line of a folder, line end included.
std::string FolderLine(const FolderPath& folder, const Properties& properties);

/// The line of a message, line end included. What the store knows by itself is left out.
std::string MessageLine(const FolderPath& folder, bool associated, const MessageContent& message);

} // namespace zeb::tools
