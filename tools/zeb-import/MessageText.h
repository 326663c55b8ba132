// The bytes of a message, made fit for a parser that keeps to the rules.
#pragma once

#include "tools/zeb-import/Mime.h"

#include <string>

namespace zeb::tools
{

/// Whether a line begins with a header's name and a colon.
bool IsHeaderLine(const std::string& line);

struct MessageText
{
    std::string text;    ///< to be parsed
    std::string headers; ///< those of the message as they were written
};

/// Repairs what would make a parser leave text out, in the message and in the messages and parts inside it,
/// and notes each: headers that end without an empty line, zero characters and bytes of no known character set
/// in headers, encoded words that do not decode, multiparts without a usable boundary and parts without a
/// usable type (they become plain text), several Content-Type headers (the first counts). A byte order mark
/// and the "From " line of an mbox file before the headers are left out.
/// @throws ToolError when it does not begin with headers
MessageText MendMessage(std::string bytes, Notes& notes);

} // namespace zeb::tools
