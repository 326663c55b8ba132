// A class derived from the cached table changes all operations that build on what it overrides.
#include "CachedTables.h"

using namespace zeb::test;

namespace
{

/// Writes its operations down and does them.
class Watched : public CZebCachedTable
{
public:
    explicit Watched(Journal& journal)
        : m_journal(&journal)
    {
    }
    ~Watched() override { CZebCachedTable::Free(); }
    using CZebCachedTable::operator=;

    bool IsValid() const override { return Note("IsValid"), m_claimsToBeValid && CZebCachedTable::IsValid(); }
    void SeekRow(ULONG origin, LONG rowCount, LONG* sought) override
    {
        Note("SeekRow"), CZebCachedTable::SeekRow(origin, rowCount, sought);
    }
    void QueryRows(SRowSet** rows, LONG count, SRestriction* restriction, SSortOrderSet* order) override
    {
        Note("QueryRows"), CZebCachedTable::QueryRows(rows, count, restriction, order);
    }
    ULONG GetRowCount() override { return Note("GetRowCount"), CZebCachedTable::GetRowCount(); }
    void Free() override { Note("Free"), CZebCachedTable::Free(); }
    void Bind() override { Note("Bind"), CZebCachedTable::Bind(); }
    void Unbind() override { Note("Unbind"), CZebCachedTable::Unbind(); }
    void EmptyCache() override { Note("EmptyCache"), CZebCachedTable::EmptyCache(); }

    void BindPlainly() { CZebCachedTable::Bind(); }

    bool m_claimsToBeValid = true;

private:
    void Note(const char* operation) const { m_journal->Write(operation); }

    Journal* m_journal;
};

class CachedTableSlots : public CachedTable
{
protected:
    CachedTableSlots()
    {
        HasRows(10);
        const CZebTable source(&m_double);
        static_cast<CZebTable&>(m_table) = source;
        m_own.Take();
    }
    /// What the derived class was asked for while `body` ran on it as on its base.
    template <class Body>
    Lines Own(Body&& body)
    {
        m_own.Take();
        body(static_cast<CZebCachedTable&>(m_table));
        return m_own.Take();
    }

    Journal m_own;
    Watched m_table{m_own};
};

} // namespace

TEST_F(CachedTableSlots, WhatIsInvalidIsNotBound)
{
    m_table.m_claimsToBeValid = false;
    Calls();
    EXPECT_EQ(Own([&](CZebCachedTable&) { m_table.BindPlainly(); }), (Lines{"Unbind", "IsValid"}));
    EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0xABABABAB0000004D)"})) << "and no registration";
}

TEST_F(CachedTableSlots, WhatChangesTheTableEmpties)
{
    SSortOrderSet order = {};
    SRestriction none = {};
    EXPECT_EQ(Own([&](CZebCachedTable& table) { table.SortTable(&order); }), (Lines{"EmptyCache"}));
    EXPECT_EQ(Own([&](CZebCachedTable& table) { table.FindRow(&none, BOOKMARK_BEGINNING, 0); }), (Lines{"EmptyCache"}));
    EXPECT_EQ(Own([&](CZebCachedTable& table) { table.Restrict(nullptr, 0); }), (Lines{"EmptyCache"}));
    EXPECT_EQ(Own([&](CZebCachedTable& table) { table.CZebCachedTable::SeekRow(BOOKMARK_BEGINNING, 0, nullptr); }),
              (Lines{"EmptyCache"}));
}

TEST_F(CachedTableSlots, AFailedReadEmpties)
{
    m_double.Fail("QueryRows", MAPI_E_CALL_FAILED);
    EXPECT_EQ(Own([](CZebCachedTable& table) { EXPECT_EQ(Thrown([&] { table[3]; }), MAPI_E_CALL_FAILED); }),
              (Lines{"GetRowCount", "SeekRow", "EmptyCache", "QueryRows", "EmptyCache"}));
}
