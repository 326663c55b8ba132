// A message as mail: headers and MIME parts.
#pragma once

#include "tools/common/PropertyWriter.h"

#include <functional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// Takes the next piece of a mail.
using MailSink = std::function<void(const std::string& piece)>;

/// Writes a message with all that it holds. A message that came over the internet keeps its headers as they are stored,
/// but for those that describe its parts; others get them from its properties. Text is in UTF-8, HTML in its own code
/// page, attachments in base64; the lines end with "\r\n", and none begins with "From ".
/// @return a sentence for each thing that is left out: attachments that mail cannot hold (links and OLE objects), also
/// of messages inside ("attachment 2.1 is ..."), and texts that are stored only as RTF
/// @throws ToolError; what `sink` throws
std::vector<std::string> WriteMail(const MessageContent& message, const MailSink& sink);

/// The line before a message in an mbox file: "From ada@example.org Fri Jan  2 03:04:05 2026" in UTC.
std::string MboxLine(const MessageContent& message);

} // namespace zeb::tools
