// Collects log lines during a test.
#pragma once

#include "qorlog/QorLog.h"

#include <algorithm>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace zeb::test
{

struct LogLine
{
    int level; ///< -1 for a line written without a level
    std::string component;
    std::string text;

    bool operator==(const LogLine& other) const
    {
        return level == other.level && component == other.component && text == other.text;
    }
    friend std::ostream& operator<<(std::ostream& out, const LogLine& line)
    {
        return out << "level " << line.level << ", " << line.component << ": " << line.text;
    }
};

/// A line as the library writes it: component "ZebAPI".
inline LogLine Line(int level, std::string text)
{
    return {level, "ZebAPI", std::move(text)};
}

/// Replaces the log's sink for its lifetime. One at a time. Threads: lines may come from any.
class LogCapture
{
public:
    LogCapture()
    {
        qorlog::SetSink([this](int level, const char* component, const char* text)
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_lines.push_back({level, component, text});
        });
    }
    ~LogCapture() { qorlog::SetSink(nullptr); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> Lines() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }
    std::vector<std::string> Texts() const
    {
        std::vector<std::string> texts;
        for (const LogLine& line : Lines())
        {
            texts.push_back(line.text);
        }
        return texts;
    }
    /// How many lines begin with `beginning`.
    size_t CountBeginning(const std::string& beginning) const
    {
        const std::vector<LogLine> lines = Lines();
        return static_cast<size_t>(std::count_if(lines.begin(), lines.end(), [&beginning](const LogLine& line)
        { return line.text.compare(0, beginning.size(), beginning) == 0; }));
    }
    void Clear()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<LogLine> m_lines;
};

} // namespace zeb::test
