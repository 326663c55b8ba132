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
    /// @param result the result code behind it; 0 when it has none
    explicit ToolError(const std::string& text, long result = 0)
        : std::runtime_error(text)
        , m_result(result)
    {
    }

    long Result() const { return m_result; }

private:
    const long m_result;
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

/// The result code of the current exception, 0 when it has none; does not delete it.
long CurrentResult();

/// The current exception as a ToolError: `before`, its message, `after`. Deletes a framework exception. Call it inside a
/// catch block.
ToolError CurrentError(const std::string& before = {}, const std::string& after = {});

/// Throws ToolError: `doing`, a colon, and the message of the current exception. Call it inside a catch block.
[[noreturn]] void FailWhile(const std::string& doing);

/// Why a tool ends with ExitUsage or ExitFailed.
struct ToolFailure
{
    std::string text; ///< UTF-8; one line for a UsageError
    int exitCode = ExitFailed;
    long result = 0; ///< the result code behind it; 0 when there is none
};

/// The name of a result code; null when it has none.
const char* NameOfResult(long result);

/// A result code as "0x8004010F".
std::string TextOfResult(long result);

/// Runs a tool's body: returns its exit code, or reports the failure and returns ExitUsage for a UsageError, else
/// ExitFailed.
int RunTool(const std::function<void(const ToolFailure&)>& report, const std::function<int()>& body);

/// Prints "tool: failure" on standard error, the tool's name in the colour of bad news.
void ComplainOf(const char* tool, const ToolFailure& failure);

/// Prints "tool: text" on standard error.
void Complain(const char* tool, const std::string& text);

} // namespace zeb::tools
