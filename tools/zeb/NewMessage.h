// A message written on the command line.
#pragma once

#include "tools/common/PropertyWriter.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// The parts of a message as given on the command line, UTF-8; empty ones are left out.
struct NewMessageText
{
    std::string from;
    std::vector<std::string> to, cc, bcc; ///< addresses: "ada@example.org", "Ada Lovelace <ada@example.org>"
    std::string subject;
    std::string body;                ///< InputMark: standard input
    std::vector<std::string> attach; ///< paths of files
};

/// The message. Attachments are read when it is written. @throws UsageError for an invalid address, ToolError for a file
/// that cannot be read
MessageContent ContentOf(const NewMessageText& text);

} // namespace zeb::tools
