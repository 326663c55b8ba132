#include "qorlog/QorLog.h"

#include "platform/environment.h"

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>

namespace qorlog
{
namespace
{

constexpr int DefaultLevel = 3;

/// The sink that the environment asks for.
class DefaultSink
{
public:
    DefaultSink() { Open(); }
    ~DefaultSink() { Close(); }
    DefaultSink(const DefaultSink&) = delete;
    DefaultSink& operator=(const DefaultSink&) = delete;

    bool IsEnabled(int level) const { return m_file != nullptr && level <= m_maxLevel; }

    void Write(int level, const char* component, const char* text)
    {
        std::string line = TimeStamp();
        line += level == NoLevel ? " - " : " " + std::to_string(level) + " ";
        line += component;
        line += ": ";
        line += text;
        line += '\n';
        // One write a line, so that the lines of several processes do not mix.
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
            std::fprintf(stderr, "ZEBAPI_LOG: can not open '%s': %s\n", target.c_str(), std::strerror(errno));
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

    static std::string TimeStamp()
    {
        const auto now = std::chrono::system_clock::now();
        const auto millis =
            std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
        const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
        char date[32] = {};
        // gmtime's one buffer is safe here: the log's lock is held.
        std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", std::gmtime(&seconds));
        char text[40] = {};
        std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>(millis));
        return text;
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

/// Never destroyed: destructors of static objects log too.
State& TheState()
{
    static State* state = new State;
    return *state;
}

} // namespace

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

void Write(int level, const char* component, const char* text)
{
    component = component == nullptr ? "" : component;
    text = text == nullptr ? "" : text;
    State& state = TheState();
    const std::lock_guard<std::recursive_mutex> guard(state.lock);
    if (state.sink)
    {
        // A copy: the sink may set another one.
        const Sink sink = state.sink;
        sink(level, component, text);
    }
    else if (state.fallback.IsEnabled(level))
    {
        state.fallback.Write(level, component, text);
    }
}

void WriteFormat(int level, const char* component, const char* format, ...)
{
    if (!IsEnabled(level))
    {
        return;
    }
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    std::string text(length < 0 ? 0 : static_cast<size_t>(length), '\0');
    if (length > 0)
    {
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    Write(level, component, text.c_str());
}

} // namespace qorlog
