// One place that turns exceptions into messages and exit codes.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace zeb::tools
{

enum ExitCode : int
{
    ExitDone = 0,
    ExitFailed = 1,  ///< the library's failure, or a file that can not be used; described on standard error
    ExitUsage = 2,   ///< wrong usage
    ExitSkipped = 3, ///< an import that is done but for the items it reported
};

/// A failure with its whole sentence, UTF-8.
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

/// What the exception in flight says, in one line of UTF-8: the provider's own sentence where there is one,
/// else the name of the result code. Deletes a framework exception. Call it inside a catch block.
std::string CurrentFailure();

/// The result code of the exception in flight, E_FAIL when it has none; does not delete it.
long CurrentResult();

/// Throws ToolError: `doing`, a colon, and what the exception in flight says. Call it inside a catch block.
[[noreturn]] void FailWhile(const std::string& doing);

/// Runs a tool's body: returns its exit code, or prints "tool: failure" on standard error and returns
/// ExitUsage for a UsageError, else ExitFailed.
int RunTool(const char* tool, const std::function<int()>& body);

/// Prints "tool: text" on standard error.
void Complain(const char* tool, const std::string& text);

} // namespace zeb::tools
