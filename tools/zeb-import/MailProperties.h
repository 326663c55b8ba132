// Creates properties from texts, numbers and times.
#pragma once

#include "tools/common/Property.h"

namespace zeb::tools
{

void AddBytes(Properties& properties, ULONG tag, std::string bytes);
/// @param text UTF-8
void AddText(Properties& properties, ULONG tag, const std::string& text);
void AddLong(Properties& properties, ULONG tag, LONG number);
/// The text of a PT_UNICODE property in UTF-8.
std::string Utf8Of(const Property& property);
/// @param ticks units of 100 ns since 1601
void AddTime(Properties& properties, ULONG tag, int64_t ticks);

} // namespace zeb::tools
