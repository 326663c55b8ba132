// The look-ups in the tables of named constants.
#include "zebapi/TAGS.h"

#include "zebapi/tables/NameTables.h"

#include <cstdio>
#include <cstring>

namespace
{

/// Plain ASCII: the letters of the tables' names equal their other case, whatever the locale.
bool SameTableName(const char* ours, const char* asked)
{
    for (; *ours != 0; ++ours, ++asked)
    {
        // Only a letter becomes that letter by this.
        if ((*asked | 0x20) != (*ours | 0x20))
        {
            return false;
        }
    }
    return *asked == 0;
}

const zeb::IndexedNameTable* FindTable(const char* name)
{
    if (name != nullptr)
    {
        for (const zeb::IndexedNameTable& indexed : zeb::nameTables)
        {
            if (SameTableName(indexed.table.name, name))
            {
                return &indexed;
            }
        }
    }
    return nullptr;
}

/// The first row for which `same` holds, looked for from `hash` on; null when there is none.
template <class Same>
const ZebNamedValue* FindRow(const zeb::IndexedNameTable& indexed, const std::uint16_t* index, ULONG hash,
                             Same same)
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

/// "0x%08X"
void WriteHex(char* buffer, ULONG value)
{
    *buffer++ = '0';
    *buffer++ = 'x';
    for (int shift = 28; shift >= 0; shift -= 4)
    {
        *buffer++ = "0123456789ABCDEF"[(value >> shift) & 0xF];
    }
    *buffer = 0;
}

} // namespace

const char* Zeb_NameFromValue(const char* table, ULONG value, char* buffer)
{
    if (const zeb::IndexedNameTable* indexed = FindTable(table))
    {
        const ZebNamedValue* row = FindRow(*indexed, indexed->rowsByValue, zeb::HashOfValue(value),
                                           [&](const ZebNamedValue& row) { return row.value == value; });
        if (row != nullptr)
        {
            return buffer != nullptr ? std::strcpy(buffer, row->name) : row->name;
        }
    }
    if (buffer != nullptr)
    {
        WriteHex(buffer, value);
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
    const ZebNamedValue* row =
        FindRow(*indexed, indexed->rowsByName, zeb::HashOfName(name),
                [&](const ZebNamedValue& row) { return std::strcmp(row.name, name) == 0; });
    if (row == nullptr)
    {
        return 0;
    }
    *value = row->value;
    return 1;
}
