// The headers of a mail as MAPI properties.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/MailState.h"
#include "tools/zeb-import/Mime.h"

namespace zeb::tools
{

/// Adds class, subject, author, sender, reply addresses, dates, identifiers, importance, state, the headers as
/// text, and the recipients. Of several headers of one name the first counts; recipients are those of all.
/// @param headers as they were written; empty: as GMime has them
/// @param state what is known of the message besides its headers, which come second
void AddEnvelope(MessageContent& content, GMimeMessage* message, const std::string& headers,
                 const std::optional<MailState>& state, Notes& notes);

} // namespace zeb::tools
