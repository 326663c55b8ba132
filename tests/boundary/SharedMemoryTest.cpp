// What the library hands out by value is freed by its host, and the other way round, although the two have different
// `new` and `delete`: this host's put a mark in front of every block and look for it.
#include "zebapi/ZebAPI.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

// A host whose compiler's runtime is in DLLs has the new of these DLLs, which its own would not replace.
#ifndef ZEB_RUNTIME_IN_DLLS
namespace
{

constexpr std::uint64_t mark = 0x5A45424D41524B21;
constexpr size_t markSize = 16; // keeps the alignment

} // namespace

void* operator new(size_t size)
{
    auto* const block = static_cast<unsigned char*>(std::malloc(size + markSize));
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    std::memcpy(block, &mark, sizeof mark);
    return block + markSize;
}

void operator delete(void* block) noexcept
{
    if (block == nullptr)
    {
        return;
    }
    auto* const start = static_cast<unsigned char*>(block) - markSize;
    std::uint64_t found = 0;
    std::memcpy(&found, start, sizeof found);
    if (found != mark)
    {
        std::fputs("delete of a block that this host's new did not make\n", stderr);
        std::abort();
    }
    std::memset(start, 0, markSize);
    std::free(start);
}

void operator delete(void* block, size_t) noexcept
{
    operator delete(block);
}
#endif

namespace
{

TEST(SharedMemory, TheHostFreesTheLibrarysText)
{
    BYTE bytes[40] = {0xAB};
    SPropValue value = {};
    value.ulPropTag = PROP_TAG(PT_BINARY, 0x6002);
    value.Value.bin = SBinary{sizeof bytes, bytes};
    const CZebOnePropVal view(&value, nullptr);
    for (int i = 0; i < 100; ++i)
    {
        CStringA narrow = view.String(false);
        EXPECT_EQ(narrow.GetLength(), 80);
        narrow += narrow;
        narrow = CStringA('x', 200 + i);
        EXPECT_EQ(narrow.GetLength(), 200 + i);
        CStringW wide = view.StringW(false);
        wide += wide;
        EXPECT_EQ(wide.GetLength(), 160);
    }
}

TEST(SharedMemory, TheLibraryGrowsTheHostsText)
{
    CString name("a name of the host that is longer than what fits inside");
    CZebProfileNames profiles;
    // Whether there is a profile or not, the library assigns to a text of its own or leaves this one.
    while (profiles.GetNextName(name) != 0)
    {
        EXPECT_FALSE(name.IsEmpty());
    }
    name = profiles.GetDefaultProfile();
    name = CZebProfileNames::GetProfilesKey();
    EXPECT_GT(name.GetLength(), 16);
}

TEST(SharedMemory, TheHostFreesTheLibrarysArray)
{
    char first[] = "the first of the texts, which fits inside no object";
    char second[] = "the second of the texts, which fits inside no object";
    char* texts[] = {first, second};
    SPropValue value = {};
    value.ulPropTag = PROP_TAG(PT_MV_STRING8, 0x6001);
    value.Value.MVszA.cValues = 2;
    value.Value.MVszA.lppszA = texts;
    const CZebOnePropVal view(&value, nullptr);
    CArray<CStringA> array;
    for (int i = 0; i < 10; ++i)
    {
        array.Add("a text of the host, which the library is to free as it fits inside no object");
    }
    view.GetMV(array);
    ASSERT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[1], second);
    for (int i = 0; i < 10; ++i)
    {
        array.Add(array[0]);
    }
    EXPECT_EQ(array[11], first);
}

TEST(SharedMemory, TheHostDeletesTheLibrarysException)
{
    for (int i = 0; i < 10; ++i)
    {
        try
        {
            CZebBinary().String();
            FAIL() << "an object without a header has no text";
        }
        catch (CZebException* exception)
        {
            EXPECT_EQ(exception->GetResult(), MAPI_E_INVALID_OBJECT);
            exception->Delete();
        }
    }
}

TEST(SharedMemory, TheHostTakesTheLibrarysLock)
{
    CCriticalSection* const section = Zeb_GetMAPI().GetGlobalMAPICriticalSection();
    const CSingleLock once(section, true);
    const CSingleLock again(section, true);
    EXPECT_TRUE(again.IsLocked());
}

} // namespace
