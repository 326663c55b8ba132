#include "zebstore/storage/ValueBuilder.h"

#include "zebstore/base/Memory.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/InstanceTag.h"

#include <algorithm>
#include <vector>

namespace zebstore
{

namespace
{

constexpr size_t Alignment = 8;

size_t Aligned(size_t size)
{
    return (size + Alignment - 1) & ~(Alignment - 1);
}

// One cell before its bytes have a place: what was found, and as which tag it is given.
struct Cell
{
    ULONG tag = 0;
    ULONG given = 0; // the tag of the answer; that of a single value of a multi-valued property says so
    EncodedValue value;
    std::string whole; // a large value that was read
    std::string own;   // narrow text that had to be converted
    SCODE error = S_OK;
};

ULONG AnswerType(ULONG asked, ULONG stored, const BuildOptions& options)
{
    if (asked != PT_UNSPECIFIED)
    {
        return asked;
    }
    const ULONG many = stored & MV_FLAG;
    if (options.keepTextType || !IsText(stored & ~many))
    {
        return stored;
    }
    return (options.unicode ? PT_UNICODE : PT_STRING8) | many;
}

SCODE Look(ULONG tag, const ValueSource& values, const BuildOptions& options, Cell& cell)
{
    cell.tag = tag;
    cell.given = tag;
    if (PROP_TYPE(tag) == PT_NULL)
    {
        return S_OK;
    }
    cell.value = values.Find(tag);
    if (!cell.value)
    {
        return MAPI_E_NOT_FOUND;
    }
    const bool instance = IsInstanceTag(tag);
    const ULONG asked = PROP_TYPE(tag) & ~(instance ? ULONG(MV_FLAG | MV_INSTANCE) : ULONG(0));
    const ULONG type = AnswerType(asked, cell.value.Type(), options);
    if (!TypesMatch(cell.value.Type(), type))
    {
        return MAPI_E_NOT_FOUND;
    }
    cell.tag = PROP_TAG(type, PROP_ID(tag));
    cell.given = cell.tag | (instance ? ULONG(MV_FLAG | MV_INSTANCE) : ULONG(0));
    return S_OK;
}

// Bytes that a text takes in the answer, terminator included. Narrow text that must be converted is converted
// here, into `own`.
size_t TextRoom(ULONG type, ULONG storedType, std::string_view bytes, std::string& own)
{
    const std::string_view stored = StoredTextOf(storedType, bytes);
    if (type == PT_UNICODE)
    {
        return (WideBound(stored.size()) + 1) * sizeof(WCHAR);
    }
    own = storedType == PT_STRING8 ? NarrowOf(bytes) : NarrowFromStored(stored);
    return own.size() + 1;
}

void ReadWhole(Cell& cell)
{
    cell.whole = EncodedFromLarge(cell.value.Type(), *cell.value.large);
    cell.value.bytes = cell.whole;
    cell.value.large = nullptr;
}

class Arena
{
public:
    explicit Arena(char* memory)
        : m_next(memory)
    {
    }
    char* Take(size_t size)
    {
        char* taken = m_next;
        m_next += Aligned(size);
        return taken;
    }

private:
    char* m_next;
};

size_t ManyRoom(ULONG type, const EncodedValue& value)
{
    const ULONG single = type & ~static_cast<ULONG>(MV_FLAG);
    const ULONG count = ElementCount(value.Type(), value.bytes);
    const size_t fixed = FixedSize(single);
    if (fixed)
    {
        return Aligned(count * fixed);
    }
    size_t room = Aligned(count * sizeof(SBinary));
    std::string own;
    for (ULONG i = 0; i < count; ++i)
    {
        const std::string_view element = Element(value.Type(), value.bytes, i);
        room +=
            Aligned(single == PT_BINARY ? element.size()
                                        : TextRoom(single, value.Type() & ~static_cast<ULONG>(MV_FLAG), element, own));
    }
    return room;
}

size_t Room(Cell& cell)
{
    const ULONG type = PROP_TYPE(cell.tag);
    if (type & MV_FLAG)
    {
        return ManyRoom(type, cell.value);
    }
    if (IsText(type))
    {
        return Aligned(TextRoom(type, cell.value.Type(), cell.value.bytes, cell.own));
    }
    if (type == PT_BINARY || type == PT_CLSID)
    {
        return Aligned(std::max<size_t>(cell.value.bytes.size(), type == PT_CLSID ? sizeof(GUID) : 0));
    }
    return 0;
}

char* PutNarrow(std::string_view narrow, Arena& arena)
{
    char* text = arena.Take(narrow.size() + 1);
    std::copy(narrow.begin(), narrow.end(), text);
    text[narrow.size()] = '\0';
    return text;
}

WCHAR* PutWide(std::string_view stored, Arena& arena)
{
    WCHAR* text = reinterpret_cast<WCHAR*>(arena.Take((WideBound(stored.size()) + 1) * sizeof(WCHAR)));
    text[DecodeStored(stored, text)] = 0;
    return text;
}

void PutBinary(std::string_view bytes, SBinary& binary, Arena& arena)
{
    binary.cb = static_cast<ULONG>(bytes.size());
    binary.lpb = reinterpret_cast<BYTE*>(arena.Take(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(binary.lpb));
}

void PutMany(const Cell& cell, SPropValue& to, Arena& arena)
{
    const ULONG type = PROP_TYPE(cell.tag);
    const ULONG single = type & ~static_cast<ULONG>(MV_FLAG);
    const ULONG storedSingle = cell.value.Type() & ~static_cast<ULONG>(MV_FLAG);
    const std::string_view bytes = cell.value.bytes;
    const ULONG count = ElementCount(cell.value.Type(), bytes);
    to.Value.MVl.cValues = count;
    const size_t fixed = FixedSize(single);
    if (fixed)
    {
        char* elements = arena.Take(count * fixed);
        if (count)
        {
            std::memcpy(elements, bytes.data() + 4, count * fixed);
        }
        to.Value.MVl.lpl = reinterpret_cast<LONG*>(elements);
        return;
    }
    char* array = arena.Take(count * sizeof(SBinary));
    to.Value.MVl.lpl = reinterpret_cast<LONG*>(array);
    for (ULONG i = 0; i < count; ++i)
    {
        const std::string_view element = Element(cell.value.Type(), bytes, i);
        if (single == PT_BINARY)
        {
            PutBinary(element, reinterpret_cast<SBinary*>(array)[i], arena);
        }
        else if (single == PT_UNICODE)
        {
            reinterpret_cast<WCHAR**>(array)[i] = PutWide(StoredTextOf(storedSingle, element), arena);
        }
        else
        {
            reinterpret_cast<char**>(array)[i] =
                PutNarrow(storedSingle == PT_STRING8 ? NarrowOf(element) : NarrowFromStored(element), arena);
        }
    }
}

void Put(const Cell& cell, SPropValue& to, Arena& arena)
{
    const ULONG type = PROP_TYPE(cell.tag);
    const std::string_view bytes = cell.value.bytes;
    if (type & MV_FLAG)
    {
        return PutMany(cell, to, arena);
    }
    switch (type)
    {
    case PT_STRING8:
        to.Value.lpszA = PutNarrow(cell.own, arena);
        break;
    case PT_UNICODE:
        to.Value.lpszW = PutWide(StoredTextOf(cell.value.Type(), bytes), arena);
        break;
    case PT_BINARY:
        PutBinary(bytes, to.Value.bin, arena);
        break;
    case PT_CLSID:
    {
        const GUID guid = ReadNumber<GUID>(bytes);
        to.Value.lpguid = reinterpret_cast<GUID*>(arena.Take(sizeof(GUID)));
        std::memcpy(static_cast<void*>(to.Value.lpguid), &guid, sizeof(guid));
        break;
    }
    default:
        if (!bytes.empty())
        {
            std::memcpy(static_cast<void*>(&to.Value), bytes.data(), std::min(bytes.size(), FixedSize(type)));
        }
        break;
    }
}

void PutError(ULONG tag, SCODE error, SPropValue& to)
{
    to.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(tag));
    to.Value.err = error;
}

void Fill(const Cell& cell, SPropValue& to, Arena& arena)
{
    std::memset(static_cast<void*>(&to), 0, sizeof(to));
    if (cell.error != S_OK)
    {
        return PutError(cell.tag, cell.error, to);
    }
    to.ulPropTag = cell.given;
    if (PROP_TYPE(cell.tag) != PT_NULL)
    {
        Put(cell, to, arena);
    }
}

} // namespace

SPropValue* BuildValues(const ULONG* tags, size_t count, const ValueSource& values, const BuildOptions& options,
                        size_t* errors)
{
    std::vector<Cell> cells(count);
    size_t room = Aligned(count * sizeof(SPropValue));
    size_t failed = 0;
    for (size_t i = 0; i < count; ++i)
    {
        Cell& cell = cells[i];
        cell.error = Look(tags[i], values, options, cell);
        if (cell.error == S_OK && cell.value.large != nullptr)
        {
            if (cell.value.large->Size() > options.wholeUpTo)
            {
                cell.error = MAPI_E_NOT_ENOUGH_MEMORY;
            }
            else
            {
                ReadWhole(cell);
            }
        }
        if (cell.error == S_OK && PROP_TYPE(cell.tag) != PT_NULL)
        {
            room += Room(cell);
        }
        failed += cell.error != S_OK ? 1 : 0;
    }
    char* memory = static_cast<char*>(Allocate(std::max<size_t>(room, 1)));
    SPropValue* built = reinterpret_cast<SPropValue*>(memory);
    Arena arena(memory + Aligned(count * sizeof(SPropValue)));
    for (size_t i = 0; i < count; ++i)
    {
        Fill(cells[i], built[i], arena);
    }
    if (errors != nullptr)
    {
        *errors = failed;
    }
    return built;
}

bool BuildValue(ULONG tag, const ValueSource& values, const BuildOptions& options, SPropValue& value, void* parent)
{
    Cell cell;
    cell.error = Look(tag, values, options, cell);
    if (cell.error == S_OK && cell.value.large != nullptr)
    {
        ReadWhole(cell);
    }
    const size_t room = cell.error == S_OK && PROP_TYPE(cell.tag) != PT_NULL ? Room(cell) : 0;
    Arena arena(room ? static_cast<char*>(Allocate(room, parent)) : nullptr);
    Fill(cell, value, arena);
    return cell.error == S_OK;
}

} // namespace zebstore
