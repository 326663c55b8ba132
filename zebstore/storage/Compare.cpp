#include "zebstore/storage/Compare.h"

#include "zebstore/storage/Encoding.h"

#include <algorithm>
#include <cmath>

namespace zebstore
{

namespace
{

template <class T>
int Order(T left, T right)
{
    return left < right ? -1 : right < left ? 1 : 0;
}

template <class T>
int OrderNumbers(std::string_view left, std::string_view right)
{
    return Order(ReadNumber<T>(left), ReadNumber<T>(right));
}

template <class T>
int OrderReals(std::string_view left, std::string_view right, bool& comparable)
{
    const T a = ReadNumber<T>(left);
    const T b = ReadNumber<T>(right);
    if (std::isnan(a) || std::isnan(b))
    {
        comparable = false;
    }
    return Order(a, b);
}

int OrderBytes(std::string_view left, std::string_view right)
{
    return Order(left.compare(right), 0);
}

int CompareSingle(ULONG leftType, std::string_view left, ULONG rightType, std::string_view right, bool& comparable)
{
    switch (leftType)
    {
    case PT_I2:
        return OrderNumbers<std::int16_t>(left, right);
    case PT_BOOLEAN:
        return Order(ReadNumber<std::uint16_t>(left) != 0, ReadNumber<std::uint16_t>(right) != 0);
    case PT_LONG:
        return OrderNumbers<std::int32_t>(left, right);
    case PT_R4:
        return OrderReals<float>(left, right, comparable);
    case PT_DOUBLE:
    case PT_APPTIME:
        return OrderReals<double>(left, right, comparable);
    case PT_CURRENCY:
    case PT_I8:
    case PT_SYSTIME:
        return OrderNumbers<std::int64_t>(left, right);
    case PT_STRING8:
    case PT_UNICODE:
        return OrderBytes(Folded(StoredTextOf(leftType, left), TextFold::IgnoreCase),
                          Folded(StoredTextOf(rightType, right), TextFold::IgnoreCase));
    default:
        return OrderBytes(left, right);
    }
}

// The bits of a number so that unsigned big-endian order is its order.
void AppendOrdered(std::string& to, std::uint64_t bits, size_t size)
{
    for (size_t i = size; i-- > 0;)
    {
        to += static_cast<char>(bits >> (i * 8));
    }
}

template <class Signed, class Bits>
void AppendInteger(std::string& to, std::string_view bytes)
{
    const Bits top = Bits(Bits(1) << (sizeof(Bits) * 8 - 1));
    AppendOrdered(to, static_cast<Bits>(static_cast<Bits>(ReadNumber<Signed>(bytes)) ^ top), sizeof(Bits));
}

template <class Bits>
void AppendReal(std::string& to, std::string_view bytes)
{
    const Bits top = Bits(1) << (sizeof(Bits) * 8 - 1);
    Bits bits = ReadNumber<Bits>(bytes);
    if (bits == top)
    {
        bits = 0; // the zeros of either sign are equal
    }
    AppendOrdered(to, bits & top ? static_cast<Bits>(~bits) : static_cast<Bits>(bits | top), sizeof(Bits));
}

// Ends with two zeros and so before anything that goes on; a zero inside is followed by 255.
void AppendEnded(std::string& to, std::string_view bytes)
{
    for (const char byte : bytes)
    {
        to += byte;
        if (byte == '\0')
        {
            to += '\xFF';
        }
    }
    to.append(2, '\0');
}

void AppendSingle(std::string& to, ULONG type, std::string_view bytes)
{
    switch (type)
    {
    case PT_I2:
        return AppendInteger<std::int16_t, std::uint16_t>(to, bytes);
    case PT_BOOLEAN:
        to += ReadNumber<std::uint16_t>(bytes) ? '\1' : '\0';
        return;
    case PT_LONG:
        return AppendInteger<std::int32_t, std::uint32_t>(to, bytes);
    case PT_R4:
        return AppendReal<std::uint32_t>(to, bytes);
    case PT_DOUBLE:
    case PT_APPTIME:
        return AppendReal<std::uint64_t>(to, bytes);
    case PT_CURRENCY:
    case PT_I8:
    case PT_SYSTIME:
        return AppendInteger<std::int64_t, std::uint64_t>(to, bytes);
    case PT_STRING8:
    case PT_UNICODE:
        return AppendEnded(to, SortKey(StoredTextOf(type, bytes)));
    default:
        return AppendEnded(to, bytes);
    }
}

} // namespace

int Compare(ULONG leftType, std::string_view left, ULONG rightType, std::string_view right, bool& comparable)
{
    comparable = true;
    if (!(leftType & MV_FLAG))
    {
        return CompareSingle(leftType, left, rightType, right, comparable);
    }
    const ULONG leftCount = ElementCount(leftType, left);
    const ULONG rightCount = ElementCount(rightType, right);
    const ULONG single = ~static_cast<ULONG>(MV_FLAG);
    for (ULONG i = 0; i < std::min(leftCount, rightCount); ++i)
    {
        const int order = CompareSingle(leftType & single, Element(leftType, left, i), rightType & single,
                                        Element(rightType, right, i), comparable);
        if (order != 0 || !comparable)
        {
            return order;
        }
    }
    return Order(leftCount, rightCount);
}

bool Holds(ULONG relop, int order, bool comparable)
{
    if (!comparable)
    {
        return relop == RELOP_NE;
    }
    switch (relop)
    {
    case RELOP_LT:
        return order < 0;
    case RELOP_LE:
        return order <= 0;
    case RELOP_GT:
        return order > 0;
    case RELOP_GE:
        return order >= 0;
    case RELOP_EQ:
        return order == 0;
    default:
        return order != 0;
    }
}

void AppendSortBytes(std::string& to, const EncodedValue& value, bool descending)
{
    const size_t begin = to.size();
    to += value ? '\1' : '\0';
    if (value)
    {
        std::string room;
        const std::string_view bytes = BytesOf(value, room);
        if (value.Type() & MV_FLAG)
        {
            for (ULONG i = 0; i < ElementCount(value.Type(), bytes); ++i)
            {
                to += '\1';
                AppendSingle(to, value.Type() & ~static_cast<ULONG>(MV_FLAG), Element(value.Type(), bytes, i));
            }
            to += '\0';
        }
        else
        {
            AppendSingle(to, value.Type(), bytes);
        }
    }
    if (descending)
    {
        std::transform(to.begin() + static_cast<std::ptrdiff_t>(begin), to.end(),
                       to.begin() + static_cast<std::ptrdiff_t>(begin),
                       [](char byte) { return static_cast<char>(~byte); });
    }
}

std::string_view BytesOf(const EncodedValue& value, std::string& room)
{
    if (value.large == nullptr)
    {
        return value.bytes;
    }
    room = EncodedFromLarge(value.Type(), *value.large);
    return room;
}

} // namespace zebstore
