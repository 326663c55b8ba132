// A progress line on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zeb::tools
{

/// Shows the progress of a long operation on standard error: items, items per second and, when the total is known, the
/// time left. The destructor clears the line. When standard error is not a terminal, it prints nothing, or a line from
/// time to time.
class Progress
{
public:
    /// @param what the items in the plural, "messages".
    /// @param whole the total amount, in any unit; 0 when unknown. @param quiet print nothing
    /// @param interval between the lines where there is no terminal; 0: none
    Progress(std::string what, uint64_t whole, bool quiet = false,
             std::chrono::seconds interval = std::chrono::seconds(0));
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// One more item is done; `amount` of the total is completed. Prints at most ten times per second, or once per interval.
    void Step(uint64_t amount);
    /// Clears the line for other output.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string Line(double seconds, uint64_t amount) const;

    const std::string m_what;
    const uint64_t m_whole;
    const bool m_shown;
    const Clock::duration m_interval; ///< between two lines
    const Clock::time_point m_begin;
    Clock::time_point m_next;
    uint64_t m_items = 0;
    bool m_onScreen = false;
};

} // namespace zeb::tools
