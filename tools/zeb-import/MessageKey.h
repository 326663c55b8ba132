// When two messages are the same.
#pragma once

#include "tools/common/PropertyWriter.h"

#include <optional>
#include <string>

namespace zeb::tools
{

/// Identifies a message: messages with equal keys are duplicates. It is a hash of the Message-ID, the subject, the date
/// and the text. Of a message without a Message-ID it also contains the class, the recipients, the attachments, and the
/// properties of contacts, appointments and tasks. Of values above 256 KiB, except texts, only the size counts. Reads no
/// ByteSource.
std::string KeyOf(const MessageContent& content);

/// A part of the key that the contents table shows: messages with different ones have different keys.
std::string ShortKeyOf(const Properties& properties);

/// When a message was sent, otherwise received; empty when it has no date.
std::optional<FILETIME> DateOf(const Properties& properties);

} // namespace zeb::tools
