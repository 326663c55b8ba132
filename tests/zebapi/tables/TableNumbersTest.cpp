// Connections and bookmarks are pointer-sized on 64-bit Windows; the library gives out 32 bits.
#include "zebapi/Table.h"

#include "tests/support/Thrown.h"
#include "tests/support/doubles/MapiUtilities.h"
#include "tests/support/doubles/RecordingTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace zeb::test
{
namespace
{

using ::testing::ElementsAre;

constexpr ULONG_PTR Wide = 0x1122334455667788;

/// A table of the Windows Address Book: it writes only 32 bits of its numbers.
class AddressBookTable : public RecordingTable
{
public:
    HRESULT WINAPI Advise(ULONG, LPMAPIADVISESINK, ULONG_PTR* out) override
    {
        const ULONG number = 0x4D;
        std::memcpy(out, &number, sizeof(number));
        return S_OK;
    }
    HRESULT WINAPI CreateBookmark(BOOKMARK* out) override
    {
        const ULONG number = 7;
        std::memcpy(out, &number, sizeof(number));
        return S_OK;
    }
};

class TableNumbers : public ::testing::Test
{
protected:
    MapiMemory m_memory;
    MapiUtilities m_utilities;
    RecordingTable m_double;
    CZebTable m_table{&m_double};
    /// Only handed on, never called.
    IMAPIAdviseSink* const m_sink = reinterpret_cast<IMAPIAdviseSink*>(&m_double);
};

/// Fills the stack below the caller, so that an uninitialized local is not zero.
void PoisonStack()
{
    volatile unsigned char bytes[4096];
    for (volatile unsigned char& byte : bytes)
    {
        byte = 0xAB;
    }
}

} // namespace

TEST_F(TableNumbers, OnlyTheConnectionIsWritten)
{
    m_double.connection = Wide;
    ULONG connection[3] = {0xABABABAB, 0, 0xABABABAB};
    m_table.Advise(m_sink, &connection[1]);
    EXPECT_EQ(connection[0], 0xABABABABu);
    EXPECT_EQ(connection[2], 0xABABABABu);
}

TEST_F(TableNumbers, AWideConnectionComesBackWhole)
{
    m_double.connection = Wide;
    ULONG connection = 0;
    m_table.Advise(m_sink, &connection);
    CZebTable copy(m_table);
    copy.Unadvise(connection);
    EXPECT_THAT(m_double.calls, ElementsAre("Advise(mask 256)", "Unadvise(connection " + std::to_string(Wide) + ")"));
}

TEST_F(TableNumbers, WideConnectionsWithEqualHalvesDiffer)
{
    ULONG first = 0;
    ULONG second = 0;
    ULONG narrow = 0;
    m_double.connection = 0x100000005;
    m_table.Advise(m_sink, &first);
    m_double.connection = 0x200000005;
    m_table.Advise(m_sink, &second);
    m_double.connection = 5;
    m_table.Advise(m_sink, &narrow);
    m_double.calls.clear();
    m_table.Unadvise(first);
    m_table.Unadvise(second);
    m_table.Unadvise(narrow);
    EXPECT_THAT(m_double.calls, ElementsAre("Unadvise(connection 4294967301)", "Unadvise(connection 8589934597)",
                                            "Unadvise(connection 5)"));
}

TEST_F(TableNumbers, ANumberInUseStaysUnique)
{
    ULONG wide = 0;
    m_double.connection = Wide;
    m_table.Advise(m_sink, &wide);
    ULONG same = 0;
    m_double.connection = wide;
    m_table.Advise(m_sink, &same);
    EXPECT_NE(same, wide);
    m_double.calls.clear();
    m_table.Unadvise(same);
    m_table.Unadvise(wide);
    EXPECT_THAT(m_double.calls, ElementsAre("Unadvise(connection " + std::to_string(ULONG_PTR(wide)) + ")",
                                            "Unadvise(connection " + std::to_string(Wide) + ")"));
}

TEST_F(TableNumbers, AnOpenConnectionKeepsItsNumber)
{
    m_double.connection = Wide;
    ULONG connection = 0;
    m_table.Advise(m_sink, &connection);
    m_double.calls.clear();
    m_double.results["Unadvise"] = MAPI_E_CALL_FAILED;
    EXPECT_EQ(ThrownBy([&] { m_table.Unadvise(connection); }), MAPI_E_CALL_FAILED);
    m_double.results.clear();
    m_table.Unadvise(connection);
    const std::string call = "Unadvise(connection " + std::to_string(Wide) + ")";
    EXPECT_THAT(m_double.calls, ElementsAre(call, call));
}

TEST_F(TableNumbers, AFailedAdviseLeavesTheNumber)
{
    m_double.connection = Wide;
    m_double.results["Advise"] = MAPI_E_NO_SUPPORT;
    ULONG connection = 9;
    EXPECT_EQ(ThrownBy([&] { m_table.Advise(m_sink, &connection); }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(connection, 9u);
}

TEST_F(TableNumbers, AWideBookmarkIsUsedWhole)
{
    m_double.bookmark = Wide;
    const ULONG bookmark = m_table.CreateBookmark();
    m_double.calls.clear();
    m_table.SeekRow(bookmark, 2, nullptr);
    SRestriction restriction = {};
    m_table.FindRow(&restriction, bookmark, 0);
    m_table.FreeBookmark(bookmark);
    const std::string number = std::to_string(Wide);
    EXPECT_THAT(m_double.calls,
                ElementsAre("SeekRow(origin " + number + ", rows 2)",
                            "FindRow(" + RecordingTable::Pointer(&restriction) + ", origin " + number + ", flags 0)",
                            "FreeBookmark(bookmark " + number + ")"));
}

TEST_F(TableNumbers, BookmarksAndConnectionsAreCountedApart)
{
    m_double.connection = Wide;
    ULONG connection = 0;
    m_table.Advise(m_sink, &connection);
    m_double.calls.clear();
    m_table.SeekRow(connection, 0, nullptr);
    EXPECT_THAT(m_double.calls, ElementsAre("SeekRow(origin " + std::to_string(connection) + ", rows 0)"));
    m_table.Unadvise(connection);
}

TEST_F(TableNumbers, OtherTablesHaveTheirOwnNumbers)
{
    RecordingTable otherDouble;
    CZebTable other(&otherDouble);
    m_double.connection = Wide;
    ULONG connection = 0;
    m_table.Advise(m_sink, &connection);
    other.Unadvise(connection);
    EXPECT_THAT(otherDouble.calls, ElementsAre("Unadvise(connection " + std::to_string(connection) + ")"));
    m_table.Unadvise(connection);
}

TEST_F(TableNumbers, HalfWrittenNumbersAreRead)
{
    AddressBookTable narrow;
    CZebTable table(&narrow);
    PoisonStack();
    ULONG connection = 0;
    table.Advise(m_sink, &connection);
    EXPECT_EQ(connection, 0x4Du);
    PoisonStack();
    EXPECT_EQ(table.CreateBookmark(), 7u);
}

} // namespace zeb::test
