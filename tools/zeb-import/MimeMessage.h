// Internet mail as a message with MAPI properties.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/MailState.h"
#include "tools/zeb-import/Mime.h"

namespace zeb::tools
{

/// Turns the bytes of a mail into properties: class, subject, author, recipients, dates, identifiers, headers,
/// plain and HTML text, attachments. Nothing is dropped without a note.
/// @param state what is known of it besides its headers
/// @throws ToolError when it is no mail, or when more than 32 messages are embedded in each other
MessageContent ContentOfMail(std::string bytes, const std::optional<MailState>& state, Notes& notes);

} // namespace zeb::tools
