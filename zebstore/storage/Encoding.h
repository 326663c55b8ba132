// How one property value is laid out in bytes.
//
// All numbers are little endian.
//   fixed types         their 2, 4, 8 or 16 bytes
//   PT_BINARY           the bytes
//   PT_UNICODE          stored text (see Text.h)
//   PT_STRING8          0 and the text, when the narrow bytes are the stored text; else 1, the 32-bit length
//                       of the stored text, that text, and the narrow bytes as they were written
//   PT_MV_ fixed types  a 32-bit count, the elements
//   other PT_MV_ types  a 32-bit count, for each element the 32-bit end of its bytes, the bytes of the
//                       elements, each laid out as its single type
#pragma once

#include "platform/mapi.h"
#include "zebstore/storage/LargeValue.h"
#include "zebstore/storage/Text.h"

#include <cstring>
#include <string>
#include <string_view>

namespace zebstore
{

/// Bytes of a type of fixed size, single or the element of a multi-valued one; 0 for other types.
size_t FixedSize(ULONG type);
inline bool IsText(ULONG type)
{
    return type == PT_STRING8 || type == PT_UNICODE;
}
/// True for the types that a property can have in a store.
bool IsStorable(ULONG type);
/// True when a value of type `stored` answers a question for type `asked`: the same type, or both text.
bool TypesMatch(ULONG stored, ULONG asked);

/// @throws Error MAPI_E_INVALID_TYPE, MAPI_E_INVALID_PARAMETER
std::string Encode(const SPropValue& value);
/// PT_STRING8 from narrow characters.
std::string EncodeNarrow(std::string_view narrow);

template <class T>
T ReadNumber(std::string_view bytes, size_t at = 0)
{
    T number{};
    if (bytes.size() >= at + sizeof(T))
    {
        std::memcpy(&number, bytes.data() + at, sizeof(T));
    }
    return number;
}
template <class T>
void AppendNumber(std::string& to, T number)
{
    to.append(reinterpret_cast<const char*>(&number), sizeof(T));
}

/// The stored text of encoded bytes of a text type.
std::string_view StoredTextOf(ULONG type, std::string_view bytes);
/// The narrow characters of encoded PT_STRING8 bytes as this system reads them.
std::string NarrowOf(std::string_view bytes);

/// Elements of a multi-valued type's bytes; a damaged count is cut to what the bytes can hold.
ULONG ElementCount(ULONG type, std::string_view bytes);
std::string_view Element(ULONG type, std::string_view bytes, ULONG index);

/// The whole value of a large one: encoded bytes of the same tag.
/// @throws Error MAPI_E_NOT_ENOUGH_MEMORY
std::string EncodedFromLarge(ULONG type, const LargeValue& value);

} // namespace zebstore
