// The MAPI calls of the process with their results, from the provider's trace and the library's log.
#pragma once

#include "platform/mapi.h"

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace zeb::view
{

struct LogLine
{
    std::string number; ///< of the call; empty for a line of the library
    std::string call;   ///< "IMAPITable::QueryRows", or the component that wrote the line
    std::string result; ///< "S_OK", or the name of the code and the code
    std::string text;   ///< of a failure
    bool isFailure = false;
};

/// A line of zebstore's trace: number, call, result in hexadecimal, the error text of a failure.
LogLine ParseTraceLine(const std::string& line);

/// Collects lines as long as it lives, the newest 20,000.
///
/// The library hands its lines to it (Zeb_SetLogSink). zebstore writes its calls to a temporary file, which the object
/// names to it in ZEBSTORE_TRACE, or to the one that the variable names already. Other providers have no trace: of these,
/// the failures are shown. Threads: the sink is called on any thread, the operations on one.
class CallLog
{
public:
    /// Before MAPI is started.
    CallLog();
    /// After MAPI has ended. Deletes its temporary file.
    ~CallLog();
    CallLog(const CallLog&) = delete;
    CallLog& operator=(const CallLog&) = delete;

    /// Takes over what was written since the last time. @return whether there was anything
    bool Update();
    const std::deque<LogLine>& Lines() const { return m_lines; }
    void Clear() { m_lines.clear(); }

private:
    static void Take(void* context, int level, const char* component, const char* text);
    void Add(LogLine line);
    /// The bytes that were added to the trace.
    std::string ReadTrace();

    std::mutex m_lock;
    std::vector<LogLine> m_fromSink; ///< guarded by m_lock
    std::deque<LogLine> m_lines;
    std::wstring m_file;
    bool m_isTemporary;
    LONGLONG m_position = 0;
    std::string m_partial; ///< a line whose end is not written yet
};

} // namespace zeb::view
