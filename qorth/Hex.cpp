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

constexpr auto DigitValues = MakeDigitValues();

unsigned char DigitValue(char digit)
{
    return DigitValues[static_cast<unsigned char>(digit)];
}

// Long texts are processed in blocks with branch-free arithmetic, which compilers vectorize.
constexpr size_t BlockBytes = 16;
constexpr size_t BlockDigits = 2 * BlockBytes;

bool AreDigits(const char* block)
{
    unsigned char foreign = 0;
    for (size_t i = 0; i < BlockDigits; ++i)
    {
        const auto character = static_cast<unsigned char>(block[i]);
        const auto number = static_cast<unsigned char>(character - '0');
        const auto letter = static_cast<unsigned char>((character | 0x20) - 'a');
        foreign |= static_cast<unsigned char>(static_cast<int>(number > 9) & static_cast<int>(letter > 5));
    }
    return foreign == 0;
}

/// Decodes a block of digits. The low half of a digit is its value; for a letter nine is added.
void ReadBlock(const char* block, unsigned char* bytes)
{
    unsigned char values[BlockDigits];
    for (size_t i = 0; i < BlockDigits; ++i)
    {
        const auto character = static_cast<unsigned char>(block[i]);
        values[i] = static_cast<unsigned char>((character & 15) + 9 * (character >> 6));
    }
    for (size_t i = 0; i < BlockBytes; ++i)
    {
        bytes[i] = static_cast<unsigned char>(values[2 * i] << 4 | values[2 * i + 1]);
    }
}

constexpr unsigned char Digit(unsigned char value)
{
    return static_cast<unsigned char>(value + '0' + static_cast<int>(value > 9) * ('A' - '0' - 10));
}

void WriteBlock(char* block, const unsigned char* bytes)
{
    unsigned char digits[BlockDigits];
    for (size_t i = 0; i < BlockBytes; ++i)
    {
        digits[2 * i] = static_cast<unsigned char>(bytes[i] >> 4);
        digits[2 * i + 1] = static_cast<unsigned char>(bytes[i] & 15);
    }
    for (unsigned char& digit : digits)
    {
        digit = Digit(digit);
    }
    std::memcpy(block, digits, BlockDigits);
}

} // namespace

ULONG String2BinBuffLen(const char* hex)
{
    if (hex == nullptr)
    {
        return 0;
    }
    const size_t length = std::strlen(hex);
    size_t digits = 0;
    while (length - digits >= BlockDigits && AreDigits(hex + digits))
    {
        digits += BlockDigits;
    }
    while (DigitValue(hex[digits]) != NoDigit)
    {
        ++digits;
    }
    return static_cast<ULONG>(digits / 2);
}

ULONG String2Bin(const char* hex, void* bytes, ULONG cb)
{
    if (hex == nullptr)
    {
        return 0;
    }
    auto* out = static_cast<unsigned char*>(bytes);
    ULONG count = 0;
    const char* const end = hex + std::strlen(hex);
    while (cb - count >= BlockBytes && static_cast<size_t>(end - hex) >= BlockDigits && AreDigits(hex))
    {
        ReadBlock(hex, out + count);
        count += BlockBytes;
        hex += BlockDigits;
    }
    for (; count < cb; ++count, hex += 2)
    {
        // The terminator is not a digit, so nothing after it is read.
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
        throw std::length_error("Bin2String: too many bytes for a text");
    }
    CStringA result;
    if (bytes != nullptr && cb > 0)
    {
        Bin2Digits(result.GetBuffer(static_cast<int>(cb * 2)), bytes, cb);
        result.ReleaseBuffer(static_cast<int>(cb * 2));
    }
    // Assigned last: `bytes` may point into the text.
    text = std::move(result);
}

void Bin2Digits(char* digits, const void* bytes, ULONG cb)
{
    const auto* in = static_cast<const unsigned char*>(bytes);
    for (; cb >= BlockBytes; cb -= BlockBytes, in += BlockBytes, digits += BlockDigits)
    {
        WriteBlock(digits, in);
    }
    for (ULONG i = 0; i < cb; ++i)
    {
        *digits++ = static_cast<char>(Digit(static_cast<unsigned char>(in[i] >> 4)));
        *digits++ = static_cast<char>(Digit(static_cast<unsigned char>(in[i] & 15)));
    }
}
