#include "tools/common/Progress.h"

#include "platform/console.h"
#include "tools/common/Output.h"

#include <cstdio>

namespace zeb::tools
{

Progress::Progress(std::string what, uint64_t whole, bool quiet, std::chrono::seconds interval)
    : m_what(std::move(what))
    , m_whole(whole)
    , m_shown(!quiet && platform::IsTerminal(platform::OutputStream::Error))
    , m_interval(quiet || m_shown ? std::chrono::seconds(0) : interval)
    , m_begin(Clock::now())
    , m_next(m_begin + (m_shown ? Clock::duration(std::chrono::milliseconds(200)) : m_interval))
{
}

Progress::~Progress()
{
    Clear();
}

std::string Progress::Line(double seconds, uint64_t amount) const
{
    std::string line = Grouped(m_items) + " " + m_what + ", " +
                       Grouped(static_cast<unsigned long long>(static_cast<double>(m_items) / seconds)) + "/s";
    if (m_whole == 0 || amount == 0)
    {
        return line;
    }
    const double left =
        seconds * static_cast<double>(m_whole - (amount < m_whole ? amount : m_whole)) / static_cast<double>(amount);
    char text[64];
    std::snprintf(text, sizeof text, ", %.0f %%, %d:%02d left",
                  100.0 * static_cast<double>(amount) / static_cast<double>(m_whole), static_cast<int>(left) / 60,
                  static_cast<int>(left) % 60);
    return line + text;
}

void Progress::Step(uint64_t amount)
{
    ++m_items;
    const auto now = Clock::now();
    if ((!m_shown && m_interval == Clock::duration::zero()) || now < m_next)
    {
        return;
    }
    m_next = now + (m_shown ? Clock::duration(std::chrono::milliseconds(100)) : m_interval);
    const double seconds = std::chrono::duration<double>(now - m_begin).count();
    const std::string line = Shortened(Line(seconds, amount), 79);
    if (!m_shown)
    {
        std::fprintf(stderr, "%s\n", line.c_str());
        std::fflush(stderr);
        return;
    }
    std::fprintf(stderr, "\r%s\x1B[K", line.c_str());
    std::fflush(stderr);
    m_onScreen = true;
}

void Progress::Clear()
{
    if (!m_onScreen)
    {
        return;
    }
    std::fputs("\r\x1B[K", stderr);
    std::fflush(stderr);
    m_onScreen = false;
}

} // namespace zeb::tools
