// Text in lines that fit a terminal.
#pragma once

#include <string>

namespace zeb::tools
{

/// UTF-8 text in lines of at most `width` columns, each with its line end. A longer line continues on the next one with
/// its own quotation marks ("> > ") and indentation. It is broken at blanks and around wide characters; a word that is
/// wider stays whole. Blanks at the end of a line are left out, tabs become blanks up to the next column divisible by
/// eight, other control characters one blank each.
/// @param width 0: no line is broken
std::string Wrapped(const std::string& text, size_t width);

} // namespace zeb::tools
