// One line of progress on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zeb::tools
{

/// Says on standard error how far a long step is: items, items a second and, when the whole is known, the
/// time left. Prints nothing when standard error is no terminal. The line is cleared when the object goes.
class Progress
{
public:
    /// @param what the items in the plural, "messages".
    /// @param whole the amount that makes up the whole step, in any unit; 0 when it is not known.
    /// @param quiet print nothing in any case
    Progress(std::string what, uint64_t whole, bool quiet = false);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// One more item is done, `amount` of the whole lies behind. Prints at most ten times a second.
    void Step(uint64_t amount);
    /// Clears the line, so that something else can be printed there.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string Line(double seconds, uint64_t amount) const;

    const std::string m_what;
    const uint64_t m_whole;
    const bool m_shown;
    const Clock::time_point m_begin;
    Clock::time_point m_next;
    uint64_t m_items = 0;
    bool m_onScreen = false;
};

} // namespace zeb::tools
