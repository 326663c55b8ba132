// A host's own named properties.
#include "ObjectsTest.h"
#include "tests/support/Context.h"
#include "zebapi/IProp.h"
#include "zebapi/TAGS.h"

using namespace zeb::test;

namespace
{

const GUID Set = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

class NamedTag : public ObjectsTest
{
protected:
    RecordingProp m_object{m_journal};
    CZebIProp m_prop{&m_object};
};

} // namespace

TEST_F(NamedTag, OfANumberHasGivenType)
{
    m_object.m_namedTags = {PROP_TAG(PT_UNSPECIFIED, 0x8123)};
    EXPECT_EQ(m_prop.GetNamedTag(Set, 0x8502, PT_LONG), PROP_TAG(PT_LONG, 0x8123));
    EXPECT_EQ(m_object.m_idsAsked, std::vector<LONG>{0x8502});
    EXPECT_EQ(Calls(), Lines{"prop: GetIDsFromNames(0x1,0x2)"});
}

TEST_F(NamedTag, OfTextIsAskedByText)
{
    m_object.m_namedTags = {PROP_TAG(PT_UNSPECIFIED, 0x8123)};
    EXPECT_EQ(m_prop.GetNamedTag(Set, ZEBW("Color"), PT_UNICODE, false), PROP_TAG(PT_UNICODE, 0x8123));
    EXPECT_EQ(m_object.m_textsAsked, std::vector<std::basic_string<WCHAR>>{ZEBW("Color")});
    EXPECT_EQ(Calls(), Lines{"prop: GetIDsFromNames(0x1,0x0)"});
}

TEST_F(NamedTag, WhenMissingIsZeroOrFails)
{
    m_object.m_namedTags = {PROP_TAG(PT_ERROR, 0)};
    EXPECT_EQ(m_prop.GetNamedTag(Set, 0x8502, PT_LONG, false), 0u);
    EXPECT_EQ(Thrown([&] { m_prop.GetNamedTag(Set, 0x8502, PT_LONG); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(ContextOf([&] { m_prop.GetNamedTag(Set, ZEBW("Color"), PT_LONG); }), "GetNamedTag 'Color'");
}

TEST_F(NamedTag, NeedsAText)
{
    EXPECT_EQ(Thrown([&] { m_prop.GetNamedTag(Set, nullptr, PT_LONG); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_prop.GetNamedTag(Set, ZEBW(""), PT_LONG); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Calls(), Lines{});
}

TEST_F(NamedTag, SuccessWithoutTagsIsAFailure)
{
    EXPECT_EQ(Thrown([&] { m_prop.GetNamedTag(Set, 0x8502, PT_LONG); }), MAPI_E_CALL_FAILED);
    m_object.Fail("GetIDsFromNames", MAPI_E_NO_ACCESS);
    EXPECT_EQ(Thrown([&] { m_prop.GetNamedTag(Set, 0x8502, PT_LONG); }), MAPI_E_NO_ACCESS);
}

TEST_F(NamedTag, HasItsNameGivenBack)
{
    GUID set = {};
    LONG id = 99;
    CStringW name(ZEBW("before"));
    m_object.m_namesGiven = {const_cast<GUID*>(&Set), MNID_ID, {0x8502}};
    EXPECT_TRUE(m_prop.GetNameOfTag(PROP_TAG(PT_LONG, 0x8123), set, id, name));
    EXPECT_EQ(set, Set);
    EXPECT_EQ(id, 0x8502);
    EXPECT_TRUE(name.IsEmpty());
    m_object.m_namesGiven.ulKind = MNID_STRING;
    m_object.m_namesGiven.Kind.lpwstrName = const_cast<WCHAR*>(ZEBW("Color"));
    EXPECT_TRUE(m_prop.GetNameOfTag(PROP_TAG(PT_LONG, 0x8123), set, id, name));
    EXPECT_EQ(id, 0);
    EXPECT_EQ(name, CStringW(ZEBW("Color")));
    EXPECT_EQ(Calls(), (Lines{"prop: GetNamesFromIDs([0x81230003],set null,0x0)",
                              "prop: GetNamesFromIDs([0x81230003],set null,0x0)"}));
}

TEST_F(NamedTag, WithoutANameLeavesTheOutputs)
{
    GUID set = Set;
    LONG id = 99;
    CStringW name(ZEBW("before"));
    EXPECT_FALSE(m_prop.GetNameOfTag(PROP_TAG(PT_LONG, 0x8123), set, id, name));
    EXPECT_EQ(set, Set);
    EXPECT_EQ(id, 99);
    EXPECT_EQ(name, CStringW(ZEBW("before")));
    m_object.Fail("GetNamesFromIDs", MAPI_E_NO_SUPPORT);
    EXPECT_EQ(ContextOf([&] { m_prop.GetNameOfTag(PR_SUBJECT_W, set, id, name); }),
              "GetNamesFromIDs PR_SUBJECT 0x0037001F");
}

TEST_F(NamedTag, AnAnswerMayHaveNoNamesAtAll)
{
    GUID set = {};
    LONG id = 99;
    CStringW name;
    m_object.m_givesNothing = true;
    EXPECT_FALSE(m_prop.GetNameOfTag(PROP_TAG(PT_LONG, 0x8123), set, id, name));
    EXPECT_EQ(id, 99);
}

TEST_F(NamedTag, ACountWithoutNamesIsAFailure)
{
    class Hollow : public RecordingProp
    {
    public:
        using RecordingProp::RecordingProp;
        HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray*, LPGUID, ULONG, ULONG* count,
                                                  LPMAPINAMEID** names) override
        {
            *count = 1;
            *names = nullptr;
            return S_OK;
        }
    } hollow(m_journal);
    CZebIProp prop(&hollow);
    GUID set = {};
    LONG id = 0;
    CStringW name;
    EXPECT_EQ(Thrown([&] { prop.GetNameOfTag(PR_SUBJECT_W, set, id, name); }), MAPI_E_CALL_FAILED);
}

TEST_F(NamedTag, ANameWithoutASetIsNone)
{
    class Unset : public RecordingProp
    {
    public:
        using RecordingProp::RecordingProp;
        HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray* tags, LPGUID set, ULONG flags, ULONG* count,
                                                  LPMAPINAMEID** names) override
        {
            const HRESULT result = RecordingProp::GetNamesFromIDs(tags, set, flags, count, names);
            (*names)[0]->lpguid = nullptr;
            return result;
        }
    } unset(m_journal);
    unset.m_namesGiven = {const_cast<GUID*>(&Set), MNID_ID, {0x8502}};
    CZebIProp prop(&unset);
    GUID set = {};
    LONG id = 99;
    CStringW name;
    EXPECT_FALSE(prop.GetNameOfTag(PR_SUBJECT_W, set, id, name));
    EXPECT_EQ(id, 99);
}

TEST_F(NamedTag, OfEmptyObjectsRaisesComErrors)
{
    CZebIProp none;
    GUID set = {};
    LONG id = 0;
    CStringW name;
    EXPECT_EQ(Raised([&] { none.GetNamedTag(Set, 1, PT_LONG); }), E_POINTER);
    EXPECT_EQ(Raised([&] { none.GetNameOfTag(1, set, id, name); }), E_POINTER);
}
