#include "zebapi/constants/internal/NameTables.h"

// Simple MAPI's session handle, required by its header.
typedef ULONG_PTR LHANDLE, *LPLHANDLE;
#include <mapi.h>
#include <xcmc.h>

namespace zeb
{

namespace
{

#define ZEB_NAMED(name) {static_cast<ULONG>(name), #name},

constexpr ZebNamedValue MapiErrors[] = {
#include "zebapi/constants/MapiErrors.inc"
};

constexpr ZebNamedValue CmcErrors[] = {
#include "zebapi/constants/CmcErrors.inc"
};

#define ZEB_TAG(name, value) {value, #name},
#define ZEB_TAG_AS(name, value, idName) {value, #name},
constexpr ZebNamedValue PropTags[] = {
#include "zebapi/constants/PropTags.inc"
};
#undef ZEB_TAG
#undef ZEB_TAG_AS

#define ZEB_TAG(name, value) {PROP_ID(value), #name},
#define ZEB_TAG_AS(name, value, idName) {PROP_ID(value), idName},
constexpr ZebNamedValue PropIDs[] = {
#include "zebapi/constants/PropTags.inc"
};
#undef ZEB_TAG
#undef ZEB_TAG_AS

// clang-format off
constexpr ZebNamedValue PropTypes[] = {
    ZEB_NAMED(PT_UNSPECIFIED)
    ZEB_NAMED(PT_NULL)
    ZEB_NAMED(PT_I2)
    ZEB_NAMED(PT_LONG)
    ZEB_NAMED(PT_R4)
    ZEB_NAMED(PT_DOUBLE)
    ZEB_NAMED(PT_CURRENCY)
    ZEB_NAMED(PT_APPTIME)
    ZEB_NAMED(PT_ERROR)
    ZEB_NAMED(PT_BOOLEAN)
    ZEB_NAMED(PT_OBJECT)
    ZEB_NAMED(PT_I8)
    ZEB_NAMED(PT_SYSTIME)
    ZEB_NAMED(PT_STRING8)
    ZEB_NAMED(PT_UNICODE)
    ZEB_NAMED(PT_CLSID)
    ZEB_NAMED(PT_BINARY)
    ZEB_NAMED(PT_MV_I2)
    ZEB_NAMED(PT_MV_LONG)
    ZEB_NAMED(PT_MV_R4)
    ZEB_NAMED(PT_MV_DOUBLE)
    ZEB_NAMED(PT_MV_CURRENCY)
    ZEB_NAMED(PT_MV_APPTIME)
    ZEB_NAMED(PT_MV_SYSTIME)
    ZEB_NAMED(PT_MV_STRING8)
    ZEB_NAMED(PT_MV_BINARY)
    ZEB_NAMED(PT_MV_UNICODE)
    ZEB_NAMED(PT_MV_CLSID)
    ZEB_NAMED(PT_MV_I8)
    // A second name of the narrow type, for either character type.
    {PT_MV_STRING8, "PT_MV_TSTRING"},
};

constexpr ZebNamedValue FolderTypes[] = {
    ZEB_NAMED(FOLDER_GENERIC)
    ZEB_NAMED(FOLDER_ROOT)
    ZEB_NAMED(FOLDER_SEARCH)
};

constexpr ZebNamedValue TableStatus[] = {
    ZEB_NAMED(TBLSTAT_COMPLETE)
    ZEB_NAMED(TBLSTAT_QCHANGED)
    ZEB_NAMED(TBLSTAT_SORTING)
    ZEB_NAMED(TBLSTAT_SORT_ERROR)
    ZEB_NAMED(TBLSTAT_SETTING_COLS)
    ZEB_NAMED(TBLSTAT_SETCOL_ERROR)
    ZEB_NAMED(TBLSTAT_RESTRICTING)
    ZEB_NAMED(TBLSTAT_RESTRICT_ERROR)
};

constexpr ZebNamedValue TableTypes[] = {
    ZEB_NAMED(TBLTYPE_SNAPSHOT)
    ZEB_NAMED(TBLTYPE_KEYSET)
    ZEB_NAMED(TBLTYPE_DYNAMIC)
};

constexpr ZebNamedValue SortOrders[] = {
    ZEB_NAMED(TABLE_SORT_ASCEND)
    ZEB_NAMED(TABLE_SORT_DESCEND)
    ZEB_NAMED(TABLE_SORT_COMBINE)
};

constexpr ZebNamedValue RestrictionTypes[] = {
    ZEB_NAMED(RES_AND)
    ZEB_NAMED(RES_OR)
    ZEB_NAMED(RES_NOT)
    ZEB_NAMED(RES_CONTENT)
    ZEB_NAMED(RES_PROPERTY)
    ZEB_NAMED(RES_COMPAREPROPS)
    ZEB_NAMED(RES_BITMASK)
    ZEB_NAMED(RES_SIZE)
    ZEB_NAMED(RES_EXIST)
    ZEB_NAMED(RES_SUBRESTRICTION)
    ZEB_NAMED(RES_COMMENT)
};

constexpr ZebNamedValue RelationalOperators[] = {
    {RELOP_LT, "<"},
    {RELOP_LE, "<="},
    {RELOP_GT, ">"},
    {RELOP_GE, ">="},
    {RELOP_EQ, "=="},
    {RELOP_NE, "!="},
    {RELOP_RE, "LIKE"},
};

constexpr ZebNamedValue BitmaskRelations[] = {
    {BMR_EQZ, "==0"},
    {BMR_NEZ, "!=0"},
};

constexpr ZebNamedValue FuzzyLevels[] = {
    ZEB_NAMED(FL_FULLSTRING)
    ZEB_NAMED(FL_SUBSTRING)
    ZEB_NAMED(FL_PREFIX)
    ZEB_NAMED(FL_IGNORECASE)
    ZEB_NAMED(FL_IGNORENONSPACE)
    ZEB_NAMED(FL_LOOSE)
};

constexpr ZebNamedValue ObjectTypes[] = {
    ZEB_NAMED(MAPI_STORE)
    ZEB_NAMED(MAPI_ADDRBOOK)
    ZEB_NAMED(MAPI_FOLDER)
    ZEB_NAMED(MAPI_ABCONT)
    ZEB_NAMED(MAPI_MESSAGE)
    ZEB_NAMED(MAPI_MAILUSER)
    ZEB_NAMED(MAPI_ATTACH)
    ZEB_NAMED(MAPI_DISTLIST)
    ZEB_NAMED(MAPI_PROFSECT)
    ZEB_NAMED(MAPI_STATUS)
    ZEB_NAMED(MAPI_SESSION)
    ZEB_NAMED(MAPI_FORMINFO)
};

constexpr ZebNamedValue NotificationEvents[] = {
    ZEB_NAMED(fnevCriticalError)
    ZEB_NAMED(fnevNewMail)
    ZEB_NAMED(fnevObjectCreated)
    ZEB_NAMED(fnevObjectDeleted)
    ZEB_NAMED(fnevObjectModified)
    ZEB_NAMED(fnevObjectMoved)
    ZEB_NAMED(fnevSearchComplete)
    ZEB_NAMED(fnevObjectCopied)
    ZEB_NAMED(fnevTableModified)
    ZEB_NAMED(fnevStatusObjectModified)
    ZEB_NAMED(fnevReservedForMapi)
    ZEB_NAMED(fnevExtended)
};

constexpr ZebNamedValue TableEvents[] = {
    ZEB_NAMED(TABLE_CHANGED)
    ZEB_NAMED(TABLE_ERROR)
    ZEB_NAMED(TABLE_ROW_ADDED)
    ZEB_NAMED(TABLE_ROW_DELETED)
    ZEB_NAMED(TABLE_ROW_MODIFIED)
    ZEB_NAMED(TABLE_SORT_DONE)
    ZEB_NAMED(TABLE_RESTRICT_DONE)
    ZEB_NAMED(TABLE_SETCOL_DONE)
};

constexpr ZebNamedValue MessageFlags[] = {
    ZEB_NAMED(MSGFLAG_READ)
    ZEB_NAMED(MSGFLAG_UNMODIFIED)
    ZEB_NAMED(MSGFLAG_SUBMIT)
    ZEB_NAMED(MSGFLAG_UNSENT)
    ZEB_NAMED(MSGFLAG_HASATTACH)
    ZEB_NAMED(MSGFLAG_FROMME)
    ZEB_NAMED(MSGFLAG_ASSOCIATED)
    ZEB_NAMED(MSGFLAG_RESEND)
};

constexpr ZebNamedValue RecipientTypes[] = {
    ZEB_NAMED(MAPI_ORIG)
    ZEB_NAMED(MAPI_TO)
    ZEB_NAMED(MAPI_CC)
    ZEB_NAMED(MAPI_BCC)
};

constexpr ZebNamedValue EntryIDFlags[] = {
    ZEB_NAMED(MAPI_SHORTTERM)
    ZEB_NAMED(MAPI_NOTRECIP)
    ZEB_NAMED(MAPI_THISSESSION)
    ZEB_NAMED(MAPI_NOW)
    ZEB_NAMED(MAPI_NOTRESERVED)
};

constexpr ZebNamedValue ResourceTypes[] = {
    ZEB_NAMED(MAPI_STORE_PROVIDER)
    ZEB_NAMED(MAPI_AB)
    ZEB_NAMED(MAPI_AB_PROVIDER)
    ZEB_NAMED(MAPI_TRANSPORT_PROVIDER)
    ZEB_NAMED(MAPI_SPOOLER)
    ZEB_NAMED(MAPI_PROFILE_PROVIDER)
    ZEB_NAMED(MAPI_SUBSYSTEM)
    ZEB_NAMED(MAPI_HOOK_PROVIDER)
};

constexpr ZebNamedValue Priorities[] = {
    ZEB_NAMED(PRIO_URGENT)
    ZEB_NAMED(PRIO_NORMAL)
    ZEB_NAMED(PRIO_NONURGENT)
};

constexpr ZebNamedValue AttachMethods[] = {
    ZEB_NAMED(NO_ATTACHMENT)
    ZEB_NAMED(ATTACH_BY_VALUE)
    ZEB_NAMED(ATTACH_BY_REFERENCE)
    ZEB_NAMED(ATTACH_BY_REF_RESOLVE)
    ZEB_NAMED(ATTACH_BY_REF_ONLY)
    ZEB_NAMED(ATTACH_EMBEDDED_MSG)
    ZEB_NAMED(ATTACH_OLE)
};
// clang-format on

/// A power of two with at least three quarters of the slots free: most look-ups end at the first slot.
constexpr size_t SlotCount(size_t rows)
{
    size_t slots = 4;
    while (slots < 4 * rows)
    {
        slots *= 2;
    }
    return slots;
}

constexpr bool SameName(const char* a, const char* b)
{
    for (; *a == *b; ++a, ++b)
    {
        if (*a == 0)
        {
            return true;
        }
    }
    return false;
}

template <size_t Slots>
using Index = std::array<std::uint16_t, Slots>;

/// The index of rows by `Hash` and `Same`.
template <size_t Slots, size_t Rows, class Hash, class Same>
constexpr Index<Slots> IndexOf(const ZebNamedValue (&rows)[Rows], Hash hash, Same same)
{
    Index<Slots> index = {};
    for (size_t row = 0; row < Rows; ++row)
    {
        size_t slot = hash(rows[row]) & (Slots - 1);
        while (index[slot] != 0 && !same(rows[index[slot] - 1], rows[row]))
        {
            slot = (slot + 1) & (Slots - 1);
        }
        if (index[slot] == 0)
        {
            index[slot] = static_cast<std::uint16_t>(row + 1);
        }
    }
    return index;
}

template <const auto& Rows>
constexpr size_t SlotsOf = SlotCount(sizeof(Rows) / sizeof(ZebNamedValue));

template <const auto& Rows>
constexpr Index<SlotsOf<Rows>> ByValue = IndexOf<SlotsOf<Rows>>(Rows, [](const ZebNamedValue& row)
{ return HashOfValue(row.value); }, [](const ZebNamedValue& a, const ZebNamedValue& b) { return a.value == b.value; });

template <const auto& Rows>
constexpr Index<SlotsOf<Rows>> ByName =
    IndexOf<SlotsOf<Rows>>(Rows, [](const ZebNamedValue& row) { return HashOfName(row.name); },
                           [](const ZebNamedValue& a, const ZebNamedValue& b) { return SameName(a.name, b.name); });

/// The table of these rows; their number must equal the declared one.
template <const auto& Rows, size_t Count>
constexpr IndexedNameTable Table(const char* name)
{
    static_assert(sizeof(Rows) / sizeof(ZebNamedValue) == Count, "rows of the table");
    IndexedNameTable indexed = {{name, Count, Rows}, SlotsOf<Rows> - 1, ByValue<Rows>.data(), ByName<Rows>.data(), {}};
    for (size_t i = 0; name[i] != 0; ++i)
    {
        indexed.key[i] = LowerLetter(name[i]);
    }
    return indexed;
}

constexpr std::array<IndexedNameTable, NameTableCount> Tables = {{
    Table<MapiErrors, 98>("MAPIErrors"),
    Table<CmcErrors, 39>("CMCErrors"),
    Table<PropTags, 338>("PropTags"),
    Table<PropIDs, 338>("PropIDs"),
    Table<PropTypes, 30>("PropType"),
    Table<FolderTypes, 3>("FolderType"),
    Table<TableStatus, 8>("TableStatus"),
    Table<TableTypes, 3>("TableType"),
    Table<SortOrders, 3>("SortOrder"),
    Table<RestrictionTypes, 11>("RestrictionType"),
    Table<RelationalOperators, 7>("RelOp"),
    Table<BitmaskRelations, 2>("Bmr"),
    Table<FuzzyLevels, 6>("FuzzyLevel"),
    Table<ObjectTypes, 12>("MAPIObjTypes"),
    Table<NotificationEvents, 12>("NotifEvents"),
    Table<TableEvents, 8>("TableEvents"),
    Table<MessageFlags, 8>("MsgFlags"),
    Table<RecipientTypes, 4>("RecipType"),
    Table<EntryIDFlags, 5>("EIDFlags"),
    Table<ResourceTypes, 8>("ResourceType"),
    Table<Priorities, 3>("Priority"),
    Table<AttachMethods, 7>("AttachMethod"),
}};

constexpr std::array<std::uint8_t, 26> FirstTables()
{
    std::array<std::uint8_t, 26> first = {};
    for (std::uint8_t& table : first)
    {
        table = NameTableCount;
    }
    for (size_t i = NameTableCount; i-- > 0;)
    {
        first[static_cast<size_t>(Tables[i].key[0] - 'a')] = static_cast<std::uint8_t>(i);
    }
    return first;
}

} // namespace

const std::array<IndexedNameTable, NameTableCount> NameTables = Tables;
const std::array<std::uint8_t, 26> FirstTableOfLetter = FirstTables();

} // namespace zeb
