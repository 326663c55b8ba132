// A derived class that overrides an operation changes all operations that build on it.
#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/IProp.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/SESSION.h"

#include <functional>

using namespace zeb::test;

namespace
{

/// Writes its operations down and does them.
class Watched : public CZebIProp
{
public:
    explicit Watched(Journal& journal, IMAPIProp* prop = nullptr)
        : CZebIProp(prop)
        , m_journal(journal)
    {
    }
    using CZebIProp::operator=;

    void CheckIDsMap() override { Note("CheckIDsMap"), CZebIProp::CheckIDsMap(); }
    using CZebIProp::SetWAB;
    void SetWAB(bool isWAB) override { Note(isWAB ? "SetWAB(true)" : "SetWAB(false)"), CZebIProp::SetWAB(isWAB); }
    ULONG GetMAPIType() override { return Note("GetMAPIType"), CZebIProp::GetMAPIType(); }
    ULONG GetObjectType() const override { return Note("GetObjectType"), CZebIProp::GetObjectType(); }
    bool IsWAB() override { return Note("IsWAB"), true; }
    void Free() override { Note("Free"), CZebIProp::Free(); }
    bool IsValid() const override { return Note("IsValid"), CZebIProp::IsValid(); }
    CZebNameIdMap& GetTagsMap() override { return Note("GetTagsMap"), CZebIProp::GetTagsMap(); }
    CZebBinary GetParentID() override { return Note("GetParentID"), CZebIProp::GetParentID(); }
    void SetDisplayNameA(const char* name) override { Note("SetDisplayNameA"), CZebIProp::SetDisplayNameA(name); }
    ULONG GetDisplayNameTag(bool unicode) const override
    {
        return Note(unicode ? "GetDisplayNameTag(true)" : "GetDisplayNameTag(false)"),
               unicode ? PR_SUBJECT_W : PR_SUBJECT_A;
    }
    CStringA GetStringPropA(ULONG tag) override { return Note("GetStringPropA"), CZebIProp::GetStringPropA(tag); }
    CStringW GetStringPropW(ULONG tag) override { return Note("GetStringPropW"), CZebIProp::GetStringPropW(tag); }
    CStringA GetStringProp(ULONG tag) override { return Note("GetStringProp"), CZebIProp::GetStringProp(tag); }
    CComPtr<IStream> OpenProperty(ULONG tag, ULONG flags) override
    {
        return Note("OpenProperty"), CZebIProp::OpenProperty(tag, flags);
    }
    CStringA GetLongStringA(ULONG tag) override { return Note("GetLongStringA"), CZebIProp::GetLongStringA(tag); }
    void GetPropList(SPropTagArray** out, ULONG flags) override
    {
        Note("GetPropList"), CZebIProp::GetPropList(out, flags);
    }
    void GetAllProps(ULONG* count, SPropValue** values, ULONG flags) override
    {
        Note("GetAllProps"), CZebIProp::GetAllProps(count, values, flags);
    }
    using CZebIProp::GetProps;
    void GetProps(SPropTagArray* tags, ULONG* count, SPropValue** values, ULONG flags) override
    {
        Note("GetProps"), CZebIProp::GetProps(tags, count, values, flags);
    }
    void SetProps(CZebPropValArray& values, bool save, SPropProblemArray** problems) override
    {
        Note("SetProps(array)"), CZebIProp::SetProps(values, save, problems);
    }
    void SetProps(ULONG n, SPropValue* values, SPropProblemArray** problems) override
    {
        Note("SetProps"), CZebIProp::SetProps(n, values, problems);
    }
    void SaveChanges(ULONG flags) override { Note("SaveChanges"), CZebIProp::SaveChanges(flags); }

private:
    void Note(const char* operation) const { m_journal.Write(operation); }

    Journal& m_journal;
};

class IPropSlots : public ObjectsTest
{
protected:
    IPropSlots()
    {
        m_object.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
        m_object.m_bag.Set(PR_PARENT_ENTRYID, "parent");
        m_object.m_bag.Set(PR_SUBJECT_A, "subject");
        m_object.m_namedTags.assign(81, 0x90000000);
        m_object.m_property = &m_stream;
    }
    /// What the derived class was asked for while `body` ran.
    Lines Own(const std::function<void()>& body)
    {
        m_own.Take();
        body();
        return m_own.Take();
    }

    Journal m_own;
    RecordingProp m_object{m_journal};
    RecordingStream m_stream{m_journal, "text"};
    Watched m_prop{m_own, &m_object};
};

} // namespace

TEST_F(IPropSlots, BothFormsTakeTheMarking)
{
    Watched other(m_own);
    EXPECT_EQ(Own([&] { m_prop.SetWAB(other); }), (Lines{"IsWAB", "SetWAB(true)"}));
}

TEST_F(IPropSlots, AssignmentFreesThroughTheDerivedClass)
{
    const CZebIProp source(&m_object);
    EXPECT_EQ(Own([&] { m_prop = source; }), (Lines{"Free", "IsValid"}));
    EXPECT_EQ(Own([&] { &m_prop; }), (Lines{"Free"}));
}

TEST_F(IPropSlots, TheDerivedClassComparesTypes)
{
    EXPECT_EQ(Own([&] { m_prop.IsMAPITypeAcceptable(3); }), (Lines{"GetMAPIType"}));
}

TEST_F(IPropSlots, TheDerivedClassResolvesNamedTags)
{
    EXPECT_EQ(Own([&] { m_prop.GetTagsMap(); }), (Lines{"GetTagsMap", "CheckIDsMap"}));
    EXPECT_EQ(Own([&] { m_prop.GetRealTag(0x8005001E, true); }), (Lines{"CheckIDsMap"}));
    EXPECT_EQ(Own([&] { m_prop.GetNameFromTag(0x8005001E, false); }), (Lines{"CheckIDsMap"}));
    EXPECT_EQ(Own([&] { m_prop.GetRealTag(PR_SUBJECT_A, true); }), Lines());
}

TEST_F(IPropSlots, DisplayNamesUseTheDerivedTag)
{
    EXPECT_STREQ(m_prop.GetDisplayNameA(), "subject");
    EXPECT_EQ(Own([&] { m_prop.GetDisplayNameA(); }), (Lines{"GetDisplayNameTag(false)", "GetStringPropA"}));
    EXPECT_EQ(Own([&] { m_prop.GetDisplayNameW(); }), (Lines{"GetDisplayNameTag(true)", "GetStringPropW"}));
    EXPECT_EQ(Own([&] { m_prop.GetDisplayName(); }),
              (Lines{"GetDisplayNameTag(false)", "GetStringProp", "GetStringPropA"}));
    const Lines writes = {"SetProps(array)", "SetProps", "SaveChanges"};
    Lines expected = {"GetDisplayNameTag(false)"};
    expected.insert(expected.end(), writes.begin(), writes.end());
    EXPECT_EQ(Own([&] { m_prop.CZebIProp::SetDisplayNameA("x"); }), expected);
    expected.insert(expected.begin(), "SetDisplayNameA");
    EXPECT_EQ(Own([&] { m_prop.SetDisplayName("x"); }), expected);
    expected = writes;
    expected.insert(expected.begin(), "GetDisplayNameTag(true)");
    EXPECT_EQ(Own([&] { m_prop.SetDisplayNameW(ZEBW("x")); }), expected);
}

TEST_F(IPropSlots, TheDerivedClassReadsTexts)
{
    EXPECT_EQ(Own([&] { m_prop.GetStringProp(PR_SUBJECT_A); }), (Lines{"GetStringProp", "GetStringPropA"}));
    EXPECT_EQ(Own([&] { m_prop.GetLongString(PR_BODY_A); }), (Lines{"GetLongStringA", "OpenProperty"}));
    EXPECT_EQ(Own([&] { m_prop.GetLongStringW(PR_BODY_W); }), (Lines{"OpenProperty"}));
}

TEST_F(IPropSlots, ArraysGoThroughThePlainForms)
{
    CZebPropValArray values;
    EXPECT_EQ(Own([&] { m_prop.GetProps(values, 1, PR_SUBJECT_A); }), (Lines{"GetProps"}));
    EXPECT_EQ(Own([&] { m_prop.CZebIProp::SetProps(values, true, nullptr); }), (Lines{"SetProps", "SaveChanges"}));
    EXPECT_EQ(Own([&] { m_prop.CZebIProp::SetProps(values, false, nullptr); }), (Lines{"SetProps"}));
    EXPECT_EQ(Own([&] { m_prop.GetAllProps(values.CountPtr(), &values, 0); }),
              (Lines{"GetAllProps", "GetPropList", "GetProps"}));
    EXPECT_EQ(Own([&] { m_prop.DumpAllProps(); }), (Lines{"GetAllProps", "GetPropList", "GetProps"}));
}

TEST_F(IPropSlots, AncestryAsksTheDerivedClass)
{
    RecordingSession sessionDouble(m_journal);
    CZebSession session(&sessionDouble);
    EXPECT_EQ(Own([&] { EXPECT_TRUE(m_prop.IsChildOf(session, ID("parent"), true)); }),
              (Lines{"GetObjectType", "GetParentID"}));
}
