// Layouts and memory shared by host and library.
#include "framework/Memory.h"
#include "framework/Atomic.h"
#include "framework/framework.h"
#include "tests/support/FailingNew.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace
{

using zeb::framework::Atomic;

static_assert(sizeof(CStringA) == 32 && sizeof(CStringW) == 32);
static_assert(sizeof(CArray<char>) == 24 && sizeof(CArray<CStringA>) == 24);
static_assert(sizeof(CMap<DWORD, DWORD, DWORD, DWORD>) == 24);
static_assert(sizeof(CObject) == 8 && sizeof(CException) == 16 && sizeof(CPtrArray) == 32 && sizeof(CWinApp) == 8);
static_assert(sizeof(CCriticalSection) == 40 && sizeof(CSingleLock) == 16);
static_assert(sizeof(CComPtr<IUnknown>) == 8);
static_assert(sizeof(Atomic<bool>) == 1 && sizeof(Atomic<ULONG>) == 4 && sizeof(Atomic<void*>) == 8);

TEST(SharedMemory, ThrowsBadAllocWhenExhausted)
{
    CStringA text;
    CArray<int> array;
    CMap<DWORD, DWORD, DWORD, DWORD> map;
    const zeb::test::FailingNew failing;
    EXPECT_THROW(text = "a text that is longer than what fits inside", std::bad_alloc);
    EXPECT_THROW(array.Add(1), std::bad_alloc);
    EXPECT_THROW(map.SetAt(1, 1), std::bad_alloc);
    EXPECT_THROW(zeb::framework::AllocateShared(1), std::bad_alloc);
    EXPECT_TRUE(text.IsEmpty() && array.IsEmpty() && map.IsEmpty());
}

TEST(SharedMemory, AModuleMayThrowItsOwn)
{
    struct Out
    {
    };
    CStringA text;
    CArray<int> array;
    CMap<DWORD, DWORD, DWORD, DWORD> map;
    zeb::framework::g_throwOutOfMemory = [] { throw Out(); };
    {
        const zeb::test::FailingNew failing;
        EXPECT_THROW(text = "a text that is longer than what fits inside", Out);
        EXPECT_THROW(array.Add(1), Out);
        EXPECT_THROW(map.SetAt(1, 1), Out);
        EXPECT_THROW(zeb::framework::WithMemory([] { return std::make_unique<int>(7); }), Out);
    }
    EXPECT_THROW(CStringA("x", INT_MAX), Out) << "longer than a string can be";
    EXPECT_THROW(zeb::framework::WithMemory([] { std::string().resize(std::string().max_size() + 1); }), Out);
    EXPECT_EQ(*zeb::framework::WithMemory([] { return std::make_unique<int>(7); }), 7);
    EXPECT_THROW(zeb::framework::WithMemory([] { throw 5; }), int);
    zeb::framework::g_throwOutOfMemory = nullptr;
}

TEST(SharedMemory, ShortTextNeedsNone)
{
    const zeb::test::FailingNew failing;
    const CStringA narrow("fifteen letters");
    const CStringW wide(ZEBW("seven.."));
    EXPECT_EQ(CStringA(narrow), "fifteen letters");
    EXPECT_EQ(CStringW(wide), ZEBW("seven.."));
}

TEST(SharedMemory, FreesNull)
{
    zeb::framework::FreeShared(nullptr);
    void* const block = zeb::framework::AllocateShared(0);
    EXPECT_NE(block, nullptr);
    zeb::framework::FreeShared(block);
}

TEST(Atomic, CountsAcrossThreads)
{
    Atomic<ULONG> count{0};
    const auto work = [&count]
    {
        for (int i = 0; i < 10000; ++i)
        {
            ++count;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(count, 20000u);
    EXPECT_EQ(--count, 19999u);
    EXPECT_EQ(count.Exchange(5), 19999u);
    EXPECT_EQ(count = 7, 7u);
    EXPECT_EQ(count.Load(), 7u);
}

TEST(Object, DumpsItsClassNameIntoStreams)
{
    const CPtrArray array;
    std::ostringstream stream;
    array.Dump(stream);
    EXPECT_EQ(stream.str(), "CPtrArray");
    std::ostream& base = stream;
    CDumpContext context(base);
    array.Dump(context);
    EXPECT_EQ(stream.str(), "CPtrArrayCPtrArray");
}

} // namespace
