#include "tools/common/Color.h"

#include "platform/environment.h"

namespace zeb::tools
{
namespace
{

enum class Choice
{
    Auto,
    Always,
    Never,
};

Choice g_choice = Choice::Auto;

bool IsWanted()
{
    return platform::EnvironmentVariable("NO_COLOR").value_or("").empty() &&
           platform::EnvironmentVariable("TERM").value_or("") != "dumb";
}

bool HasColors(platform::OutputStream stream)
{
    if (g_choice != Choice::Auto)
    {
        return g_choice == Choice::Always;
    }
    static const bool output = IsWanted() && platform::EnableColors(platform::OutputStream::Output);
    static const bool error = IsWanted() && platform::EnableColors(platform::OutputStream::Error);
    return stream == platform::OutputStream::Output ? output : error;
}

/// The parameters of the control sequence "select graphic rendition".
const char* ParametersOf(Tone tone)
{
    switch (tone)
    {
    case Tone::Heading:
    case Tone::Unread:
        return "1";
    case Tone::Added:
        return "32";
    case Tone::Changed:
        return "33";
    case Tone::Removed:
        return "31";
    case Tone::Quoted:
        return "36";
    default:
        return "";
    }
}

} // namespace

void ChooseColors(const std::string& when)
{
    g_choice = when == "always" ? Choice::Always : when == "never" ? Choice::Never : Choice::Auto;
}

std::string Toned(Tone tone, const std::string& text, platform::OutputStream stream)
{
    if (text.empty() || tone == Tone::Plain || !HasColors(stream))
    {
        return text;
    }
    const size_t end = text.back() == '\n' ? text.size() - 1 : text.size();
    return std::string("\x1B[") + ParametersOf(tone) + "m" + text.substr(0, end) + "\x1B[0m" + text.substr(end);
}

} // namespace zeb::tools
