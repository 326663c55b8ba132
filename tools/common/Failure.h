// Converts exceptions to messages and exit codes.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace zeb::tools
{

enum ExitCode : int
{
    ExitDone = 0,
    ExitFailed = 1,  ///< the library failed, or a file cannot be used; described on standard error
    ExitUsage = 2,   ///< wrong usage
    ExitSkipped = 3, ///< an import that completed except for the reported items
};

/// A failure with its complete message, UTF-8.
class ToolError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A failure of the command line itself; the tool ends with ExitUsage.
class UsageError : public ToolError
{
public:
    using ToolError::ToolError;
};

/// The message of the current exception in one line of UTF-8: the provider's own error text if there is one, else the
/// name of the result code. Deletes a framework exception. Call it inside a catch block.
std::string CurrentFailure();

/// The result code of the current exception, E_FAIL when it has none; does not delete it.
long CurrentResult();

/// Throws ToolError: `doing`, a colon, and the message of the current exception. Call it inside a catch block.
[[noreturn]] void FailWhile(const std::string& doing);

/// Runs a tool's body: returns its exit code, or prints "tool: failure" on standard error and returns
/// ExitUsage for a UsageError, else ExitFailed.
int RunTool(const char* tool, const std::function<int()>& body);

/// Prints "tool: text" on standard error.
void Complain(const char* tool, const std::string& text);

} // namespace zeb::tools
