// Property values as the model knows them, and how MAPI compares them.
#pragma once

#include "tests/zebstore/storage/CellText.h"
#include "tests/zebstore/storage/TextModel.h"

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zebstore::model
{

using test::Wide;

/// A value of any type; without a type there is none.
struct Value
{
    ULONG type = PT_UNSPECIFIED;
    std::int64_t number = 0; ///< whole numbers, times, PT_BOOLEAN
    double real = 0;
    Wide text;
    std::string bytes; ///< PT_BINARY, PT_CLSID
    std::vector<Value> many;

    explicit operator bool() const { return type != PT_UNSPECIFIED; }
};

/// By PROP_ID, or by InstanceId.
using Properties = std::map<ULONG, Value>;

Value Number(ULONG type, std::int64_t number);
Value Text(const Wide& text);
Value Text(const std::string& ascii);

inline bool IsTextType(ULONG type)
{
    return type == PT_STRING8 || type == PT_UNICODE;
}
inline ULONG SingleOf(ULONG type)
{
    return type & ~static_cast<ULONG>(MV_FLAG | MV_INSTANCE);
}
/// The place in Properties of the single value that a row shows of a multi-valued property.
inline ULONG InstanceId(ULONG tag)
{
    return PROP_ID(tag) | 0x10000;
}
/// The same type, or both text.
bool AreComparable(ULONG type, ULONG other);
/// True for values that tables do not show because of their size.
bool IsLarge(const Value& value);

std::string FoldedText(const Wide& text, TextFold fold = TextFold::IgnoreCase);

/// Below, equal or above 0; nothing when one of them is not a number.
std::optional<int> Compared(const Value& left, const Value& right);
/// The order of tables: a missing value first, text by its first 255 characters.
int ComparedForSorting(const Value& left, const Value& right);

/// The bytes that RES_SIZE counts. @param asked the type of the restriction's tag
std::uint64_t SizeOf(const Value& value, ULONG asked);

/// The memory of values and restrictions that are given to MAPI.
class Room
{
public:
    void* Keep(const void* bytes, size_t size);

    /// @param tag its identifier; the type is the value's own
    SPropValue Mapi(ULONG tag, const Value& value);

private:
    void PutSingle(const Value& value, void* place);

    std::deque<std::vector<std::uint64_t>> m_blocks;
};

/// What a table cell or GetProps shows of a value under this tag, as test::CellText has it.
std::string ShownAs(ULONG tag, const Value& value);
/// For people.
std::string Readable(const Value& value);
std::string Readable(const std::string& bytes);

} // namespace zebstore::model
