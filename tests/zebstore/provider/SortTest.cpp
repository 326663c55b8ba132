// Contents tables sorted and restricted by each type of value.
#include "tests/zebstore/provider/ProviderFixture.h"

#include <functional>
#include <ostream>

namespace zebstore
{
namespace
{

/// Three values of a type, in their order.
struct Ordered
{
    const char* name;
    ULONG type;
    std::function<void(_PV& value, int rank)> make;
};

void PrintTo(const Ordered& ordered, std::ostream* out)
{
    *out << ordered.name;
}

constexpr std::int64_t Whole[] = {-5'000'000'000, 3, 7'000'000'000};
constexpr double Real[] = {-2.5, 0.25, 1e10};

class EachType : public Provider, public testing::WithParamInterface<Ordered>
{
protected:
    ULONG Tag() const { return PROP_TAG(GetParam().type, 0x6620); }

    void Add(int rank)
    {
        const Ref<IMessage> message = NewMessage(*m_inbox, std::to_string(rank).c_str());
        SPropValue value{};
        value.ulPropTag = Tag();
        GetParam().make(value.Value, rank);
        EXPECT_EQ(Set(message.Get(), value), S_OK);
        EXPECT_EQ(message->SaveChanges(0), S_OK);
    }

    Ref<IMAPITable> Contents()
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(m_inbox->GetContentsTable(0, &table), S_OK);
        return Ref<IMAPITable>::Adopt(table);
    }

    /// The subjects of the rows, in their order.
    static Texts Subjects(IMAPITable& table)
    {
        table.AddRef();
        const Rows rows(&table, {PR_SUBJECT_A});
        Texts subjects;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            subjects.push_back(rows.TextCell(i, 0));
        }
        return subjects;
    }

    Texts Sorted(ULONG direction)
    {
        const Ref<IMAPITable> table = Contents();
        SizedSSortOrderSet(1, order) = {1, 0, 0, {{Tag(), direction}}};
        EXPECT_EQ(table->SortTable(reinterpret_cast<LPSSortOrderSet>(&order), 0), S_OK);
        return Subjects(*table);
    }

    Texts Restricted(ULONG relop, int rank)
    {
        const Ref<IMAPITable> table = Contents();
        SPropValue value{};
        value.ulPropTag = Tag();
        GetParam().make(value.Value, rank);
        SRestriction restriction{};
        restriction.rt = RES_PROPERTY;
        restriction.res.resProperty = {relop, Tag(), &value};
        EXPECT_EQ(table->Restrict(&restriction, 0), S_OK);
        return Subjects(*table);
    }

    ~EachType() override { m_inbox = {}; }

    Ref<IMAPIFolder> m_inbox = Inbox();
};

TEST_P(EachType, SortsByItsOrder)
{
    for (const int rank : {1, 2, 0})
    {
        Add(rank);
    }
    EXPECT_EQ(Sorted(TABLE_SORT_ASCEND), (Texts{"0", "1", "2"}));
    EXPECT_EQ(Sorted(TABLE_SORT_DESCEND), (Texts{"2", "1", "0"}));
}

TEST_P(EachType, IsComparedByItsOrder)
{
    for (const int rank : {0, 1, 2})
    {
        Add(rank);
    }
    EXPECT_EQ(Restricted(RELOP_GT, 1), (Texts{"2"}));
    EXPECT_EQ(Restricted(RELOP_LT, 1), (Texts{"0"}));
    EXPECT_EQ(Restricted(RELOP_EQ, 1), (Texts{"1"}));
}

class SortOrders : public Provider
{
protected:
    HRESULT Sort(const std::vector<SSortOrder>& keys, ULONG categories = 0, ULONG expanded = 0)
    {
        Buffer<SSortOrderSet> set(Allocate(CbNewSSortOrderSet(keys.size())));
        set->cSorts = static_cast<ULONG>(keys.size());
        set->cCategories = categories;
        set->cExpanded = expanded;
        std::copy(keys.begin(), keys.end(), set->aSort);
        return m_table->SortTable(set.Get(), 0);
    }

    void SetUp() override
    {
        Provider::SetUp();
        IMAPITable* table = nullptr;
        ASSERT_EQ(Inbox()->GetContentsTable(0, &table), S_OK);
        m_table = Ref<IMAPITable>::Adopt(table);
    }
    void TearDown() override
    {
        m_table = {};
        Provider::TearDown();
    }

    Ref<IMAPITable> m_table;
};

TEST_F(SortOrders, ThatCannotBeKeptAreTooComplex)
{
    const SSortOrder key = {PR_SUBJECT_A, TABLE_SORT_ASCEND};
    EXPECT_EQ(Sort({key}), S_OK);
    EXPECT_EQ(Sort({key}, 1), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort({key}, 0, 1), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort(std::vector<SSortOrder>(100, key)), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort({{PROP_TAG(PT_OBJECT, 0x6620), TABLE_SORT_ASCEND}}), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort({{PROP_TAG(PT_LONG | MV_INSTANCE, 0x6620), TABLE_SORT_ASCEND}}), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort({{PR_SUBJECT_A, 0x80}}), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort({{PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT)), TABLE_SORT_DESCEND}}), S_OK);
    EXPECT_EQ(Sort({}), S_OK);
}

BYTE g_bytes[3][3] = {{1, 0, 0}, {1, 0, 1}, {2, 0, 0}};
GUID g_guids[3] = {
    {1, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}}, {1, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}}, {1, 0, 0, {9, 0, 0, 0, 0, 0, 0, 0}}};

INSTANTIATE_TEST_SUITE_P(
    All, EachType,
    testing::Values(Ordered{"I2", PT_I2, [](_PV& value, int rank) { value.i = static_cast<short>((rank - 1) * 300); }},
                    Ordered{"Long", PT_LONG, [](_PV& value, int rank) { value.l = (rank - 1) * 70000; }},
                    Ordered{"R4", PT_R4, [](_PV& value, int rank) { value.flt = static_cast<float>(Real[rank]); }},
                    Ordered{"Double", PT_DOUBLE, [](_PV& value, int rank) { value.dbl = Real[rank]; }},
                    Ordered{"ApplicationTime", PT_APPTIME, [](_PV& value, int rank) { value.at = Real[rank]; }},
                    Ordered{"Currency", PT_CURRENCY, [](_PV& value, int rank) { value.cur.int64 = Whole[rank]; }},
                    Ordered{"I8", PT_I8, [](_PV& value, int rank) { value.li.QuadPart = Whole[rank]; }},
                    Ordered{"Time", PT_SYSTIME,
                            [](_PV& value, int rank) { value.ft = {ULONG(5 - rank), ULONG(rank)}; }},
                    Ordered{"Binary", PT_BINARY, [](_PV& value, int rank) { value.bin = {3, g_bytes[rank]}; }},
                    Ordered{"Identifier", PT_CLSID, [](_PV& value, int rank) { value.lpguid = &g_guids[rank]; }}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace zebstore
