// Creates properties from texts, numbers and times.
#pragma once

#include "tools/common/Property.h"

namespace zeb::tools
{

// Mail tags that MAPI's headers do not define.
constexpr ULONG TagTransportHeaders = PROP_TAG(PT_UNICODE, 0x007D);
constexpr ULONG TagInternetMessageId = PROP_TAG(PT_UNICODE, 0x1035);
constexpr ULONG TagReferences = PROP_TAG(PT_UNICODE, 0x1039);
constexpr ULONG TagInReplyTo = PROP_TAG(PT_UNICODE, 0x1042);
constexpr ULONG TagHtml = PROP_TAG(PT_BINARY, 0x1013);
constexpr ULONG TagLastVerb = PROP_TAG(PT_LONG, 0x1081);
constexpr ULONG TagFlagStatus = PROP_TAG(PT_LONG, 0x1090);
constexpr ULONG TagCodePage = PROP_TAG(PT_LONG, 0x3FDE);
constexpr ULONG TagAttachMimeType = PROP_TAG(PT_UNICODE, 0x370E);
constexpr ULONG TagAttachContentId = PROP_TAG(PT_UNICODE, 0x3712);
constexpr ULONG TagSmtpAddress = PROP_TAG(PT_UNICODE, 0x39FE);

void AddBytes(Properties& properties, ULONG tag, std::string bytes);
/// @param text UTF-8
void AddText(Properties& properties, ULONG tag, const std::string& text);
void AddLong(Properties& properties, ULONG tag, LONG number);
/// The text of a PT_UNICODE property in UTF-8.
std::string Utf8Of(const Property& property);
/// @param ticks units of 100 ns since 1601
void AddTime(Properties& properties, ULONG tag, int64_t ticks);

} // namespace zeb::tools
