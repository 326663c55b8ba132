// Creates properties from texts, numbers and times.
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

} // namespace zeb::tools
