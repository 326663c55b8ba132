// Names and numbers of .msg files: one message in a compound file, as [MS-OXMSG] describes it.
#pragma once

#include "platform/compoundfile.h"
#include "platform/mapi.h"

#include <cstdio>
#include <string>

namespace zeb::tools::msg
{

/// The class of the file.
constexpr platform::CompoundClass MessageClass = {0x0B, 0x0D, 0x02, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

/// The stream of an object's fixed-size properties, and of the sizes of the others.
constexpr const char* PropertiesName = "__properties_version1.0";
/// The folder of the names of named properties.
constexpr const char* NamesName = "__nameid_version1.0";
constexpr const char* RecipientPrefix = "__recip_version1.0_#";
constexpr const char* AttachmentPrefix = "__attach_version1.0_#";

/// Streams of the folder of names: property sets, entries, and texts.
constexpr ULONG GuidStream = PROP_TAG(PT_BINARY, 2), EntryStream = PROP_TAG(PT_BINARY, 3),
                StringStream = PROP_TAG(PT_BINARY, 4);
constexpr ULONG FirstNamedId = 0x8000;
/// The property sets that the stream of property sets does not list.
constexpr unsigned MapiSet = 1, PublicStringsSet = 2, FirstListedSet = 3;

/// Bytes before the properties: of the message, of an embedded one, of a recipient or attachment.
constexpr size_t MessageHeader = 32, EmbeddedHeader = 24, PartHeader = 8;
constexpr size_t EntrySize = 16;

inline std::string Hex(ULONG number)
{
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(number));
    return text;
}

/// The stream, or folder, of a property's value.
inline std::string ValueName(ULONG tag)
{
    return "__substg1.0_" + Hex(tag);
}

/// The stream of one text or binary of a multi-valued property.
inline std::string ElementName(ULONG tag, size_t index)
{
    return ValueName(tag) + "-" + Hex(static_cast<ULONG>(index));
}

} // namespace zeb::tools::msg
