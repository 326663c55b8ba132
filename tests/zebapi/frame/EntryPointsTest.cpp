// The calling wrappers of MAPI's entry points: what they hand on, what they bring back, what an empty one does.
#include "tests/zebapi/frame/EntryPointScope.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <iterator>
#include <string>

namespace zeb::test
{

namespace
{

std::array<uint64_t, 8> places;

/// Pointers that are only handed on: each argument gets another one.
template <class Pointer>
Pointer Given(int number)
{
    return reinterpret_cast<Pointer>(&places[static_cast<size_t>(number)]);
}

/// Whether the pointer is the one of that number.
bool Is(const void* pointer, int number)
{
    return pointer == &places[static_cast<size_t>(number)];
}

constexpr HRESULT Answer = static_cast<HRESULT>(0x80041234);
constexpr ULONG_PTR WideWindow = static_cast<ULONG_PTR>(0x123456789ABCDEF0);

int calls = 0;
bool argumentsArrived = false;

HRESULT Called(bool arrived)
{
    ++calls;
    argumentsArrived = arrived;
    return Answer;
}

HRESULT WINAPI Initialize(void* init)
{
    return Called(Is(init, 1));
}

void WINAPI Uninitialize()
{
    Called(true);
}

HRESULT WINAPI LogonEx(ULONG_PTR window, LPTSTR name, LPTSTR password, ULONG flags, LPMAPISESSION* session)
{
    return Called(window == WideWindow && Is(name, 1) && Is(password, 2) && flags == 0x87654321 && Is(session, 3));
}

HRESULT WINAPI AdminProfiles(ULONG flags, LPPROFADMIN* profAdmin)
{
    return Called(flags == 0x87654321 && Is(profAdmin, 1));
}

HRESULT WINAPI GetOneProp(LPMAPIPROP object, ULONG propTag, LPSPropValue* value)
{
    return Called(Is(object, 1) && propTag == PR_SUBJECT_W && Is(value, 2));
}

HRESULT WINAPI SetOneProp(LPMAPIPROP object, LPSPropValue value)
{
    return Called(Is(object, 1) && Is(value, 2));
}

HRESULT WINAPI ValidateIPMSubtree(LPMDB store, ULONG flags, ULONG* count, LPSPropValue* values, LPMAPIERROR* error)
{
    return Called(Is(store, 1) && flags == MAPI_FULL_IPM_TREE && Is(count, 2) && Is(values, 3) && Is(error, 4));
}

void WINAPI FreeRows(LPSRowSet rows)
{
    Called(Is(rows, 1));
}

HRESULT WINAPI QueryAllRows(LPMAPITABLE table, LPSPropTagArray tags, LPSRestriction restriction, LPSSortOrderSet order,
                            LONG maxRows, LPSRowSet* rows)
{
    return Called(Is(table, 1) && Is(tags, 2) && Is(restriction, 3) && Is(order, 4) && maxRows == -5 && Is(rows, 5));
}

SCODE WINAPI CopyMore(LPSPropValue dest, LPSPropValue src, ALLOCATEMORE* allocateMore, void* parent)
{
    return Called(Is(dest, 1) && Is(src, 2) && Is(reinterpret_cast<void*>(allocateMore), 3) && Is(parent, 4));
}

HRESULT CallInitialize()
{
    return zeb::MAPIInitialize(Given<void*>(1));
}

HRESULT CallUninitialize()
{
    zeb::MAPIUninitialize();
    return Answer;
}

HRESULT CallLogonEx()
{
    return zeb::MAPILogonEx(WideWindow, Given<LPTSTR>(1), Given<LPTSTR>(2), 0x87654321, Given<LPMAPISESSION*>(3));
}

HRESULT CallAdminProfiles()
{
    return zeb::MAPIAdminProfiles(0x87654321, Given<LPPROFADMIN*>(1));
}

HRESULT CallGetOneProp()
{
    return zeb::HrGetOneProp(Given<LPMAPIPROP>(1), PR_SUBJECT_W, Given<LPSPropValue*>(2));
}

HRESULT CallSetOneProp()
{
    return zeb::HrSetOneProp(Given<LPMAPIPROP>(1), Given<LPSPropValue>(2));
}

HRESULT CallValidateIPMSubtree()
{
    return zeb::HrValidateIPMSubtree(Given<LPMDB>(1), MAPI_FULL_IPM_TREE, Given<ULONG*>(2), Given<LPSPropValue*>(3),
                                     Given<LPMAPIERROR*>(4));
}

HRESULT CallFreeRows()
{
    zeb::FreeProws(Given<LPSRowSet>(1));
    return Answer;
}

HRESULT CallQueryAllRows()
{
    return zeb::HrQueryAllRows(Given<LPMAPITABLE>(1), Given<LPSPropTagArray>(2), Given<LPSRestriction>(3),
                               Given<LPSSortOrderSet>(4), -5, Given<LPSRowSet*>(5));
}

HRESULT CallCopyMore()
{
    return zeb::PropCopyMore(Given<LPSPropValue>(1), Given<LPSPropValue>(2), Given<ALLOCATEMORE*>(3), Given<void*>(4));
}

struct Wrapper
{
    const char* name;
    EntryPoint slot;
    void* function; ///< what the slot is set to
    HRESULT (*call)();
    bool hasResult;
};

template <class Function>
Wrapper Row(const char* name, EntryPoint slot, Function* function, HRESULT (*call)(), bool hasResult = true)
{
    return {name, slot, reinterpret_cast<void*>(function), call, hasResult};
}

const Wrapper wrappers[] = {
    Row("MAPIInitialize", EntryPoint::MAPIInitialize, &Initialize, &CallInitialize),
    Row("MAPIUninitialize", EntryPoint::MAPIUninitialize, &Uninitialize, &CallUninitialize, false),
    Row("MAPILogonEx", EntryPoint::MAPILogonEx, &LogonEx, &CallLogonEx),
    Row("MAPIAdminProfiles", EntryPoint::MAPIAdminProfiles, &AdminProfiles, &CallAdminProfiles),
    Row("HrGetOneProp", EntryPoint::HrGetOneProp, &GetOneProp, &CallGetOneProp),
    Row("HrSetOneProp", EntryPoint::HrSetOneProp, &SetOneProp, &CallSetOneProp),
    Row("HrValidateIPMSubtree", EntryPoint::HrValidateIPMSubtree, &ValidateIPMSubtree, &CallValidateIPMSubtree),
    Row("FreeProws", EntryPoint::FreeProws, &FreeRows, &CallFreeRows, false),
    Row("HrQueryAllRows", EntryPoint::HrQueryAllRows, &QueryAllRows, &CallQueryAllRows),
    Row("PropCopyMore", EntryPoint::PropCopyMore, &CopyMore, &CallCopyMore),
};

class EntryPoints : public ::testing::TestWithParam<Wrapper>
{
protected:
    EntryPoints()
    {
        calls = 0;
        argumentsArrived = false;
    }
};

std::string NameOf(const ::testing::TestParamInfo<Wrapper>& info)
{
    return info.param.name;
}

} // namespace

TEST_P(EntryPoints, PassArgumentsAndResults)
{
    const EntryPointScope scope(GetParam().slot, GetParam().function);
    EXPECT_EQ(GetParam().call(), Answer);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(argumentsArrived);
}

TEST_P(EntryPoints, WithoutAProviderTheCallFails)
{
    EXPECT_EQ(GetParam().call(), GetParam().hasResult ? MAPI_E_CALL_FAILED : Answer);
    EXPECT_EQ(calls, 0);
}

INSTANTIATE_TEST_SUITE_P(Name, EntryPoints, ::testing::ValuesIn(wrappers), NameOf);

TEST(EntryPointTable, NamesEachSlotInTheirOrder)
{
    const struct
    {
        EntryPoint slot;
        const char* undecorated;
        const char* decorated;
    } rows[] = {{EntryPoint::MAPIInitialize, "MAPIInitialize", "MAPIInitialize"},
                {EntryPoint::MAPIUninitialize, "MAPIUninitialize", "MAPIUninitialize"},
                {EntryPoint::MAPILogonEx, "MAPILogonEx", "MAPILogonEx"},
                {EntryPoint::MAPIAdminProfiles, "MAPIAdminProfiles", "MAPIAdminProfiles"},
                {EntryPoint::HrGetOneProp, "HrGetOneProp", "HrGetOneProp@12"},
                {EntryPoint::HrSetOneProp, "HrSetOneProp", "HrSetOneProp@8"},
                {EntryPoint::HrValidateIPMSubtree, "HrValidateIPMSubtree", "HrValidateIPMSubtree@20"},
                {EntryPoint::FreeProws, "FreeProws", "FreeProws@4"},
                {EntryPoint::HrQueryAllRows, "HrQueryAllRows", "HrQueryAllRows@24"},
                {EntryPoint::PropCopyMore, "PropCopyMore", "PropCopyMore@16"}};
    ASSERT_EQ(std::size(rows), EntryPointCount);
    for (size_t i = 0; i < EntryPointCount; ++i)
    {
        EXPECT_EQ(UndecoratedEntryPoints[i].slot, rows[i].slot) << i;
        EXPECT_STREQ(UndecoratedEntryPoints[i].name, rows[i].undecorated);
        EXPECT_EQ(DecoratedEntryPoints[i].slot, rows[i].slot) << i;
        EXPECT_STREQ(DecoratedEntryPoints[i].name, rows[i].decorated);
    }
}

TEST(EntryPointTable, HasARowForEach)
{
    EXPECT_EQ(std::size(wrappers), EntryPointCount);
}

} // namespace zeb::test
