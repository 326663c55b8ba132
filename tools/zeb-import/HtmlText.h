// The text of an HTML page, for readers that show no HTML.
#pragma once

#include <string>

namespace zeb::tools
{

/// The text that a page shows, in lines as its blocks have them, with "\n" between lines. Scripts, styles and
/// the page's head are left out.
/// @param html UTF-8, whatever the page says of its own character set
std::string TextOfHtml(const std::string& html);

} // namespace zeb::tools
