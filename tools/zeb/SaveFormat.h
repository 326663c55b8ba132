// Folders and messages as lines of a .jsonl file; docs/load-format.md describes the format.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/Json.h"
#include "tools/common/PropertyWriter.h"

#include <string>

namespace zeb::tools
{

/// The name of a property in a .jsonl file; empty when a file cannot represent it.
std::string NameInFile(const Property& property);

/// The values of a property; a source is read completely.
FileJson ValueInFile(const Property& property);

/// Appends a value as JSON text in the form of a .jsonl file; a source is copied in pieces.
void AppendValue(std::string& out, const Property& property);

/// The line of a folder, including the line end.
std::string FolderLine(const FolderPath& folder, const Properties& properties);

/// The line of a message, including the line end. Properties that the store maintains itself are omitted.
std::string MessageLine(const FolderPath& folder, bool associated, const MessageContent& message);

} // namespace zeb::tools
