// What is written on a command line: values of properties, sizes, and the answer to a question.
#pragma once

#include "tools/common/Property.h"

#include <optional>
#include <string>

namespace zeb::tools
{

/// Whether an argument is NAME=VALUE: a property's name, up to the first "=".
bool IsAssignment(const std::string& argument);

/// A property from NAME=VALUE, named as in a .jsonl file. Text is taken as it stands, other values as the
/// file has them, arrays included; numbers may be "0x10", dates are those of ParseMoment.
/// @throws UsageError
Property ParseAssignment(const std::string& argument);

/// A property by name that is to be deleted. @throws UsageError
Property ParseRemoval(const std::string& name);

/// A number of bytes: "1500", "10k", "2M", in units of 1024. @throws UsageError
LONG ParseSize(const std::string& what, const std::string& text);

/// Asks on the terminal whether to do `what` ("delete folder 'Inbox/Sub' for good"); returns when the answer
/// is yes, or `yes` was given on the command line.
/// @throws UsageError where there is nobody to ask, ToolError when the answer is no
void Confirm(const std::string& what, bool yes);

} // namespace zeb::tools
