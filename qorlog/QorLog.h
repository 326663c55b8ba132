// Logging: lines with a component and an optional level, passed to one sink.
//
// The default sink is chosen by the environment when the first line is written: ZEBAPI_LOG names a file to
// append to, or "stderr"; unset or empty, lines go nowhere. ZEBAPI_LOG_LEVEL (default 3) is the highest level
// written: 1 failures only, 2 also what Log and LNote write, 3 also progress. Safe from every thread.
#pragma once

#include <functional>
#include <string>
#include <type_traits>

namespace qorlog
{

/// The level of a line that Log wrote.
constexpr int NoLevel = -1;

/// Receives one line: no line end, no time stamp. The pointers are valid during the call.
using Sink = std::function<void(int level, const char* component, const char* text)>;

/// Sends every line of every level to `sink` instead of the default one; an empty `sink` restores the default one (and
/// reads the environment again). Calls of a sink never overlap; a sink may log, which calls it again.
void SetSink(Sink sink);

/// Whether a line of `level` would reach a sink.
bool IsEnabled(int level);

/// Writes `text` unchanged: a '%' in it is not a format.
void Write(int level, const char* component, const char* text);

/// Like Write, for a line that does not report a failure, whatever its level: the default sink omits it when only
/// failures are written.
void WriteNote(int level, const char* component, const char* text);

/// Explains the failure line before it, printf-style. Only the default sink writes
/// it: another sink gets the stated lines.
void WriteDetail(const char* component, const char* format, ...);

/// A time in UTC, in milliseconds since 1970, as "2026-01-03T11:58:40.000Z".
std::string UtcText(long long milliseconds);

/// Writes printf-style text. Call it through LLog and Log, which handle text without arguments.
void WriteFormat(int level, const char* component, const char* format, ...);

template <class T>
constexpr bool IsPrintable = std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_pointer_v<T>;

} // namespace qorlog

/// Writes a line with a level: 1 for errors, 3 for progress. Without arguments `text` is written unchanged.
inline void LLog(int level, const char* component, const char* text)
{
    qorlog::Write(level, component, text);
}

/// printf-style; the arguments are numbers and pointers.
template <class First, class... Rest>
void LLog(int level, const char* component, const char* format, First first, Rest... rest)
{
    static_assert(qorlog::IsPrintable<First> && (qorlog::IsPrintable<Rest> && ...), "pass the character pointer");
    qorlog::WriteFormat(level, component, format, first, rest...);
}

/// Writes a line without a level. Without arguments `text` is written unchanged.
inline void Log(const char* component, const char* text)
{
    qorlog::Write(qorlog::NoLevel, component, text);
}

/// printf-style; the arguments are numbers and pointers.
template <class First, class... Rest>
void Log(const char* component, const char* format, First first, Rest... rest)
{
    static_assert(qorlog::IsPrintable<First> && (qorlog::IsPrintable<Rest> && ...), "pass the character pointer");
    qorlog::WriteFormat(qorlog::NoLevel, component, format, first, rest...);
}

/// Writes a line with a level that does not report a failure; `text` is written unchanged.
inline void LNote(int level, const char* component, const char* text)
{
    qorlog::WriteNote(level, component, text);
}

/// Explains the failure line before it, in the default sink only. The arguments are numbers and pointers.
template <class First, class... Rest>
void LDetail(const char* component, const char* format, First first, Rest... rest)
{
    static_assert(qorlog::IsPrintable<First> && (qorlog::IsPrintable<Rest> && ...), "pass the character pointer");
    qorlog::WriteDetail(component, format, first, rest...);
}
