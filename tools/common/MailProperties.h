// Creates properties from texts, numbers and times, and looks them up.
#pragma once

#include "tools/common/Property.h"

namespace zeb::tools
{

/// Values of PR_LAST_VERB_EXECUTED: answered, to the sender or to all.
constexpr LONG VerbReply = 102, VerbReplyToAll = 103;
/// The value of PR_FLAG_STATUS for a message that is marked for follow-up.
constexpr LONG FlagMarked = 2;

void AddBytes(Properties& properties, ULONG tag, std::string bytes);
/// @param text UTF-8
void AddText(Properties& properties, ULONG tag, const std::string& text);
void AddLong(Properties& properties, ULONG tag, LONG number);
/// The text of a PT_UNICODE property in UTF-8.
std::string Utf8Of(const Property& property);
/// @param ticks units of 100 ns since 1601
void AddTime(Properties& properties, ULONG tag, int64_t ticks);

/// The property with that identifier and a value; null when there is none. Named ones are not looked at.
const Property* FindProperty(const Properties& properties, ULONG tag);
/// The bytes of a property, read completely; empty when there is none.
std::string BytesIn(const Properties& properties, ULONG tag);
/// A text in UTF-8; empty when there is none.
std::string TextIn(const Properties& properties, ULONG tag);
LONG LongIn(const Properties& properties, ULONG tag, LONG otherwise);

} // namespace zeb::tools
