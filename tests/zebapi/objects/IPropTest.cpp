#include "zebapi/IProp.h"
#include "ObjectsTest.h"
#include "tests/support/Context.h"
#include "tests/support/FailingNew.h"
#include "zebapi/Message.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/SESSION.h"
#include "zebapi/TAGS.h"

#include <functional>
#include <memory>
#include <new>

using namespace zeb::test;

namespace
{

class IProp : public ObjectsTest
{
protected:
    RecordingProp m_object{m_journal};
    CZebIProp m_prop{&m_object};
};

/// Opens what is protected.
class OpenProp : public CZebIProp
{
public:
    using CZebIProp::CZebIProp;
    using CZebIProp::SetWAB;
};

constexpr ULONG Named = 0x8001001E;

} // namespace

TEST_F(IProp, HoldsOneReferenceAndReleasesIt)
{
    EXPECT_EQ(m_object.References(), 1u);
    EXPECT_TRUE(m_prop.IsValid());
    m_prop.Free();
    EXPECT_EQ(m_object.References(), 0u);
    EXPECT_FALSE(m_prop.IsValid());
    m_prop.Free();
    EXPECT_FALSE(CZebIProp().IsValid());
}

TEST_F(IProp, TheSlotIsEmptyAndOwning)
{
    CZebIProp* const same = m_prop;
    EXPECT_EQ(same, std::addressof(m_prop));
    IUnknown** slot = &m_prop;
    EXPECT_EQ(*slot, nullptr);
    EXPECT_EQ(m_object.References(), 0u);
    m_object.AddRef();
    *slot = &m_object;
    EXPECT_TRUE(m_prop.IsValid());
    m_prop.Free();
    EXPECT_EQ(m_object.References(), 0u);
}

TEST_F(IProp, CopiesShareObjectAndMarking)
{
    OpenProp source(&m_object);
    source.SetWAB(true);
    CZebIProp copy(source);
    EXPECT_EQ(m_object.References(), 3u);
    EXPECT_TRUE(copy.IsWAB());
    copy = m_prop;
    EXPECT_FALSE(copy.IsWAB());
    EXPECT_EQ(m_object.References(), 3u);
    EXPECT_EQ(Caught(), 0u);
    copy.SetWAB(source);
    EXPECT_TRUE(copy.IsWAB());
    copy.Free();
    EXPECT_FALSE(copy.IsWAB());
}

TEST_F(IProp, AssigningAnEmptyOneLogsOnce)
{
    OpenProp empty;
    empty.SetWAB(true);
    m_prop = empty;
    EXPECT_FALSE(m_prop.IsValid());
    EXPECT_TRUE(m_prop.IsWAB());
    EXPECT_EQ(m_object.References(), 0u);
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"MAPI_E_INTERFACE_NOT_SUPPORTED\", File: \""), 1u);
    EXPECT_EQ(ThrowLines(), 1u);
    EXPECT_EQ(m_log.Lines().back().level, 1);
}

TEST_F(IProp, SelfAssignmentIsSafe)
{
    const CZebIProp& same = m_prop;
    OpenProp marked;
    marked.SetWAB(true);
    m_prop.SetWAB(marked);
    m_prop = same;
    EXPECT_TRUE(m_prop.IsValid());
    EXPECT_TRUE(m_prop.IsWAB());
    EXPECT_EQ(m_object.References(), 1u);
    EXPECT_TRUE(m_log.Lines().empty());
}

TEST_F(IProp, AnEmptyOnesCopyIsLogged)
{
    OpenProp empty;
    empty.SetWAB(true);
    CZebIProp copy(static_cast<const CZebIProp&>(empty));
    EXPECT_FALSE(copy.IsValid());
    EXPECT_TRUE(copy.IsWAB());
    EXPECT_EQ(Caught(), 1u);
}

TEST_F(IProp, CopiesResolveNamesThemselves)
{
    m_object.m_namedTags.assign(81, 0x90000000);
    m_prop.GetTagsMap();
    CZebIProp copy(m_prop);
    Calls();
    copy.GetTagsMap();
    EXPECT_EQ(Calls(), (Lines{"prop: GetIDsFromNames(0x51,0x2)"}));
}

TEST_F(IProp, AnEmptyOneRaisesComErrors)
{
    CZebIProp empty;
    CZebPropValArray values(1);
    values[PR_DISPLAY_NAME_A] = "x";
    EXPECT_EQ(Raised([&] { empty.GetObjectType(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetEntryID(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetParentID(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetBin(PR_ENTRYID); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetBinary(PR_ENTRYID); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetDisplayNameA(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetDisplayNameW(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetDisplayName(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.SetDisplayNameA("x"); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.SetDisplayNameW(ZEBW("x")); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.SetDisplayName("x"); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetStringPropA(PR_SUBJECT_A); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetStringPropW(PR_SUBJECT_W); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetTagsMap(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetRealTag(Named, true); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetNameFromTag(Named, false); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenProperty(PR_BODY_A, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetLongStringA(PR_BODY_A); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetLongStringW(PR_BODY_W); }), E_POINTER);
    SPropTagArray* tags = nullptr;
    SPropValue* raw = nullptr;
    CZebSession session;
    EXPECT_EQ(Raised([&] { empty.GetPropList(&tags, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetProps(nullptr, values.CountPtr(), &raw, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.SetProps(1, values, nullptr); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.IsChildOf(session, ID("a"), false); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.SetProps(values, false, nullptr); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.DeleteProps(nullptr, nullptr); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.SaveChanges(0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetAllProps(values.CountPtr(), nullptr, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetInterface()->SaveChanges(0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetProps(values, 1, PR_SUBJECT_A); }), E_POINTER);
    EXPECT_TRUE(values.IsExists(PR_DISPLAY_NAME_A)) << "the result is left as it was";
    EXPECT_TRUE(Calls().empty());
}

TEST_F(IProp, TheBaseAcceptsAnyType)
{
    EXPECT_TRUE(*m_prop.GetInterfaceCIID() == IID_IMAPIProp);
    EXPECT_EQ(m_prop.GetMAPIType(), 0u);
    EXPECT_TRUE(m_prop.IsMAPITypeAcceptable(0));
    EXPECT_TRUE(m_prop.IsMAPITypeAcceptable(77));
}

TEST_F(IProp, ReadsWithItsWidthsFlag)
{
    m_object.m_bag.Set(PR_OBJECT_TYPE, MAPI_FOLDER);
    m_object.m_bag.Set(PR_ENTRYID, "ab");
    m_object.m_bag.Set(PR_PARENT_ENTRYID, "cd");
    m_object.m_bag.Set(PR_DISPLAY_NAME_A, "name");
    EXPECT_EQ(m_prop.GetObjectType(), static_cast<ULONG>(MAPI_FOLDER));
    EXPECT_EQ(Str(m_prop.GetEntryID().String()), "6162");
    EXPECT_EQ(Str(m_prop.GetParentID().String()), "6364");
    EXPECT_EQ(Str(m_prop.GetDisplayNameA()), "name");
    EXPECT_EQ(Str(m_prop.GetDisplayNameW()), u"name");
    EXPECT_EQ(Str(m_prop.GetDisplayName()), "name");
    EXPECT_EQ(Calls(), (Lines{"prop: GetProps([0xFFE0003],0x0)", "prop: GetProps([0xFFF0102],0x0)",
                              "prop: GetProps([0xE090102],0x0)", "prop: GetProps([0x3001001E],0x0)",
                              "prop: GetProps([0x3001001F],0x80000000)", "prop: GetProps([0x3001001E],0x0)"}));
}

TEST_F(IProp, OnlyAMissingTextIsEmpty)
{
    EXPECT_EQ(Str(m_prop.GetStringPropA(PR_SUBJECT_A)), "");
    EXPECT_EQ(Str(m_prop.GetStringPropW(PR_SUBJECT_W)), u"");
    EXPECT_EQ(Thrown([&] { m_prop.GetBin(PR_ENTRYID); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(Thrown([&] { m_prop.GetBinary(PR_ENTRYID); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(Thrown([&] { m_prop.GetObjectType(); }), MAPI_E_INVALID_TYPE);
}

TEST_F(IProp, AFailingReadCarriesItsError)
{
    m_object.Fail("GetProps", MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(Thrown([&] { m_prop.GetStringPropA(PR_SUBJECT_A); }), MAPI_E_NETWORK_ERROR);
    m_object.m_error = "no wire";
    Calls();
    EXPECT_EQ(Described([&] { m_prop.GetBin(PR_ENTRYID); }),
              "Ver:1, Error:no wire, Component:prop, LowLewelError:2, Context:3 \n");
    EXPECT_EQ(Calls(), (Lines{"prop: GetProps([0xFFF0102],0x0)", "prop: GetLastError(0x80040115,0x0)"}));
}

TEST_F(IProp, AFailingReadNamesTheProperty)
{
    m_object.Fail("GetProps", MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(ContextOf([&] { m_prop.GetStringPropA(PR_SUBJECT_A); }), "GetStringPropA PR_SUBJECT 0x0037001E");
    EXPECT_EQ(ContextOf([&] { m_prop.GetStringPropW(PR_SUBJECT_W); }), "GetStringPropW PR_SUBJECT 0x0037001F");
    EXPECT_EQ(ContextOf([&] { m_prop.GetBin(PR_ENTRYID); }), "GetBinary PR_ENTRYID 0x0FFF0102");
}

TEST_F(IProp, EveryFailureCarriesErrorAndFile)
{
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "s";
    CZebPropTagArray tags;
    tags.AddOne(PR_SUBJECT_A);
    CZebPropTagArray list;
    CZebPropValArray read;
    const std::pair<const char*, std::function<void(CZebIProp&)>> calls[] = {
        {"GetPropList", [&](CZebIProp& prop) { prop.GetPropList(&list, 0); }},
        {"GetProps", [&](CZebIProp& prop) { prop.GetProps(tags, read.CountPtr(), &read, 0); }},
        {"GetProps", [&](CZebIProp& prop) { prop.GetObjectType(); }},
        {"GetProps", [&](CZebIProp& prop) { prop.GetStringPropA(PR_SUBJECT_A); }},
        {"GetProps", [&](CZebIProp& prop) { prop.GetStringPropW(PR_SUBJECT_W); }},
        {"SetProps", [&](CZebIProp& prop) { prop.SetProps(values, false, nullptr); }},
        {"DeleteProps", [&](CZebIProp& prop) { prop.DeleteProps(tags, nullptr); }},
        {"SaveChanges", [&](CZebIProp& prop) { prop.SaveChanges(0); }},
        {"OpenProperty", [&](CZebIProp& prop) { prop.OpenProperty(PR_BODY_A, 0); }},
        {"GetIDsFromNames", [&](CZebIProp& prop) { prop.GetTagsMap(); }},
    };
    for (const auto& [method, call] : calls)
    {
        RecordingProp object(m_journal);
        object.Fail(method, MAPI_E_DISK_ERROR);
        object.m_error = "broken";
        CZebIProp prop(&object);
        m_log.Clear();
        EXPECT_EQ(Described([&call = call, &prop] { call(prop); }),
                  "Ver:1, Error:broken, Component:prop, LowLewelError:2, Context:3 \n")
            << method;
        EXPECT_EQ(Calls().back(), "prop: GetLastError(0x80040116,0x0)") << method;
        ASSERT_EQ(m_log.Lines().size(), 1u) << method;
        EXPECT_NE(m_log.Lines()[0].text.find("IProp.cpp, line "), std::string::npos) << m_log.Lines()[0];
    }
}

TEST_F(IProp, SuccessWithoutAValueFails)
{
    m_object.m_givesNothing = true;
    EXPECT_EQ(Thrown([&] { m_prop.GetBin(PR_ENTRYID); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(Thrown([&] { m_prop.GetObjectType(); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(Thrown([&] { m_prop.GetStringPropA(PR_SUBJECT_A); }), MAPI_E_BAD_VALUE);
}

TEST_F(IProp, SettingTheDisplayNameSaves)
{
    m_prop.SetDisplayNameA("one");
    m_prop.SetDisplayNameW(ZEBW("two"));
    m_prop.SetDisplayName("three");
    EXPECT_EQ(Calls(), (Lines{"prop: SetProps(0x3001001E='one',problems null)", "prop: SaveChanges(0x6)",
                              "prop: SetProps(0x3001001F=two,problems null)", "prop: SaveChanges(0x6)",
                              "prop: SetProps(0x3001001E='three',problems null)", "prop: SaveChanges(0x6)"}));
}

TEST_F(IProp, SetPropsStopsAtFreeEntries)
{
    CZebPropValArray values(3);
    values[PR_SUBJECT_A] = "s";
    SPropProblemArray* problems = nullptr;
    m_prop.SetProps(values, false, &problems);
    EXPECT_EQ(Calls(), (Lines{"prop: SetProps(0x37001E='s',problems given)"}));
    EXPECT_EQ(values.Count(), 1u);
    m_prop.SetProps(values, true, nullptr);
    EXPECT_EQ(Calls(), (Lines{"prop: SetProps(0x37001E='s',problems null)", "prop: SaveChanges(0x6)"}));
}

TEST_F(IProp, SetPropsOfNothingSavesNothing)
{
    CZebPropValArray values(3);
    m_prop.SetProps(values, true, nullptr);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(IProp, AFailedWriteIsNotSaved)
{
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "s";
    m_object.Fail("SetProps", MAPI_E_NO_ACCESS);
    EXPECT_EQ(Thrown([&] { m_prop.SetProps(values, true, nullptr); }), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Calls(), (Lines{"prop: SetProps(0x37001E='s',problems null)"}));
}

TEST_F(IProp, PassesArgumentsOnUnchanged)
{
    SPropTagArray* list = nullptr;
    m_prop.GetPropList(&list, 0x80000000);
    Zeb_MemFree(list);
    ULONG count = 0;
    SPropValue* values = nullptr;
    SizedSPropTagArray(2, tags) = {2, {PR_SUBJECT_A, PR_BODY_W}};
    m_prop.GetProps(reinterpret_cast<SPropTagArray*>(&tags), &count, &values, 0x80000000);
    EXPECT_EQ(count, 2u);
    Zeb_MemFree(values);
    SPropProblemArray* problems = nullptr;
    m_prop.DeleteProps(reinterpret_cast<SPropTagArray*>(&tags), &problems);
    m_prop.SaveChanges(9);
    EXPECT_EQ(Calls(), (Lines{"prop: GetPropList(0x80000000)", "prop: GetProps([0x37001E,0x1000001F],0x80000000)",
                              "prop: DeleteProps([0x37001E,0x1000001F],problems given)", "prop: SaveChanges(0x9)"}));
}

TEST_F(IProp, WarningsPass)
{
    m_object.Fail("SaveChanges", MAPI_W_ERRORS_RETURNED);
    EXPECT_EQ(Thrown([&] { m_prop.SaveChanges(0); }), 0);
}

TEST_F(IProp, GetPropsTakesExactlyTheTags)
{
    m_object.m_bag.Set(PR_SUBJECT_A, "s");
    CZebPropValArray result;
    m_prop.GetProps(result, 2, PR_SUBJECT_A, PR_BODY_A);
    EXPECT_EQ(Calls(), (Lines{"prop: GetProps([0x37001E,0x1000001E],0x0)"}));
    EXPECT_EQ(result.Count(), 2u);
    EXPECT_TRUE(result.hasRealValue(PR_SUBJECT_A));
    EXPECT_FALSE(result.hasRealValue(PR_BODY_A));
    EXPECT_EQ(Thrown([&] { result[PR_ENTRYID]; }), MAPI_E_UNEXPECTED_ID) << "a received array does not grow";
}

TEST_F(IProp, GetPropsWithoutTagsCallsNothing)
{
    CZebPropValArray result(3);
    m_prop.GetProps(result, 0);
    EXPECT_EQ(result.Count(), 0u);
    EXPECT_FALSE(result.IsValid());
    EXPECT_EQ(Thrown([&] { result[PR_SUBJECT_A]; }), MAPI_E_UNEXPECTED_ID) << "it was received";
    ULONG count = 7;
    SPropValue* values = nullptr;
    CZebPropTagArray none;
    SPropTagArray** slot = &none;
    *slot = static_cast<SPropTagArray*>(Zeb_MemAllocate(CbNewSPropTagArray(0), nullptr));
    m_prop.GetProps(*slot, &count, &values, 0);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(values, nullptr);
    EXPECT_TRUE(Calls().empty()) << "MAPI refuses an empty list";
    EXPECT_EQ(Raised([&] { CZebIProp().GetProps(*slot, &count, &values, 0); }), E_POINTER);
}

TEST_F(IProp, AllPropsComeFromTheList)
{
    m_object.m_bag.Set(PR_SUBJECT_W, "s");
    CZebPropValArray values;
    m_prop.GetAllProps(values.CountPtr(), &values, MAPI_UNICODE);
    EXPECT_EQ(Calls(), (Lines{"prop: GetPropList(0x80000000)", "prop: GetProps([0x37001F],0x0)"}));
    EXPECT_EQ(values.Count(), 1u);
}

TEST_F(IProp, UnknownCodePagesReadWithoutList)
{
    m_object.m_bag.Set(PR_SUBJECT_W, "s");
    m_object.Fail("GetPropList", MAPI_E_UNKNOWN_CPID);
    CZebPropValArray values;
    m_prop.GetAllProps(values.CountPtr(), &values, MAPI_UNICODE);
    EXPECT_EQ(Calls(), (Lines{"prop: GetPropList(0x80000000)", "prop: GetProps(all,0x0)"}));
    EXPECT_EQ(values.Count(), 1u);
}

TEST_F(IProp, AnotherFailureOfTheListPropagates)
{
    m_object.Fail("GetPropList", MAPI_E_CALL_FAILED);
    CZebPropValArray values;
    EXPECT_EQ(Thrown([&] { m_prop.GetAllProps(values.CountPtr(), &values, 0); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Calls(), (Lines{"prop: GetPropList(0x0)"}));
}

TEST_F(IProp, OrdinaryTagsNeedNoMap)
{
    EXPECT_EQ(m_prop.GetRealTag(0x0037001E, true), 0x0037001Eu);
    EXPECT_EQ(m_prop.GetNameFromTag(0x0037001E, true), 0x0037001Eu);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(IProp, NamedTagsFillTheMapOnce)
{
    for (ULONG i = 0; i < 81; ++i)
    {
        m_object.m_namedTags.push_back(PROP_TAG(PT_UNSPECIFIED, 0x9000 + i));
    }
    // The third and fourth names are both 0x8062; the later one counts.
    EXPECT_EQ(m_prop.GetRealTag(0x8062001F, true), 0x9003001Fu);
    EXPECT_EQ(m_prop.GetRealTag(0x8957001F, true), 0x9050001Fu);
    EXPECT_EQ(m_prop.GetRealTag(0x8999001F, false), 0u);
    EXPECT_EQ(Thrown([&] { m_prop.GetRealTag(0x8999001F, true); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(m_prop.GetNameFromTag(0x9003001F, false), 0u);
    EXPECT_EQ(Calls(), (Lines{"prop: GetIDsFromNames(0x51,0x2)"}));
    EXPECT_EQ(m_object.m_idsAsked.front(), 0x8005);
    EXPECT_EQ(m_object.m_idsAsked.back(), 0x8957);
    m_prop.Free();
    EXPECT_EQ(CZebIProp(m_prop).IsValid(), false);
}

TEST_F(IProp, FreeingEmptiesTheMap)
{
    m_object.m_namedTags.assign(81, 0x90000000);
    m_prop.GetTagsMap();
    IUnknown** slot = &m_prop;
    m_object.AddRef();
    *slot = &m_object;
    EXPECT_GT(m_prop.GetTagsMap().GetCount(), 1);
    EXPECT_EQ(Calls().size(), 2u);
}

TEST_F(IProp, NamesWithoutATagAreOmitted)
{
    // Three tags for 81 names, the last of them, that of 0x8062, an error.
    m_object.m_namedTags = {0x90000000, 0x90010000, PROP_TAG(PT_ERROR, 0)};
    EXPECT_EQ(m_prop.GetTagsMap().GetCount(), 1);
    EXPECT_EQ(m_prop.GetRealTag(0x8005001E, true), 0x9001001Eu);
    EXPECT_EQ(m_prop.GetRealTag(0x8062001E, false), 0u);
    EXPECT_EQ(m_prop.GetRealTag(0x80D8001E, false), 0u);
}

TEST_F(IProp, OneNameIsEnough)
{
    m_object.m_namedTags = {0x90000000};
    EXPECT_EQ(m_prop.GetRealTag(0x8005001E, true), 0x9000001Eu);
}

TEST_F(IProp, TheFirstNamedTagIsFound)
{
    m_object.m_namedTags = {0x90000000};
    EXPECT_EQ(m_prop.GetRealTag(0x7FFF001F, false), 0x7FFF001Fu);
    EXPECT_TRUE(Calls().empty());
    EXPECT_EQ(m_prop.GetRealTag(0x8000001F, false), 0u);
    EXPECT_EQ(m_prop.GetNameFromTag(0x8000001F, false), 0u);
    EXPECT_EQ(Calls().size(), 1u);
}

TEST_F(IProp, ARefusingStoreIsAskedOnce)
{
    for (HRESULT refusal : {MAPI_E_NO_SUPPORT, E_ACCESSDENIED, static_cast<HRESULT>(26)})
    {
        RecordingProp object(m_journal);
        object.Fail("GetIDsFromNames", refusal);
        CZebIProp prop(&object);
        EXPECT_EQ(prop.GetTagsMap().GetCount(), 1) << refusal;
        EXPECT_EQ(prop.GetTagsMap().GetTag(Named, false), 0u);
        CZebNameIdMap bothWays;
        bothWays = prop.GetTagsMap();
        EXPECT_EQ(bothWays.GetCount(), 1) << "0 to 0, and so the same the other way";
        EXPECT_TRUE(m_log.CountBeginning("EXCEPTION") == 0u) << "swallowed, not caught and logged";
        EXPECT_EQ(prop.GetRealTag(Named, false), 0u);
        EXPECT_EQ(Calls(), (Lines{"prop: GetIDsFromNames(0x51,0x2)"})) << refusal;
    }
}

TEST_F(IProp, OtherNameFailuresPropagate)
{
    m_object.Fail("GetIDsFromNames", MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(Thrown([&] { m_prop.GetTagsMap(); }), MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(Thrown([&] { m_prop.GetRealTag(Named, false); }), MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(Calls().size(), 2u);
}

TEST_F(IProp, LackOfMemoryEmptiesTheMap)
{
    m_object.m_namedTags.assign(81, 0x90000000);
    m_memory.FailAllocation(40);
    EXPECT_EQ(Thrown([&] { m_prop.GetTagsMap(); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(m_memory.LiveRoots(), 0u);
    EXPECT_TRUE(Calls().empty());
    EXPECT_GT(m_prop.GetTagsMap().GetCount(), 1);
}

TEST_F(IProp, SuccessWithoutTagsIsAFailure)
{
    EXPECT_EQ(Thrown([&] { m_prop.GetTagsMap(); }), E_INVALIDARG);
}

TEST_F(IProp, AnInterfaceGivenOutIsCounted)
{
    const CComPtr<IMAPIProp> given = m_prop.GetInterface();
    EXPECT_EQ(given.Get(), &m_object);
    EXPECT_EQ(m_object.References(), 2u);
}

TEST_F(IProp, FieldsAreInTheirDocumentedPlaces)
{
    OpenProp prop(&m_object);
    prop.SetWAB(true);
    const auto* bytes = reinterpret_cast<const unsigned char*>(std::addressof(prop));
    EXPECT_EQ(bytes[sizeof(void*)], 1);
    void* held = nullptr;
    std::memcpy(&held, bytes + 2 * sizeof(void*), sizeof(held));
    EXPECT_EQ(held, static_cast<IUnknown*>(&m_object));
}

TEST_F(IProp, UnmappableNamesAreAskedForAgain)
{
    for (ULONG i = 0; i < 81; ++i)
    {
        m_object.m_namedTags.push_back(PROP_TAG(PT_UNSPECIFIED, 0x9000 + i));
    }
    const int all = CZebIProp(m_prop).GetTagsMap().GetCount();
    bool failed = true;
    for (int after = 0; failed && after < 1000; ++after)
    {
        CZebIProp object(&m_object);
        std::unique_ptr<FailingNew> failing;
        m_object.m_named = [&] { failing = std::make_unique<FailingNew>(after, true); };
        failed = false;
        try
        {
            object.GetTagsMap();
        }
        catch (CZebException* exception)
        {
            failing.reset();
            EXPECT_EQ(exception->GetResult(), MAPI_E_NOT_ENOUGH_MEMORY) << after;
            exception->Delete();
            failed = true;
        }
        failing.reset();
        m_object.m_named = nullptr;
        Calls();
        EXPECT_EQ(object.GetTagsMap().GetCount(), all) << after;
        EXPECT_EQ(!Calls().empty(), failed) << after << ": a part is never taken for the whole";
    }
    EXPECT_FALSE(failed);
}

TEST_F(IProp, AnObjectMayHaveNoProperties)
{
    CZebPropValArray values;
    m_prop.GetAllProps(values.CountPtr(), &values, 0);
    EXPECT_EQ(values.Count(), 0u);
    EXPECT_FALSE(values.IsValid());
    EXPECT_EQ(Calls(), (Lines{"prop: GetPropList(0x0)"}));
}

TEST_F(IProp, ABinaryWithoutBytesReadsEmpty)
{
    m_object.m_dropsBytes = true;
    m_object.m_bag.Set(PR_ENTRYID, "abc");
    EXPECT_TRUE(m_prop.GetEntryID().IsEmpty());
}
