// A message as people read it.
#pragma once

#include "tools/common/ListedAttachment.h"
#include "tools/common/Times.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// A name and an address, UTF-8; either may be empty.
struct MailAddress
{
    std::string name;
    std::string address; ///< that of the internet when there is one; empty when it has another form
};

/// Which text of a message is read.
enum class BodyKind
{
    None,
    Plain, ///< PR_BODY, or the HTML text where there is no other
    Html,  ///< the HTML text, or PR_BODY where there is no other
};

struct ReadableMessage
{
    MailAddress from;   ///< the author: PR_SENT_REPRESENTING_..., or without one PR_SENDER_...
    MailAddress sender; ///< who sent it for the author; empty when it is the author
    std::vector<MailAddress> to, cc, bcc;
    FILETIME date{}; ///< sent, or received when it was not sent
    bool hasDate = false;
    std::string subject;
    std::string headers; ///< PR_TRANSPORT_MESSAGE_HEADERS; empty when there are none
    std::string text;
    std::vector<ListedAttachment> attachments;
};

/// Reads a message without marking it as read. HTML is converted to text. @throws CZebException*
ReadableMessage ReadText(CZebMessage& message, BodyKind kind);

/// The same without its headers and attachments. @throws CZebException*
ReadableMessage ReadTextOnly(CZebMessage& message, BodyKind kind);

/// "Ada <ada@example.org>", or the one of both that there is.
std::string TextOf(const MailAddress& address);
/// The same of each, with commas between them.
std::string TextOf(const std::vector<MailAddress>& addresses);

/// The message as a JSON object.
Json JsonOf(const ReadableMessage& message);

} // namespace zeb::tools
