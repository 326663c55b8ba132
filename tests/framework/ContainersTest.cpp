#include "framework/Containers.h"
#include "framework/CString.h"
#include "tests/support/FailingNew.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

/// An element whose '&' returns an internal address, like the library's owners, and which counts its copies.
class Awkward
{
public:
    Awkward() { ++alive; }
    explicit Awkward(int value)
        : m_value(value)
    {
        ++alive;
    }
    Awkward(const Awkward& other)
        : m_value(other.m_value)
    {
        ++alive;
    }
    Awkward& operator=(const Awkward&) = default;
    ~Awkward() { --alive; }

    int* operator&() // NOLINT: this is the point
    {
        m_value = -1;
        return std::addressof(m_value);
    }
    int Value() const { return m_value; }

    static int alive;

private:
    int m_value = 0;
};

int Awkward::alive = 0;

TEST(CArray, IgnoresAnElementsOwnAddressOperator)
{
    {
        CArray<Awkward> array;
        for (int i = 0; i < 100; ++i)
        {
            EXPECT_EQ(array.Add(Awkward(i)), i);
        }
        array.InsertAt(0, Awkward(7));
        array.RemoveAt(50);
        array.SetAt(1, Awkward(8));
        EXPECT_EQ(array.GetData()[0].Value(), 7);
        EXPECT_EQ(array[1].Value(), 8);
        EXPECT_EQ(array[99].Value(), 99);
        CArray<Awkward> copy;
        copy.Copy(array);
        copy.Append(array);
        EXPECT_EQ(copy.GetSize(), 200);
        for (const Awkward& element : copy)
        {
            EXPECT_GE(element.Value(), 0);
        }
    }
    EXPECT_EQ(Awkward::alive, 0);
}

TEST(CArray, GrowsShrinksAndEmpties)
{
    CArray<long, long> array;
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.GetData(), nullptr);
    EXPECT_EQ(array.GetUpperBound(), -1);
    array.SetSize(3);
    EXPECT_EQ(array.GetCount(), 3);
    EXPECT_EQ(array[2], 0);
    array[2] = 5;
    EXPECT_EQ(array.GetAt(2), 5);
    array.SetSize(1);
    EXPECT_EQ(array.GetSize(), 1);
    array.RemoveAll();
    EXPECT_EQ(array.GetSize(), 0);
}

TEST(CArray, TakesItsOwnElements)
{
    CArray<CStringA> array;
    array.Add("a text that is longer than what fits inside the object");
    for (int i = 0; i < 20; ++i)
    {
        array.Add(array[0]);
    }
    EXPECT_EQ(array[20], array[0]);
    array.Append(array);
    EXPECT_EQ(array.GetSize(), 42);
    array.Copy(array);
    EXPECT_EQ(array.GetSize(), 42);
    array.InsertAt(0, array[41]);
    EXPECT_EQ(array[0], array[42]);
}

TEST(CArray, IndexesOutsideItThrow)
{
    CArray<short> array;
    array.Add(1);
    EXPECT_THROW(array.GetAt(1), std::out_of_range);
    EXPECT_THROW(array[-1], std::out_of_range);
    EXPECT_THROW(array.SetAt(1, 2), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(1), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(0, 2), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(-1), std::out_of_range);
    EXPECT_THROW(array.InsertAt(2, 5), std::out_of_range);
    EXPECT_THROW(array.SetSize(-1), std::out_of_range);
    EXPECT_EQ(array.GetSize(), 1);
}

class OwningArray : public CPtrArray
{
public:
    virtual void RemoveAt(INT_PTR index)
    {
        delete static_cast<int*>(GetAt(index));
        CPtrArray::RemoveAt(index);
    }
    virtual void RemoveAll()
    {
        while (!IsEmpty())
        {
            OwningArray::RemoveAt(0);
        }
    }
    ~OwningArray() override { OwningArray::RemoveAll(); }
};

TEST(CPtrArray, ADerivedClassOwnsItsPointers)
{
    OwningArray array;
    EXPECT_EQ(array.Add(new int(1)), 0);
    EXPECT_EQ(array.Add(new int(2)), 1);
    array.CPtrArray::InsertAt(1, new int(3));
    EXPECT_EQ(*static_cast<int*>(array[1]), 3);
    array.RemoveAt(1);
    EXPECT_EQ(*static_cast<int*>(array.GetAt(1)), 2);
    EXPECT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array.GetData()[0], array[0]);
}

TEST(CPtrArray, IsAnObjectAndChecksIndexes)
{
    CPtrArray array;
    EXPECT_TRUE(array.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_STREQ(array.GetRuntimeClass()->m_lpszClassName, "CPtrArray");
    EXPECT_THROW(array.GetAt(0), std::out_of_range);
    array.SetSize(2);
    EXPECT_EQ(array.GetAt(1), nullptr);
    array[1] = &array;
    EXPECT_EQ(array.GetAt(1), static_cast<void*>(&array));
    array.RemoveAt(0, 2);
    EXPECT_TRUE(array.IsEmpty());
}

using IdMap = CMap<DWORD, DWORD, DWORD, DWORD>;

TEST(CMap, OverwritesLooksUpAndRemoves)
{
    IdMap map;
    map.SetAt(1, 10);
    map[2] = 20;
    map.SetAt(1, 11);
    EXPECT_EQ(map.GetCount(), 2);
    DWORD value = 99;
    EXPECT_TRUE(map.Lookup(1, value));
    EXPECT_EQ(value, 11u);
    EXPECT_FALSE(map.Lookup(3, value));
    EXPECT_EQ(value, 11u) << "left alone";
    EXPECT_TRUE(map.RemoveKey(1));
    EXPECT_FALSE(map.RemoveKey(1));
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.GetStartPosition(), nullptr);
}

TEST(CMap, AnIterationMeetsEveryEntryOnce)
{
    IdMap map;
    std::map<DWORD, DWORD> wanted;
    for (DWORD key = 0; key < 100; ++key)
    {
        map.SetAt(key * 7, key);
        wanted[key * 7] = key;
    }
    std::map<DWORD, DWORD> met;
    for (POSITION position = map.GetStartPosition(); position != nullptr;)
    {
        DWORD key = 0;
        DWORD value = 0;
        map.GetNextAssoc(position, key, value);
        EXPECT_TRUE(met.emplace(key, value).second);
    }
    EXPECT_EQ(met, wanted);
}

TEST(CMap, TextIsAKey)
{
    CMap<CStringA, const char*, int, int> map;
    map.SetAt("a", 1);
    int value = 0;
    EXPECT_TRUE(map.Lookup("a", value));
    EXPECT_EQ(value, 1);
}

TEST(CMap, CopiesAreIndependentAndMovingEmpties)
{
    IdMap map;
    for (DWORD key = 0; key < 50; ++key)
    {
        map.SetAt(key, key + 1);
    }
    IdMap copy(map);
    copy.SetAt(0, 7);
    copy.RemoveKey(1);
    DWORD value = 0;
    EXPECT_TRUE(map.Lookup(0, value));
    EXPECT_EQ(value, 1u);
    EXPECT_EQ(map.GetCount(), 50);
    EXPECT_EQ(copy.GetCount(), 49);
    map = std::move(copy);
    EXPECT_TRUE(copy.IsEmpty()); // NOLINT: a map is empty after it was moved from
    EXPECT_TRUE(map.Lookup(0, value));
    EXPECT_EQ(value, 7u);
    EXPECT_FALSE(map.Lookup(1, value));
}

TEST(CMap, LackOfMemoryAddsNoEntry)
{
    for (int after = 0;; ++after)
    {
        CMap<CStringA, const char*, CStringA, const char*> map;
        for (const char* key : {"a", "b", "c", "d", "e", "f", "g", "h"})
        {
            map.SetAt(key, key);
        }
        bool thrown = false;
        try
        {
            // The ninth makes the table of buckets grow.
            const zeb::test::FailingNew failing(after, true);
            map.SetAt("a key that is longer than what fits inside", "and a value of which the same can be said");
        }
        catch (const std::bad_alloc&)
        {
            thrown = true;
        }
        ASSERT_EQ(map.GetCount(), thrown ? 8 : 9) << after;
        CStringA value;
        EXPECT_TRUE(map.Lookup("h", value));
        EXPECT_EQ(value, "h");
        EXPECT_EQ(map.Lookup("a key that is longer than what fits inside", value), !thrown);
        if (!thrown)
        {
            EXPECT_EQ(after, 5) << "the key wanted, buckets, entry, key, value";
            return;
        }
    }
}

TEST(CArray, LackOfMemoryChangesNothing)
{
    CArray<CStringA> array;
    const CStringA text("a text that is longer than what fits inside");
    for (int i = 0; i < 4; ++i)
    {
        array.Add(text);
    }
    for (int after = 0; after < 2; ++after)
    {
        const zeb::test::FailingNew failing(after, true);
        EXPECT_THROW(array.Add(text), std::bad_alloc) << after;
    }
    {
        const zeb::test::FailingNew failing(1, true);
        EXPECT_THROW(array.Append(array), std::bad_alloc);
    }
    {
        const zeb::test::FailingNew failing(0, true);
        EXPECT_THROW(array.SetSize(5), std::bad_alloc);
    }
    ASSERT_EQ(array.GetSize(), 4);
    for (const CStringA& element : array)
    {
        EXPECT_EQ(element, text);
    }
    EXPECT_THROW(array.Reserve(std::numeric_limits<INT_PTR>::max()), std::length_error);
}

TEST(CArray, InsertsAndRemovesInTheMiddle)
{
    CArray<int, int> array;
    for (int i = 0; i < 6; ++i)
    {
        array.InsertAt(i / 2, i);
    }
    EXPECT_EQ(std::vector<int>(array.begin(), array.end()), (std::vector<int>{1, 3, 5, 4, 2, 0}));
    array.RemoveAt(1, 3);
    EXPECT_EQ(std::vector<int>(array.begin(), array.end()), (std::vector<int>{1, 2, 0}));
    array.RemoveAt(3, 0);
    EXPECT_EQ(array.GetSize(), 3);
}

} // namespace
