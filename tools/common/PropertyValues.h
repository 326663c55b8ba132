// Conversion of MAPI values to Property.
#pragma once

#include "tools/common/Property.h"

namespace zeb::tools
{

/// The tags as an array for MAPI calls.
CZebPropTagArray TagArray(const std::vector<ULONG>& tags);

/// Whether a type is a text type: 8-bit or 16-bit, single or multi-valued.
bool IsText(ULONG type);

/// The tag of a text property in its 8-bit form.
ULONG Narrowed(ULONG tag);

/// The bytes of a value in the form of Property. @throws ToolError for a type that no property can have
std::vector<std::string> ValueBytes(const SPropValue& value);

/// Whether PT_UNICODE text holds the replacement character for invalid bytes.
bool HasReplacement(const std::vector<std::string>& values);

/// Replaces a text that was read as PT_UNICODE with its original 8-bit form when the conversion to 16 bits lost data.
/// @param narrow the same text read in 8 bits
void SettleWidth(Property& property, const std::vector<std::string>& narrow);

} // namespace zeb::tools
