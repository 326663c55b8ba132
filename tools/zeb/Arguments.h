// Arguments of a command line: property values, sizes, and confirmations.
#pragma once

#include "tools/common/Property.h"

#include <optional>
#include <string>

namespace zeb::tools
{

/// Whether an argument is NAME=VALUE: a property's name, up to the first "=".
bool IsAssignment(const std::string& argument);

/// A property from NAME=VALUE, named as in a .jsonl file. Text is used unchanged, other values have the file's form,
/// including arrays; numbers may be "0x10", dates have the forms of ParseMoment.
/// @throws UsageError
Property ParseAssignment(const std::string& argument);

/// A property to delete, by name. @throws UsageError
Property ParseRemoval(const std::string& name);

/// A number of bytes: "1500", "10k", "2M", in units of 1024. @throws UsageError
LONG ParseSize(const std::string& what, const std::string& text);

/// Asks on the terminal whether to do `what` ("delete folder 'Inbox/Sub' permanently"); returns when the answer is yes,
/// or `yes` was given on the command line. @throws UsageError when there is no terminal, ToolError when the answer is
/// no
void Confirm(const std::string& what, bool yes);

} // namespace zeb::tools
