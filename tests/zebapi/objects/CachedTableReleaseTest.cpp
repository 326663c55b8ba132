// What a cached table does when letting go of its rows or its table throws, which operations a derived class may
// override, and which operation of a delegate each event reaches.
#include "CachedTables.h"
#include "zebapi/Mapiload.h"
#include "zebapi/frame/internal/EntryPoints.h"

#include <stdexcept>
#include <string>
#include <utility>

using namespace zeb::test;

namespace
{

SRowSet* thrownAway = nullptr;

void WINAPI ThrowingFreeProws(SRowSet* rows)
{
    thrownAway = rows;
    throw std::runtime_error("FreeProws");
}

/// A table whose last reference throws when it goes.
class LeavingTable : public RowTable
{
public:
    using RowTable::RowTable;
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = RowTable::Release();
        if (left == 0 && m_throws)
        {
            throw std::runtime_error("released");
        }
        return left;
    }
    bool m_throws = false;
};

/// Every line so far is of an unknown exception caught in the cached table's file.
bool AllSwallowedHere(const LogCapture& log, size_t count)
{
    const std::string beginning = "EXCEPTION: Description: <Unknown>, File: \"zebapi/tables/CachedTable.cpp\", Line: ";
    return log.Lines().size() == count && log.CountBeginning(beginning) == count;
}

} // namespace

TEST_F(CachedTable, DroppingTheWindowThrowsNothing)
{
    HasRows(100);
    OpenTable table(&m_double);
    At(table, 30);
    thrownAway = nullptr;
    zeb::SetEntryPoint(zeb::EntryPoint::FreeProws, reinterpret_cast<void*>(&ThrowingFreeProws));
    table.EmptyCache();
    EXPECT_TRUE(AllSwallowedHere(m_log, 1));
    ASSERT_NE(thrownAway, nullptr);
    const TableEntryPoints bound;
    zeb::FreeProws(thrownAway);
    EXPECT_EQ(m_memory.LiveRoots(), 0u) << "nothing is held any more";
    EXPECT_FALSE(Hits(table, 30)) << "the window is dropped all the same";
    table.EmptyCache();
}

TEST_F(CachedTable, FreeThrowsNothing)
{
    LeavingTable leaving(m_journal);
    leaving.m_throws = true;
    OpenTable table(&leaving);
    table.Free();
    EXPECT_TRUE(AllSwallowedHere(m_log, 1));
    EXPECT_FALSE(table.IsValid());
    {
        const OpenTable going(&leaving);
    }
    EXPECT_TRUE(AllSwallowedHere(m_log, 2));
    Calls();
}

TEST_F(CachedTable, AWindowsEdgeRowsAreRight)
{
    HasRows(1000);
    OpenTable table(&m_double);
    At(table, 500);
    Calls();
    EXPECT_EQ(At(table, 475), 475);
    EXPECT_EQ(Calls(), (Lines{"table: GetRowCount(0x0)"}));
    EXPECT_EQ(At(table, 474), 474);
    EXPECT_EQ(Calls(), Miss("449"));
}

TEST_F(CachedTable, OverriddenOperationsApplyToTheOthers)
{
    class Watched : public OpenTable
    {
    public:
        ~Watched() override { CZebCachedTable::Free(); }
        using OpenTable::operator=;
        void Bind() override
        {
            m_slots += "bind ";
            OpenTable::Bind();
        }
        void Unbind() override
        {
            m_slots += "unbind ";
            OpenTable::Unbind();
        }
        void EmptyCache() override
        {
            m_slots += "empty ";
            OpenTable::EmptyCache();
        }
        bool IsValid() const override
        {
            m_slots += "valid ";
            return OpenTable::IsValid();
        }
        std::string Slots() { return std::exchange(m_slots, ""); }

    private:
        mutable std::string m_slots;
    };
    HasRows(10);
    const CZebTable plain(&m_double);
    Watched table;
    table = plain;
    // The base's assignment frees through its slot, and the binder copies the table.
    EXPECT_EQ(table.Slots(), "unbind empty unbind empty valid bind unbind valid ");
    table.Free();
    EXPECT_EQ(table.Slots(), "unbind empty ");
    table.Bind();
    EXPECT_EQ(table.Slots(), "bind unbind valid ");
    table = plain;
    table.Slots();
    m_double.Notify(TABLE_CHANGED);
    EXPECT_EQ(table.Slots(), "empty ");
    Calls();
}

TEST_F(CachedTable, EachEventReachesItsOperation)
{
    class Listener : public CAdviseSinkDelegate
    {
    public:
        void OnTableModified_ReloadCommon() override { m_operations += "common "; }
        void OnTableModified_Changed() override { m_operations += "changed "; }
        void OnTableModified_Error() override { m_operations += "error "; }
        void OnTableModified_Reload() override { m_operations += "reload "; }
        std::string m_operations;
    };
    Listener listener;
    CZebTable plain(&m_double);
    const CAdviseSinkBinder binder(&listener, &plain);
    for (const ULONG tableEvent : {TABLE_CHANGED, TABLE_ERROR, TABLE_RELOAD, TABLE_SORT_DONE})
    {
        m_double.Notify(tableEvent);
    }
    EXPECT_EQ(listener.m_operations, "changed error reload ");
    Calls();
}
