// Internet mail as a message with MAPI properties.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/MailState.h"
#include "tools/zeb-import/Mime.h"

namespace zeb::tools
{

/// Converts the bytes of a mail to properties: class, subject, author, recipients, dates, identifiers, headers, plain
/// and HTML text, attachments. Nothing is dropped without a note. @param state known state in addition to the headers
/// @throws ToolError when it is not a mail, or when embedded messages are nested more than 32 deep
MessageContent ContentOfMail(std::string bytes, const std::optional<MailState>& state, Notes& notes);

} // namespace zeb::tools
