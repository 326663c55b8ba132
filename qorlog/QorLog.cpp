#include "qorlog/QorLog.h"

#include "platform/environment.h"
#include "platform/never_destroyed.h"

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <string>

namespace qorlog
{
namespace
{

constexpr int FailureLevel = 1;
constexpr int DefaultLevel = 3;

/// The sink selected by the environment.
class DefaultSink
{
public:
    DefaultSink() { Open(); }
    ~DefaultSink() { Close(); }
    DefaultSink(const DefaultSink&) = delete;
    DefaultSink& operator=(const DefaultSink&) = delete;

    bool IsEnabled(int level) const
    {
        // A line without a level is not a failure.
        return m_file != nullptr && (level == NoLevel ? FailureLevel + 1 : level) <= m_maxLevel;
    }

    bool ShowsMoreThanFailures() const { return m_maxLevel > FailureLevel; }

    void Write(int level, const char* component, const char* text)
    {
        std::string line = UtcText(
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
                .count());
        line += level == NoLevel ? " - " : " " + std::to_string(level) + " ";
        line += component;
        line += ": ";
        line += text;
        line += '\n';
        // One write per line, so the lines of several processes are not mixed.
        std::fwrite(line.data(), 1, line.size(), m_file);
        std::fflush(m_file);
    }

    void Reopen()
    {
        Close();
        Open();
    }

private:
    void Open()
    {
        using zeb::platform::EnvironmentVariable;
        const std::string level = EnvironmentVariable("ZEBAPI_LOG_LEVEL").value_or("");
        m_maxLevel = level.empty() ? DefaultLevel : std::atoi(level.c_str());
        const std::string target = EnvironmentVariable("ZEBAPI_LOG").value_or("");
        if (target.empty())
        {
            return;
        }
        if (target == "stderr")
        {
            m_file = stderr;
            return;
        }
        m_file = zeb::platform::OpenFile(target, "ab");
        if (m_file == nullptr)
        {
            std::fprintf(stderr, "ZEBAPI_LOG: cannot open '%s': %s\n", target.c_str(), std::strerror(errno));
        }
    }

    void Close()
    {
        if (m_file != nullptr && m_file != stderr)
        {
            std::fclose(m_file);
        }
        m_file = nullptr;
    }

    std::FILE* m_file = nullptr;
    int m_maxLevel = DefaultLevel;
};

struct State
{
    std::recursive_mutex lock; // recursive: a sink may log
    DefaultSink fallback;
    Sink sink;
};

/// Never destroyed, because destructors of static objects may log.
State& TheState()
{
    static zeb::platform::NeverDestroyed<State> state;
    return state.Get();
}

} // namespace

std::string UtcText(long long milliseconds)
{
    // Not gmtime: its result is shared by the process or thread, and the host may use it. The calendar repeats every
    // 400 years; years begin in March here, so a leap day is the last day.
    constexpr long long DaysOf400Years = 146'097;
    constexpr long long DaysBefore1970 = 719'468; // from 0000-03-01
    const long long seconds = milliseconds / 1000;
    const long long days = seconds / 86'400 + DaysBefore1970;
    const long long day = days % DaysOf400Years;
    const long long year = (day - day / 1460 + day / 36'524 - day / 146'096) / 365;
    const long long dayOfYear = day - (365 * year + year / 4 - year / 100);
    const long long monthFromMarch = (5 * dayOfYear + 2) / 153;
    const long long month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    char text[64] = {};
    std::snprintf(text, sizeof text, "%04lld-%02lld-%02lldT%02lld:%02lld:%02lld.%03lldZ",
                  days / DaysOf400Years * 400 + year + (month <= 2 ? 1 : 0), month,
                  dayOfYear - (153 * monthFromMarch + 2) / 5 + 1, seconds / 3600 % 24, seconds / 60 % 60, seconds % 60,
                  milliseconds % 1000);
    return text;
}

void SetSink(Sink sink)
{
    State& state = TheState();
    const std::lock_guard<std::recursive_mutex> guard(state.lock);
    if (!sink)
    {
        state.fallback.Reopen();
    }
    state.sink.swap(sink);
}

bool IsEnabled(int level)
{
    State& state = TheState();
    const std::lock_guard<std::recursive_mutex> guard(state.lock);
    return state.sink ? true : state.fallback.IsEnabled(level);
}

namespace
{

void Deliver(int level, const char* component, const char* text, bool isNote)
{
    component = component == nullptr ? "" : component;
    text = text == nullptr ? "" : text;
    State& state = TheState();
    const std::lock_guard<std::recursive_mutex> guard(state.lock);
    try
    {
        if (state.sink)
        {
            // A copy: the sink may set another one.
            const Sink sink = state.sink;
            sink(level, component, text);
        }
        else if (state.fallback.IsEnabled(level) && (!isNote || state.fallback.ShowsMoreThanFailures()))
        {
            state.fallback.Write(level, component, text);
        }
    }
    catch (const std::bad_alloc&)
    {
        // The line is lost.
    }
}

} // namespace

void Write(int level, const char* component, const char* text)
{
    Deliver(level, component, text, false);
}

void WriteNote(int level, const char* component, const char* text)
{
    Deliver(level, component, text, true);
}

namespace
{

/// @return empty when out of memory: the line is lost and the caller continues
std::optional<std::string> Printed(const char* format, va_list args)
{
    va_list again;
    va_copy(again, args);
    std::optional<std::string> text;
    try
    {
        const int length = std::vsnprintf(nullptr, 0, format, args);
        text.emplace(length < 0 ? 0 : static_cast<size_t>(length), '\0');
        if (length > 0)
        {
            std::vsnprintf(text->data(), text->size() + 1, format, again);
        }
    }
    catch (const std::bad_alloc&)
    {
        text.reset();
    }
    va_end(again);
    return text;
}

} // namespace

void WriteFormat(int level, const char* component, const char* format, ...)
{
    if (!IsEnabled(level))
    {
        return;
    }
    va_list args;
    va_start(args, format);
    const std::optional<std::string> text = Printed(format, args);
    va_end(args);
    if (text)
    {
        Write(level, component, text->c_str());
    }
}

void WriteDetail(const char* component, const char* format, ...)
{
    State& state = TheState();
    const std::lock_guard<std::recursive_mutex> guard(state.lock);
    if (state.sink || !state.fallback.IsEnabled(FailureLevel))
    {
        return;
    }
    va_list args;
    va_start(args, format);
    const std::optional<std::string> text = Printed(format, args);
    va_end(args);
    if (text)
    {
        state.fallback.Write(FailureLevel, component, text->c_str());
    }
}

} // namespace qorlog
