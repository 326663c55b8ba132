#include "zebapi/objects/internal/OneOff.h"

#include "platform/text.h"
#include "zebapi/frame/Exception.h"

#include <string>

namespace
{

/// Four bytes of flags, the provider's identifier, a version, and what the texts are: 0x8000 for 16-bit text, 1 for a
/// recipient that takes no rich text.
constexpr unsigned char Head[] = {0x00, 0x00, 0x00, 0x00, 0x81, 0x2B, 0x1F, 0xA4, 0xBE, 0xA3, 0x10, 0x19,
                                  0x9D, 0x6E, 0x00, 0xDD, 0x01, 0x0F, 0x54, 0x02, 0x00, 0x00, 0x01, 0x80};

CZebBinary BinaryOf(const std::string& bytes)
{
    return CZebBinary(
        SBinary{static_cast<ULONG>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))});
}

} // namespace

CZebBinary zeb::OneOffEntryID(const WCHAR* name, const WCHAR* addressType, const WCHAR* address)
{
    return framework::WithMemory([&]
    {
        std::string bytes(reinterpret_cast<const char*>(Head), sizeof Head);
        for (const WCHAR* text : {name, addressType, address})
        {
            bytes.append(reinterpret_cast<const char*>(text), (platform::WideLength(text) + 1) * sizeof(WCHAR));
        }
        return BinaryOf(bytes);
    });
}

CZebBinary zeb::AddressSearchKey(const WCHAR* addressType, const WCHAR* address)
{
    return framework::WithMemory([&]
    {
        platform::WideString key(addressType);
        key += ZEBW(':');
        key += address;
        for (WCHAR& unit : key)
        {
            unit = platform::UpperWide(unit);
        }
        // With the terminator.
        return BinaryOf(platform::NarrowFromWide(key.c_str(), key.size() + 1));
    });
}
