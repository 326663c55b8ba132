// Conversion of JSON values to property values.
#pragma once

#include "tools/common/Json.h"
#include "tools/common/Property.h"

#include <string>

namespace zeb::tools
{

/// A property by its name in a .jsonl file: "PR_SUBJECT", "PR_SUBJECT_A", "0x3FDE0003",
/// "{GUID}:PT_LONG:id:0x8503" or "{GUID}:PT_UNICODE:name:Keywords".
/// @throws ToolError
Property PropertyNamed(const std::string& name);

/// Reads the values of a property of the given type from JSON.
/// @throws ToolError for a value of the wrong type or out of range
void SetValues(Property& property, const FileJson& value);

} // namespace zeb::tools
