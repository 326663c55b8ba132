// Pins the order of the fields that objects hold, the private ones too: hosts built with other compilers count on it.
//
// The offset is read out of a pointer to the member: all of it in the Itanium C++ ABI, its first 32 bits in either.
#include "tests/zebapi/slots/Slots.h"
#include "zebapi/BinArray.h"
#include "zebapi/BinaryParser.h"
#include "zebapi/CachedTable.h"
#include "zebapi/EntryIDInfo.h"
#include "zebapi/Folder.h"
#include "zebapi/MsgStore.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/Profiles.h"
#include "zebapi/Restrict.h"
#include "zebapi/SESSION.h"
#include "zebapi/SortOrder.h"
#include "zebapi/TAGS.h"
#include "zebapi/ZebAPI.h"

namespace zeb::test
{

namespace
{

struct FieldTable
{
    size_t first; ///< the start of the fields: after the table of operations, or after the base's fields
    std::map<size_t, std::pair<std::string, size_t>> fields; ///< name and offset, by number
};

std::map<std::string, FieldTable>& FieldTables()
{
    static std::map<std::string, FieldTable> tables;
    return tables;
}

} // namespace

// An explicit instantiation may name members that are not accessible otherwise.
template <class Tag, auto Member>
struct RegisteredField
{
    static bool Register()
    {
        const auto member = Member;
        std::int32_t offset = 0;
        static_assert(sizeof(member) >= sizeof(offset), "an offset");
        std::memcpy(&offset, &member, sizeof(offset));
        FieldTable& table = FieldTables()[Tag::Class()];
        table.first = Tag::First;
        table.fields[Tag::Number] = {Tag::Name(), static_cast<size_t>(offset)};
        return true;
    }
    static inline const bool s_done = Register();
};

constexpr size_t AfterOperations = sizeof(void*);

/// A field: its class, where that begins its fields, the field's number among them, its name.
#define FIELD(CLASS, FIRST, NUMBER, MEMBER)                                                                            \
    namespace                                                                                                          \
    {                                                                                                                  \
    struct ZEB_JOIN(Field, __LINE__)                                                                                   \
    {                                                                                                                  \
        static const char* Class()                                                                                     \
        {                                                                                                              \
            return #CLASS;                                                                                             \
        }                                                                                                              \
        static const char* Name()                                                                                      \
        {                                                                                                              \
            return #MEMBER;                                                                                            \
        }                                                                                                              \
        static constexpr size_t First = FIRST;                                                                         \
        static constexpr size_t Number = NUMBER;                                                                       \
    };                                                                                                                 \
    }                                                                                                                  \
    template struct RegisteredField<ZEB_JOIN(Field, __LINE__), &CLASS::MEMBER>;

FIELD(CZebAPI, AfterOperations, 0, m_loader)
FIELD(CZebAPI, AfterOperations, 1, m_wasFailed)
FIELD(CZebAPI, AfterOperations, 2, m_initialized)
FIELD(CZebAPI, AfterOperations, 3, m_wab)
FIELD(CZebAPI, AfterOperations, 4, m_bitness)
FIELD(CZebAPI, AfterOperations, 5, m_globalMAPI)
FIELD(CZebAPI, AfterOperations, 6, m_lock)
FIELD(CZebAPI, AfterOperations, 7, m_wabAddressBook)

FIELD(CZebException, sizeof(CException), 0, m_description)
FIELD(CZebException, sizeof(CException), 1, m_result)

FIELD(CZebOnePropVal, AfterOperations, 0, m_parent)
FIELD(CZebOnePropVal, AfterOperations, 1, m_value)

FIELD(CZebPropValArray, AfterOperations, 0, m_count)
FIELD(CZebPropValArray, AfterOperations, 1, m_values)
FIELD(CZebPropValArray, AfterOperations, 2, m_growable)

FIELD(CZebPropProblemArray, AfterOperations, 0, m_problems)
FIELD(CZebPropTagArray, AfterOperations, 0, m_tags)
FIELD(CZebBinary, AfterOperations, 0, m_binary)
FIELD(CZebBinArray, AfterOperations, 0, m_array)
FIELD(CZebSession, AfterOperations, 0, m_session)

FIELD(CZebProfileNames, AfterOperations, 0, m_index)
FIELD(CZebProfileNames, AfterOperations, 1, m_profiles)
FIELD(CZebProfAdmin, AfterOperations, 0, m_profAdmin)

FIELD(CZebIProp, AfterOperations, 0, m_bWAB)
FIELD(CZebIProp, AfterOperations, 1, m_object)
FIELD(CZebIProp, AfterOperations, 2, m_tags)

FIELD(CZebNameIdMap, AfterOperations, 0, m_forward)
FIELD(CZebNameIdMap, AfterOperations, 1, m_reverse)
FIELD(CZebNameIdHelper, AfterOperations, 0, m_names)
FIELD(CZebNameIdHelper, AfterOperations, 1, m_count)

FIELD(CZebContainer, sizeof(CZebIProp), 0, m_providerID)
FIELD(CZebContainer, sizeof(CZebIProp), 1, m_providerChecked)

FIELD(CZebAddressBook, sizeof(CZebIProp), 0, m_wabObject)
FIELD(CZebAddressBook, sizeof(CZebIProp), 1, m_session)

FIELD(CZebTable, AfterOperations, 0, m_table)

FIELD(CZebRowSet, AfterOperations, 0, m_rows)
FIELD(CZebRowSet, AfterOperations, 1, m_neverHandedOut)
FIELD(CZebRow, AfterOperations, 0, m_base)
FIELD(CZebRow, AfterOperations, 1, m_row)

FIELD(CZebRestriction, AfterOperations, 0, m_base)
FIELD(CZebRestriction, AfterOperations, 1, m_node)
FIELD(CZebSortOrder, AfterOperations, 0, m_sortSet)

FIELD(CAdviseSink, AfterOperations, 0, m_references)
FIELD(CAdviseSink, AfterOperations, 1, m_delegate)
FIELD(CAdviseSinkBinder, AfterOperations, 0, m_delegate)
FIELD(CAdviseSinkBinder, AfterOperations, 1, m_sink)
FIELD(CAdviseSinkBinder, AfterOperations, 2, m_table)
FIELD(CAdviseSinkBinder, AfterOperations, 3, m_connection)

FIELD(CZebCachedTable, sizeof(CZebTable) + sizeof(CAdviseSinkDelegate), 0, m_firstRow)
FIELD(CZebCachedTable, sizeof(CZebTable) + sizeof(CAdviseSinkDelegate), 1, m_batch)
FIELD(CZebCachedTable, sizeof(CZebTable) + sizeof(CAdviseSinkDelegate), 2, m_cache)
FIELD(CZebCachedTable, sizeof(CZebTable) + sizeof(CAdviseSinkDelegate), 3, m_binder)
FIELD(CZebCachedTable, sizeof(CZebTable) + sizeof(CAdviseSinkDelegate), 4, m_window)

FIELD(CBinaryParser, AfterOperations, 0, m_size)
FIELD(CBinaryParser, AfterOperations, 1, m_start)
FIELD(CBinaryParser, AfterOperations, 2, m_end)
FIELD(CBinaryParser, AfterOperations, 3, m_offset)

FIELD(CEntryIDInfo, 0, 0, m_type)
FIELD(CEntryIDInfo, 0, 1, m_flags)
FIELD(CEntryIDInfo, 0, 2, m_providerUID)
FIELD(CEntryIDInfo, 0, 3, m_binary)
FIELD(CEntryIDInfo, 0, 4, m_data)
FIELD(CEntryIDInfo, 0, 5, m_unread)

TEST(Fields, AreInTheirOrder)
{
    EXPECT_EQ(FieldTables().size(), 26u);
    for (const auto& [name, table] : FieldTables())
    {
        ASSERT_EQ(table.fields.rbegin()->first + 1, table.fields.size()) << name << " lacks one";
        EXPECT_EQ(table.fields.at(0).second, table.first) << name << " " << table.fields.at(0).first;
        for (size_t i = 1; i < table.fields.size(); ++i)
        {
            EXPECT_GT(table.fields.at(i).second, table.fields.at(i - 1).second)
                << name << " " << table.fields.at(i).first;
        }
    }
}

TEST(Fields, LibraryFlagsAreOneByteEach)
{
    const auto& fields = FieldTables().at("CZebAPI").fields;
    EXPECT_EQ(fields.at(2).second, fields.at(1).second + 1);
    EXPECT_EQ(fields.at(3).second, fields.at(2).second + 1);
}

TEST(Fields, DerivedClassesAddOnlyNeededOnes)
{
    EXPECT_EQ(sizeof(CZebPropVal), sizeof(CZebOnePropVal));
    EXPECT_EQ(sizeof(CZebEntryIDRequest), sizeof(CZebBinary));
    EXPECT_EQ(sizeof(CZebRestrictionAllocator), sizeof(CZebRestriction));
    EXPECT_EQ(sizeof(CZebMsgStore), sizeof(CZebIProp));
    EXPECT_EQ(sizeof(CZebMessage), sizeof(CZebIProp));
    EXPECT_EQ(sizeof(CZebMailUser), sizeof(CZebIProp));
    EXPECT_EQ(sizeof(CZebPropObj), sizeof(CZebIProp));
    EXPECT_EQ(sizeof(CZebABItem), sizeof(CZebIProp));
    EXPECT_EQ(sizeof(CZebFolder), sizeof(CZebContainer));
    EXPECT_EQ(sizeof(CZebDistList), sizeof(CZebContainer));
    EXPECT_EQ(sizeof(CZebABContainer), sizeof(CZebContainer));
}

} // namespace zeb::test
