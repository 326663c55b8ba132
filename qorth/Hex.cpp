#include "qorth/Hex.h"

#include <array>
#include <climits>
#include <cstring>
#include <stdexcept>

namespace
{

constexpr unsigned char NoDigit = 0xFF;

constexpr std::array<unsigned char, 256> MakeDigitValues()
{
    std::array<unsigned char, 256> values{};
    for (auto& value : values)
    {
        value = NoDigit;
    }
    for (unsigned digit = 0; digit < 10; ++digit)
    {
        values['0' + digit] = static_cast<unsigned char>(digit);
    }
    for (unsigned digit = 0; digit < 6; ++digit)
    {
        values['a' + digit] = values['A' + digit] = static_cast<unsigned char>(10 + digit);
    }
    return values;
}

/// The two digits of every byte, one behind the other.
constexpr std::array<char, 512> MakeBytePairs()
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::array<char, 512> pairs{};
    for (unsigned byte = 0; byte < 256; ++byte)
    {
        pairs[2 * byte] = digits[byte >> 4];
        pairs[2 * byte + 1] = digits[byte & 15];
    }
    return pairs;
}

constexpr auto DigitValues = MakeDigitValues();
constexpr auto BytePairs = MakeBytePairs();

unsigned char DigitValue(char digit)
{
    return DigitValues[static_cast<unsigned char>(digit)];
}

} // namespace

ULONG String2BinBuffLen(const char* hex)
{
    if (hex == nullptr)
    {
        return 0;
    }
    size_t digits = 0;
    while (DigitValue(hex[digits]) != NoDigit)
    {
        ++digits;
    }
    return static_cast<ULONG>(digits / 2);
}

ULONG String2Bin(const char* hex, void* bytes, ULONG cb)
{
    auto* out = static_cast<unsigned char*>(bytes);
    ULONG count = 0;
    for (; hex != nullptr && count < cb; ++count, hex += 2)
    {
        // The text's terminator is no digit either, so nothing behind it is read.
        const unsigned char high = DigitValue(hex[0]);
        const unsigned char low = high == NoDigit ? NoDigit : DigitValue(hex[1]);
        if (low == NoDigit)
        {
            break;
        }
        out[count] = static_cast<unsigned char>(high << 4 | low);
    }
    return count;
}

void Bin2String(CStringA& text, const void* bytes, ULONG cb, int)
{
    if (cb > INT_MAX / 2)
    {
        throw std::length_error("Bin2String: more bytes than a text can show");
    }
    CStringA result;
    if (bytes != nullptr && cb > 0)
    {
        const auto* in = static_cast<const unsigned char*>(bytes);
        char* out = result.GetBuffer(static_cast<int>(cb * 2));
        for (ULONG i = 0; i < cb; ++i)
        {
            std::memcpy(out + size_t{2} * i, &BytePairs[size_t{2} * in[i]], 2);
        }
        result.ReleaseBuffer(static_cast<int>(cb * 2));
    }
    // Assigned last: `bytes` may be the text's own.
    text = std::move(result);
}
