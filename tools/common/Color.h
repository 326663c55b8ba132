// Colours of the output, where it is a terminal.
#pragma once

#include "platform/console.h"

#include <string>

namespace zeb::tools
{

/// What a piece of text is.
enum class Tone
{
    Plain,
    Heading,
    Unread,  ///< what asks for attention
    Added,   ///< good news
    Changed, ///< neither
    Removed, ///< bad news
    Quoted,  ///< less important than the rest
};

/// When colours are used: "auto" (a terminal that is not dumb, unless NO_COLOR is set), "always" or "never".
void ChooseColors(const std::string& when);

/// The text in the colour of its tone, or unchanged when that stream has no colours. A line end stays behind the colour.
std::string Toned(Tone tone, const std::string& text, platform::OutputStream stream = platform::OutputStream::Output);

} // namespace zeb::tools
