// Repairs the bytes of a message for a strict parser.
#pragma once

#include "tools/zeb-import/Mime.h"

#include <string>

namespace zeb::tools
{

/// Whether a line consists of its end.
bool IsBlank(const std::string& line);

/// Whether a line begins with a header's name and a colon.
bool IsHeaderLine(const std::string& line);

struct MessageText
{
    std::string text;    ///< the text to parse
    std::string headers; ///< the headers of the message as written
};

/// Repairs everything that would make a parser drop text, in the message and its embedded messages and parts, and adds
/// a note for each: headers that end without an empty line, zero characters and bytes of no known character set in
/// headers, encoded words that cannot be decoded, multiparts without a usable boundary and parts without a usable type
/// (they become plain text), several Content-Type headers (the first one is used). Removes a byte order mark and the
/// "From " line of an mbox file before the headers.
/// @throws ToolError when it does not begin with headers
MessageText MendMessage(std::string bytes, Notes& notes);

} // namespace zeb::tools
