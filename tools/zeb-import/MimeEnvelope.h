// The headers of a mail as MAPI properties.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/MailState.h"
#include "tools/zeb-import/Mime.h"

namespace zeb::tools
{

/// Adds class, subject, author, sender, reply addresses, dates, identifiers, importance, state, the headers as
/// text, and the recipients. For several headers of one name the first one is used; recipients come from all of them.
/// @param headers the headers as written; empty: as GMime has them @param state known state of the message; it
/// overrides the headers
void AddEnvelope(MessageContent& content, GMimeMessage* message, const std::string& headers,
                 const std::optional<MailState>& state, Notes& notes);

} // namespace zeb::tools
