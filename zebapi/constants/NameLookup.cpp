#include "zebapi/constants/NameLookup.h"

#include "zebapi/constants/internal/NameTables.h"
#include "zebapi/constants/internal/NumberText.h"

#include <cstdio>
#include <cstring>

namespace
{

/// Plain ASCII, independent of the locale: `key` consists of lower-case letters.
bool SameTableName(const char* key, const char* asked)
{
    size_t i = 0;
    while (zeb::LowerLetter(asked[i]) == key[i])
    {
        ++i;
    }
    return key[i] == 0 && asked[i] == 0;
}

const zeb::IndexedNameTable* FindTable(const char* name)
{
    if (name == nullptr)
    {
        return nullptr;
    }
    const unsigned letter = static_cast<unsigned char>(zeb::LowerLetter(*name)) - unsigned{'a'};
    if (letter >= zeb::FirstTableOfLetter.size())
    {
        return nullptr;
    }
    for (size_t i = zeb::FirstTableOfLetter[letter]; i < zeb::NameTableCount; ++i)
    {
        if (SameTableName(zeb::NameTables[i].key, name))
        {
            return &zeb::NameTables[i];
        }
    }
    return nullptr;
}

/// The first row that `same` accepts, searched from `hash` on; null when there is none.
template <class Same>
const ZebNamedValue* FindRow(const zeb::IndexedNameTable& indexed, const std::uint16_t* index, ULONG hash, Same same)
{
    for (ULONG slot = hash & indexed.slotMask; index[slot] != 0; slot = (slot + 1) & indexed.slotMask)
    {
        const ZebNamedValue& row = indexed.table.rows[index[slot] - 1];
        if (same(row))
        {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

const char* Zeb_NameFromValue(const char* table, ULONG value, char* buffer)
{
    if (const zeb::IndexedNameTable* indexed = FindTable(table))
    {
        const ZebNamedValue* row = FindRow(*indexed, indexed->rowsByValue, zeb::HashOfValue(value),
                                           [&](const ZebNamedValue& each) { return each.value == value; });
        if (row != nullptr)
        {
            return buffer != nullptr ? std::strcpy(buffer, row->name) : row->name;
        }
    }
    if (buffer != nullptr)
    {
        *zeb::WriteNumber(buffer, value) = 0;
    }
    return nullptr;
}

const char* Zeb_NameAt(const char* table, ULONG index, char* buffer)
{
    const zeb::IndexedNameTable* indexed = FindTable(table);
    if (indexed != nullptr && index < indexed->table.count)
    {
        return std::strcpy(buffer, indexed->table.rows[index].name);
    }
    std::sprintf(buffer, "Row %lu Not Found", static_cast<unsigned long>(index));
    return nullptr;
}

ULONG Zeb_ValueAt(const char* table, ULONG index)
{
    const zeb::IndexedNameTable* indexed = FindTable(table);
    return indexed != nullptr && index < indexed->table.count ? indexed->table.rows[index].value : 0;
}

ULONG Zeb_TableCount(const char* table)
{
    const zeb::IndexedNameTable* indexed = FindTable(table);
    return indexed != nullptr ? indexed->table.count : 0;
}

int Zeb_ValueFromName(const char* table, const char* name, ULONG* value)
{
    const zeb::IndexedNameTable* indexed = FindTable(table);
    if (indexed == nullptr || name == nullptr)
    {
        return 0;
    }
    const ZebNamedValue* row = FindRow(*indexed, indexed->rowsByName, zeb::HashOfName(name),
                                       [&](const ZebNamedValue& each) { return std::strcmp(each.name, name) == 0; });
    if (row == nullptr)
    {
        return 0;
    }
    *value = row->value;
    return 1;
}
