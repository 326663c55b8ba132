// The text of an HTML page, for clients that do not show HTML.
#pragma once

#include <string>

namespace zeb::tools
{

/// The visible text of a page, one line per block line, separated by "\n". Without scripts, styles and the page's head.
/// @param html UTF-8, even if the page names another character set
std::string TextOfHtml(const std::string& html);

} // namespace zeb::tools
