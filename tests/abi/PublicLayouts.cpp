// The layouts of the library's classes as numbers: the same for every compiler, standard library and build mode, in
// both C++ ABIs of Windows. Changing one of them breaks every existing host.
#include "zebapi/ZebAPI.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace
{

using NarrowBuffer = zeb::framework::TextBuffer<char>;
using WideBuffer = zeb::framework::TextBuffer<WCHAR>;
using IdMap = zeb::CMap<DWORD, DWORD, DWORD, DWORD>;

struct Pin
{
    std::string field;
    std::int64_t wanted;
    std::int64_t found;
};

std::vector<Pin>& Pins()
{
    static std::vector<Pin> pins;
    return pins;
}

// An explicit instantiation may name members that are not accessible otherwise. A pointer to a member is its offset, of
// 8 bytes in one ABI and of 4 in the other.
template <class Tag, auto Member>
struct Pinned
{
    static bool Add()
    {
        const auto member = Member;
        std::int64_t offset = 0;
        static_assert(sizeof member == 8 || sizeof member == 4, "an offset");
        std::memcpy(&offset, &member, sizeof member);
        Pins().push_back({Tag::Name(), Tag::Wanted, offset});
        return true;
    }
    static inline const bool s_done = Add();
};

} // namespace

#define ZEB_JOIN2(a, b) a##b
#define ZEB_JOIN(a, b) ZEB_JOIN2(a, b)

#define PIN_SIZE(CLASS, NUMBER) static_assert(sizeof(CLASS) == (NUMBER), #CLASS);
#define PIN_OFFSET(CLASS, MEMBER, NUMBER)                                                                              \
    namespace                                                                                                          \
    {                                                                                                                  \
    struct ZEB_JOIN(Field, __LINE__)                                                                                   \
    {                                                                                                                  \
        static const char* Name()                                                                                      \
        {                                                                                                              \
            return #CLASS "::" #MEMBER;                                                                                \
        }                                                                                                              \
        static constexpr std::int64_t Wanted = NUMBER;                                                                 \
    };                                                                                                                 \
    template struct Pinned<ZEB_JOIN(Field, __LINE__), &CLASS::MEMBER>;                                                 \
    }

PIN_SIZE(NarrowBuffer, 32)
PIN_OFFSET(NarrowBuffer, m_text, 0)
PIN_OFFSET(NarrowBuffer, m_length, 8)
PIN_OFFSET(NarrowBuffer, m_capacity, 12)
PIN_OFFSET(NarrowBuffer, m_inside, 16)
PIN_SIZE(WideBuffer, 32)
PIN_OFFSET(WideBuffer, m_text, 0)
PIN_OFFSET(WideBuffer, m_length, 8)
PIN_OFFSET(WideBuffer, m_capacity, 12)
PIN_OFFSET(WideBuffer, m_inside, 16)
PIN_SIZE(zeb::CStringA, 32)
PIN_OFFSET(zeb::CStringA, m_text, 0)
PIN_SIZE(zeb::CStringW, 32)
PIN_OFFSET(zeb::CStringW, m_text, 0)
PIN_SIZE(zeb::CComPtr<IUnknown>, 8)
PIN_OFFSET(zeb::CComPtr<IUnknown>, m_pointer, 0)
PIN_SIZE(CZebBinary, 16)
PIN_OFFSET(CZebBinary, m_binary, 8)
PIN_SIZE(CZebEntryIDRequest, 16)
PIN_SIZE(zeb::CRuntimeClass, 24)
PIN_OFFSET(zeb::CRuntimeClass, m_lpszClassName, 0)
PIN_OFFSET(zeb::CRuntimeClass, m_nObjectSize, 8)
PIN_OFFSET(zeb::CRuntimeClass, m_pfnGetBaseClass, 16)
PIN_SIZE(zeb::CDumpContext, 16)
PIN_OFFSET(zeb::CDumpContext, m_stream, 0)
PIN_OFFSET(zeb::CDumpContext, m_write, 8)
PIN_SIZE(zeb::CObject, 8)
PIN_SIZE(zeb::CArray<CZebBinary>, 24)
PIN_OFFSET(zeb::CArray<CZebBinary>, m_items, 0)
PIN_OFFSET(zeb::CArray<CZebBinary>, m_count, 8)
PIN_OFFSET(zeb::CArray<CZebBinary>, m_capacity, 16)
PIN_SIZE(zeb::CArray<SHORT>, 24)
PIN_OFFSET(zeb::CArray<SHORT>, m_items, 0)
PIN_OFFSET(zeb::CArray<SHORT>, m_count, 8)
PIN_OFFSET(zeb::CArray<SHORT>, m_capacity, 16)
PIN_SIZE(zeb::CPtrArray, 32)
PIN_OFFSET(zeb::CPtrArray, m_items, 8)
PIN_SIZE(IdMap, 24)
PIN_OFFSET(IdMap, m_buckets, 0)
PIN_OFFSET(IdMap, m_bucketCount, 8)
PIN_OFFSET(IdMap, m_count, 16)
PIN_SIZE(CZebNameIdMap, 56)
PIN_OFFSET(CZebNameIdMap, m_forward, 8)
PIN_OFFSET(CZebNameIdMap, m_reverse, 32)
PIN_SIZE(CZebNameIdHelper, 24)
PIN_OFFSET(CZebNameIdHelper, m_names, 8)
PIN_OFFSET(CZebNameIdHelper, m_count, 16)
PIN_SIZE(CZebIProp, 80)
PIN_OFFSET(CZebIProp, m_bWAB, 8)
PIN_OFFSET(CZebIProp, m_object, 16)
PIN_OFFSET(CZebIProp, m_tags, 24)
PIN_SIZE(CZebTable, 16)
PIN_OFFSET(CZebTable, m_table, 8)
PIN_SIZE(CZebContainer, 104)
PIN_OFFSET(CZebContainer, m_providerID, 80)
PIN_OFFSET(CZebContainer, m_providerChecked, 96)
PIN_SIZE(CZebMessage, 80)
PIN_SIZE(CZebAttachment, 80)
PIN_SIZE(CZebMailUser, 80)
PIN_SIZE(CZebDistList, 104)
PIN_SIZE(CZebPropObj, 80)
PIN_SIZE(CZebABContainer, 104)
PIN_SIZE(CZebABItem, 80)
PIN_SIZE(CZebAddressBook, 96)
PIN_OFFSET(CZebAddressBook, m_wabObject, 80)
PIN_OFFSET(CZebAddressBook, m_session, 88)
PIN_SIZE(zeb::framework::Atomic<bool>, 1)
PIN_SIZE(zeb::framework::Atomic<ULONG>, 4)
PIN_SIZE(zeb::framework::Atomic<HWND>, 8)
PIN_SIZE(CAdviseSinkDelegate, 8)
PIN_SIZE(CAdviseSink, 24)
PIN_OFFSET(CAdviseSink, m_references, 8)
PIN_OFFSET(CAdviseSink, m_delegate, 16)
PIN_SIZE(CAdviseSinkBinder, 48)
PIN_OFFSET(CAdviseSinkBinder, m_delegate, 8)
PIN_OFFSET(CAdviseSinkBinder, m_sink, 16)
PIN_OFFSET(CAdviseSinkBinder, m_table, 24)
PIN_OFFSET(CAdviseSinkBinder, m_connection, 40)
PIN_SIZE(CZebBinArray, 16)
PIN_OFFSET(CZebBinArray, m_array, 8)
PIN_SIZE(zeb::CCriticalSection, 40)
PIN_OFFSET(zeb::CCriticalSection, m_section, 0)
PIN_SIZE(zeb::CSingleLock, 16)
PIN_OFFSET(zeb::CSingleLock, m_section, 0)
PIN_OFFSET(zeb::CSingleLock, m_locked, 8)
PIN_SIZE(CZebOnePropVal, 24)
PIN_OFFSET(CZebOnePropVal, m_parent, 8)
PIN_OFFSET(CZebOnePropVal, m_value, 16)
PIN_SIZE(CZebPropVal, 24)
PIN_SIZE(CZebRow, 24)
PIN_OFFSET(CZebRow, m_base, 8)
PIN_OFFSET(CZebRow, m_row, 16)
PIN_SIZE(CZebRowSet, 24)
PIN_OFFSET(CZebRowSet, m_rows, 8)
PIN_OFFSET(CZebRowSet, m_neverHandedOut, 16)
PIN_SIZE(CZebRowSetArray, 32)
PIN_SIZE(CZebTableRows, 48)
PIN_OFFSET(CZebTableRows, m_table, 0)
PIN_OFFSET(CZebTableRows, m_batch, 16)
PIN_OFFSET(CZebTableRows, m_index, 40)
PIN_SIZE(CZebTableRows::Iterator, 8)
PIN_OFFSET(CZebTableRows::Iterator, m_rows, 0)
PIN_SIZE(CZebCachedTable, 120)
PIN_OFFSET(CZebCachedTable, m_firstRow, 24)
PIN_OFFSET(CZebCachedTable, m_batch, 28)
PIN_OFFSET(CZebCachedTable, m_cache, 32)
PIN_OFFSET(CZebCachedTable, m_binder, 56)
PIN_OFFSET(CZebCachedTable, m_window, 64)
PIN_OFFSET(CZebCachedTable, m_generation, 72)
PIN_OFFSET(CZebCachedTable, m_lock, 80)
PIN_SIZE(zeb::CException, 16)
PIN_OFFSET(zeb::CException, m_autoDelete, 8)
PIN_SIZE(CZebException, 88)
PIN_OFFSET(CZebException, m_description, 16)
PIN_OFFSET(CZebException, m_result, 48)
PIN_OFFSET(CZebException, m_context, 56)
PIN_SIZE(CZebFolder, 104)
PIN_SIZE(CDllLoader, 48)
PIN_OFFSET(CDllLoader, m_module, 8)
PIN_OFFSET(CDllLoader, m_reason, 16)
PIN_SIZE(CQorRegKey, 8)
PIN_OFFSET(CQorRegKey, m_key, 0)
PIN_SIZE(CZebProfileNames, 24)
PIN_OFFSET(CZebProfileNames, m_index, 8)
PIN_OFFSET(CZebProfileNames, m_profiles, 16)
PIN_SIZE(CZebProfAdmin, 16)
PIN_OFFSET(CZebProfAdmin, m_profAdmin, 8)
PIN_SIZE(CZebMsgStore, 80)
PIN_SIZE(CZebSession, 16)
PIN_OFFSET(CZebSession, m_session, 8)
PIN_SIZE(CZebAPI, 240)
PIN_OFFSET(CZebAPI, m_loader, 8)
PIN_OFFSET(CZebAPI, m_wasFailed, 56)
PIN_OFFSET(CZebAPI, m_initialized, 57)
PIN_OFFSET(CZebAPI, m_wab, 58)
PIN_OFFSET(CZebAPI, m_bitness, 60)
PIN_OFFSET(CZebAPI, m_globalMAPI, 64)
PIN_OFFSET(CZebAPI, m_lock, 104)
PIN_OFFSET(CZebAPI, m_wabAddressBook, 144)
PIN_SIZE(CZebPropValArray, 32)
PIN_OFFSET(CZebPropValArray, m_count, 8)
PIN_OFFSET(CZebPropValArray, m_values, 16)
PIN_OFFSET(CZebPropValArray, m_growable, 24)
PIN_SIZE(CZebPropProblemArray, 16)
PIN_OFFSET(CZebPropProblemArray, m_problems, 8)
PIN_SIZE(CZebRestriction, 24)
PIN_OFFSET(CZebRestriction, m_base, 8)
PIN_OFFSET(CZebRestriction, m_node, 16)
PIN_SIZE(CZebRestrictionAllocator, 24)
PIN_SIZE(CZebSortOrder, 16)
PIN_OFFSET(CZebSortOrder, m_sortSet, 8)
PIN_SIZE(CZebPropTagArray, 16)
PIN_OFFSET(CZebPropTagArray, m_tags, 8)
PIN_SIZE(ZebNamedValue, 16)
PIN_OFFSET(ZebNamedValue, value, 0)
PIN_OFFSET(ZebNamedValue, name, 8)
PIN_SIZE(ZebNameTable, 24)
PIN_OFFSET(ZebNameTable, name, 0)
PIN_OFFSET(ZebNameTable, count, 8)
PIN_OFFSET(ZebNameTable, rows, 16)

TEST(PublicLayouts, FieldsAreAtTheirOffsets)
{
    EXPECT_EQ(Pins().size(), 98u);
    for (const Pin& pin : Pins())
    {
        EXPECT_EQ(pin.found, pin.wanted) << pin.field;
    }
}
