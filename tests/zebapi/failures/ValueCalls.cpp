// The values: single ones, arrays, tags, binaries, names.
#include "Calls.h"

#include <cstdarg>

namespace zeb::test
{

namespace
{

void Gather(CZebPropTagArray& tags, ULONG count, ...)
{
    va_list list;
    va_start(list, count);
    tags.Reserve(count);
    tags.Fill(count, list);
    va_end(list);
}
void AddList(CZebPropTagArray& tags, ULONG count, ...)
{
    va_list list;
    va_start(list, count);
    tags.AddList(count, list);
    va_end(list);
}
void AddReference(CZebPropTagArray& tags, ULONG count, ...)
{
    va_list list;
    va_start(list, count);
    tags.Add(count, list);
    va_end(list);
}

template <class Element>
CArray<Element> Array(const Element& first)
{
    CArray<Element> array;
    array.Add(first);
    array.Add(first);
    return array;
}

template <class Element>
void Read(World& w, ULONG type)
{
    CArray<Element> array;
    w.Two(PROP_TAG(type, 0x6700)).GetMV(array);
}

template <class Value>
void Convert(World& w, ULONG type)
{
    static_cast<void>(w.Value(PROP_TAG(type, 0x6700)).operator Value());
}

void WriteFirst(World& w, ULONG type)
{
    w.Value(PROP_TAG(type, 0x6700)).String(true);
}

} // namespace

const std::vector<Call<World>>& ValueCalls()
{
    static const std::vector<Call<World>> calls = {
        {"CZebOnePropVal::CZebOnePropVal", [](World&) { CZebOnePropVal(nullptr, nullptr).IsEmpty(); }},
        {"CZebOnePropVal::CZebOnePropVal",
         [](World& w)
         {
             const CZebOnePropVal value = w.Value(PR_SUBJECT_A);
             const CZebOnePropVal copy(value);
             copy.GetTag();
         }},
        {"CZebOnePropVal::CheckType", [](World& w) { OpenValue(w.NewValue(PR_SUBJECT_A), nullptr).CheckType(PT_LONG); }},
        {"CZebOnePropVal::CheckValid", [](World&) { OpenValue(nullptr, nullptr).CheckValid(); }},
        {"CZebOnePropVal::GetCurrency", [](World& w) { w.Value(PROP_TAG(PT_CURRENCY, 0x6700)).GetCurrency(); }},
        {"CZebOnePropVal::GetDouble", [](World& w) { w.Value(PROP_TAG(PT_DOUBLE, 0x6700)).GetDouble(); }},
        {"CZebOnePropVal::GetGuid", [](World& w) { w.Value(PR_SUBJECT_A).GetGuid(); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<std::int64_t>(w, PT_MV_I8); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<double>(w, PT_MV_DOUBLE); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<float>(w, PT_MV_R4); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<FILETIME>(w, PT_MV_SYSTIME); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<GUID>(w, PT_MV_CLSID); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<CZebBinary>(w, PT_MV_BINARY); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<LONG>(w, PT_MV_LONG); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<SHORT>(w, PT_MV_I2); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<CStringW>(w, PT_MV_UNICODE); }},
        {"CZebOnePropVal::GetMV", [](World& w) { Read<CStringA>(w, PT_MV_STRING8); }},
        {"CZebOnePropVal::GetPropID", [](World&) { CZebOnePropVal(nullptr, nullptr).GetPropID(); }},
        {"CZebOnePropVal::GetTag", [](World&) { CZebOnePropVal(nullptr, nullptr).GetTag(); }},
        {"CZebOnePropVal::GetType", [](World&) { CZebOnePropVal(nullptr, nullptr).GetType(); }},
        {"CZebOnePropVal::IsEmpty", [](World& w) { w.Value(PR_SUBJECT_A).IsEmpty(); }},
        {"CZebOnePropVal::Set", [](World& w) { w.values[PR_SUBJECT_A].Set(w.Two(PROP_TAG(PT_MV_STRING8, 0x6700))); }},
        {"CZebOnePropVal::SetCurrency", [](World& w) { w.Value(PROP_TAG(PT_CURRENCY, 0x6700)).SetCurrency(7); }},
        {"CZebOnePropVal::SetUtf8", [](World& w) { w.Value(PR_SUBJECT_W).SetUtf8("a text longer than a string holds"); }},
        {"CZebOnePropVal::SetUtf8", [](World& w) { w.Value(PR_SUBJECT_A).SetUtf8("a text longer than a string holds"); }},
        {"CZebOnePropVal::StringUtf8", [](World& w) { w.values[PR_ENTRYID].StringUtf8(); }},
        {"CZebOnePropVal::String", [](World& w) { WriteFirst(w, PT_LONG); }},
        {"CZebOnePropVal::String", [](World& w) { WriteFirst(w, PT_SYSTIME); }},
        {"CZebOnePropVal::String", [](World& w) { WriteFirst(w, PT_UNICODE); }},
        {"CZebOnePropVal::String", [](World& w) { WriteFirst(w, PT_OBJECT); }},
        {"CZebOnePropVal::String", [](World& w) { w.values[PR_ENTRYID].String(false); }},
        {"CZebOnePropVal::String", [](World& w) { w.values[PR_SUBJECT_A].String(false); }},
        {"CZebOnePropVal::StringConversionPossible",
         [](World& w) { w.Value(PR_SUBJECT_A).StringConversionPossible(); }},
        {"CZebOnePropVal::StringW", [](World& w) { w.values[PR_SUBJECT_A].StringW(false); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.Value(PROP_TAG(PT_BOOLEAN, 0x6700)).UseDefault(true); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.Value(PR_SUBJECT_A).UseDefault("x"); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.Value(PR_SUBJECT_W).UseDefault(ZEBW("x")); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.Value(PR_MESSAGE_SIZE).UseDefault(LONG{1}); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.Value(PR_MESSAGE_SIZE).UseDefault(LONGLONG{1}); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.Value(PR_MESSAGE_SIZE).UseDefault(ULONG{1}); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.values[PR_SUBJECT_A].UseDefault(CStringW()); }},
        {"CZebOnePropVal::UseDefault", [](World& w) { w.values[PR_SUBJECT_A].UseDefault(CStringA()); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<const FILETIME&>(w, PT_SYSTIME); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<const SBinary&>(w, PT_BINARY); }},
        {"CZebOnePropVal::operator type", [](World&) { CZebOnePropVal(nullptr, nullptr).operator const SPropValue&(); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<bool>(w, PT_LONG); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<const char*>(w, PT_STRING8); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<const WCHAR*>(w, PT_UNICODE); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<LONG>(w, PT_LONG); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<LONGLONG>(w, PT_LONG); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<SHORT>(w, PT_LONG); }},
        {"CZebOnePropVal::operator type", [](World& w) { Convert<ULONG>(w, PT_I2); }},
        {"CZebOnePropVal::operator type", [](World& w) { w.values[PR_SUBJECT_A].operator CStringW(); }},
        {"CZebOnePropVal::operator type", [](World& w) { w.values[PR_SUBJECT_A].operator CStringA(); }},
        {"CZebOnePropVal::operator!=", [](World& w) { (void)(w.Value(PR_SUBJECT_A) != CZebOnePropVal(nullptr, nullptr)); }},
        {"CZebOnePropVal::operator==",
         [](World& w) { (void)(w.values[PR_ENTRYID] == w.Two(PROP_TAG(PT_MV_STRING8, 0x6700))); }},
        {"CZebOnePropVal::operator=",
         [](World& w) { w.Value(PR_BODY_A) = w.Value(PR_SUBJECT_A); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_DOUBLE, 0x6700)) = 1.5; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_CLSID, 0x6700)) = GUID{}; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_MV_I8, 0x6700)) = Array<std::int64_t>(1); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_MV_DOUBLE, 0x6700)) = Array<double>(1); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_MV_R4, 0x6700)) = Array<float>(1); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_MV_SYSTIME, 0x6700)) = Array(FILETIME{}); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_MV_CLSID, 0x6700)) = Array(GUID{}); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_A) = FILETIME{}; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.values[PR_ENTRYID] = World::Id("another"); }},
        {"CZebOnePropVal::operator=",
         [](World& w)
         { w.values[PR_SUBJECT_A] = w.Two(PROP_TAG(PT_MV_BINARY, 0x6700)).operator const SPropValue&(); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_A) = true; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.values[PR_SUBJECT_A] = "text"; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_W) = ZEBW("text"); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_W) = LONG{1}; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_W) = LONGLONG{1}; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_W) = SHORT{1}; }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_W) = ULONG{1}; }},
        {"CZebOnePropVal::operator=",
         [](World& w) { w.Value(PROP_TAG(PT_MV_BINARY, 0x6700)) = Array<CZebBinary>(w.binary); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_MV_LONG, 0x6700)) = Array<LONG>(1); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PROP_TAG(PT_MV_I2, 0x6700)) = Array<SHORT>(1); }},
        {"CZebOnePropVal::operator=",
         [](World& w) { w.Value(PROP_TAG(PT_MV_UNICODE, 0x6700)) = Array<CStringW>(ZEBW("text")); }},
        {"CZebOnePropVal::operator=",
         [](World& w) { w.Value(PROP_TAG(PT_MV_STRING8, 0x6700)) = Array<CStringA>("text"); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.Value(PR_SUBJECT_W) = CStringW(ZEBW("text")); }},
        {"CZebOnePropVal::operator=", [](World& w) { w.values[PR_SUBJECT_A] = CStringA("text"); }},
        {"CZebOnePropVal::operator=",
         [](World& w) { w.values[PR_ENTRYID] = static_cast<const CZebBinary&>(w.binary); }},
        {"CZebOnePropVal::ValueOf", [](World& w) { OpenValue::ValueOf(w.values[PR_ENTRYID]); }},
        {"CZebPropVal::CZebPropVal", [](World&) { CZebPropVal value; }},
        {"CZebPropVal::Empty", [](World&) { CZebPropVal().Empty(); }},
        {"CZebPropVal::operator&", [](World&) { &CZebPropVal(); }},
        {"CZebPropVal::operator=",
         [](World& w)
         {
             CZebPropVal value;
             static_cast<CZebOnePropVal&>(value) = w.values[PR_ENTRYID];
         }},
        {"CZebPropVal::operator=",
         [](World& w)
         {
             CZebPropVal value;
             static_cast<CZebOnePropVal&>(value) = w.Two(PROP_TAG(PT_MV_UNICODE, 0x6700));
         }},

        {"CZebPropValArray::Allocate", [](World& w) { w.values.Allocate(9); }},
        {"CZebPropValArray::CZebPropValArray", [](World&) { CZebPropValArray array(3); }},
        {"CZebPropValArray::Count", [](World& w) { w.values.Count(); }},
        {"CZebPropValArray::CountPtr", [](World& w) { w.values.CountPtr(); }},
        {"CZebPropValArray::Empty", [](World& w) { w.values.Empty(); }},
        {"CZebPropValArray::FindTag", [](World& w) { w.values.FindTag(PR_BODY_A); }},
        {"CZebPropValArray::GetAt", [](World& w) { w.values.GetAt(99); }},
        {"CZebPropValArray::GetCount", [](World& w) { w.values.GetCount(); }},
        {"CZebPropValArray::IsExists", [](World& w) { w.values.IsExists(PR_BODY_A); }},
        {"CZebPropValArray::IsValid", [](World& w) { w.values.IsValid(); }},
        {"CZebPropValArray::TruncateToExisting", [](World& w) { w.values.TruncateToExisting(); }},
        {"CZebPropValArray::hasRealValue", [](World& w) { w.values.hasRealValue(PR_SUBJECT_A); }},
        {"CZebPropValArray::operator type", [](World&) { CZebPropValArray().operator SPropValue*(); }},
        {"CZebPropValArray::operator&", [](World& w) { &w.values; }},
        {"CZebPropValArray::operator[]", [](World& w) { w.values[PR_BODY_A] = "A body"; }},

        {"CZebPropProblemArray::Allocate", [](World& w) { w.problems.Allocate(9); }},
        {"CZebPropProblemArray::CZebPropProblemArray", [](World&) { CZebPropProblemArray array; }},
        {"CZebPropProblemArray::CZebPropProblemArray", [](World& w) { CZebPropProblemArray array(w.problems); }},
        {"CZebPropProblemArray::Empty", [](World& w) { w.problems.Empty(); }},
        {"CZebPropProblemArray::GetCount", [](World& w) { w.problems.GetCount(); }},
        {"CZebPropProblemArray::IsValid", [](World& w) { w.problems.IsValid(); }},
        {"CZebPropProblemArray::operator type", [](World& w) { w.problems.operator SPropProblemArray*(); }},
        {"CZebPropProblemArray::operator&", [](World& w) { &w.problems; }},
        {"CZebPropProblemArray::operator=",
         [](World& w)
         {
             CZebPropProblemArray array;
             array = w.problems;
         }},
        {"CZebPropProblemArray::operator[]", [](World& w) { w.problems[0]; }},

        {"CZebPropTagArray::Add", [](World& w) { w.tags.Add(PR_BODY_A, PR_SUBJECT_A, ULONG{0}); }},
        {"CZebPropTagArray::Add", [](World& w) { AddReference(w.tags, PR_BODY_A, PR_SUBJECT_A, ULONG{0}); }},
        {"CZebPropTagArray::AddList", [](World& w) { AddList(w.tags, PR_BODY_A, PR_SUBJECT_A, ULONG{0}); }},
        {"CZebPropTagArray::AddOne", [](World& w) { w.tags.AddOne(PR_BODY_A); }},
        {"CZebPropTagArray::Allocate", [](World& w) { w.tags.Allocate(9); }},
        {"CZebPropTagArray::ApplyTo", [](World& w) { w.tags.ApplyTo(w.zprop); }},
        {"CZebPropTagArray::ApplyTo",
         [](World& w)
         {
             w.tags.AddOne(NamedTag);
             w.tags.ApplyTo(w.zprop);
         }},
        {"CZebPropTagArray::CZebPropTagArray", [](World&) { CZebPropTagArray array; }},
        {"CZebPropTagArray::CZebPropTagArray", [](World& w) { CZebPropTagArray array(w.tags); }},
        {"CZebPropTagArray::Empty", [](World& w) { w.tags.Empty(); }},
        {"CZebPropTagArray::Reserve", [](World& w) { w.tags.Reserve(2); }},
        {"CZebPropTagArray::Fill", [](World& w) { Gather(w.tags, 2, PR_BODY_A, PR_SUBJECT_A); }},
        {"CZebPropTagArray::GetCount", [](World& w) { w.tags.GetCount(); }},
        {"CZebPropTagArray::IsValid", [](World& w) { w.tags.IsValid(); }},
        {"CZebPropTagArray::operator type", [](World&) { CZebPropTagArray().operator SPropTagArray*(); }},
        {"CZebPropTagArray::operator&", [](World& w) { &w.tags; }},
        {"CZebPropTagArray::operator=",
         [](World& w)
         {
             CZebPropTagArray array;
             array = w.tags;
         }},
        {"CZebPropTagArray::operator[]", [](World& w) { w.tags[0]; }},

        {"CZebBinary::CZebBinary", [](World&) { CZebBinary binary; }},
        {"CZebBinary::CZebBinary", [](World& w) { CZebBinary binary(w.binary); }},
        {"CZebBinary::CZebBinary", [](World&) { CZebBinary binary(World::Id("one")); }},
        {"CZebBinary::CZebBinary", [](World&) { CZebBinary binary("0102"); }},
        {"CZebBinary::CZebBinary", [](World&) { CZebBinary binary("no hexadecimal text"); }},
        {"CZebBinary::CZebBinary",
         [](World&) { CZebBinary binary(3, reinterpret_cast<ENTRYID*>(World::Id("one").lpb)); }},
        {"CZebBinary::CZebBinary", [](World&) { CZebBinary binary(3, static_cast<void*>(World::Id("one").lpb)); }},
        {"CZebBinary::CZebBinary",
         [](World&)
         {
             CStringA text("0102");
             CZebBinary binary(text);
         }},
        {"CZebBinary::CheckValid", [](World&) { OpenBinary().CheckValid(); }},
        {"CZebBinary::CopyTo",
         [](World& w)
         {
             SBinary target = {};
             CZebBinary::CopyTo(target, World::Id("one"), w.values.operator SPropValue*());
         }},
        {"CZebBinary::DumpEntryID",
         [](World&)
         {
             CStringA hex("00000000C0D1A8F3");
             CZebBinary::DumpEntryID(hex);
         }},
        {"CZebBinary::Empty", [](World& w) { w.binary.Empty(); }},
        {"CZebBinary::IsEmpty", [](World& w) { w.binary.IsEmpty(); }},
        {"CZebBinary::IsValid", [](World& w) { w.binary.IsValid(); }},
        {"CZebBinary::SetBinary", [](World& w) { w.binary.SetBinary(3, World::Id("one").lpb); }},
        {"CZebBinary::SetEntryId",
         [](World& w) { w.binary.SetEntryId(3, reinterpret_cast<ENTRYID*>(World::Id("one").lpb)); }},
        {"CZebBinary::String", [](World& w) { w.binary.String(); }},
        {"CZebBinary::String", [](World& w) { w.binary.String("010203"); }},
        {"CZebBinary::operator type", [](World& w) { w.binary.operator CZebBinary*(); }},
        {"CZebBinary::operator type", [](World&) { CZebBinary().operator ENTRYID*(); }},
        {"CZebBinary::operator type", [](World&) { CZebBinary().operator const SBinary&(); }},
        {"CZebBinary::operator type", [](World&) { CZebBinary().operator unsigned char*(); }},
        {"CZebBinary::operator type", [](World&) { CZebBinary().operator ULONG(); }},
        {"CZebBinary::operator type", [](World& w) { w.binary.operator CStringA(); }},
        {"CZebBinary::operator!=", [](World& w) { (void)(w.binary != CZebBinary()); }},
        {"CZebBinary::operator==", [](World& w) { (void)(w.binary == CZebBinary()); }},
        {"CZebBinary::operator&", [](World& w) { &w.binary; }},
        {"CZebBinary::operator=",
         [](World& w)
         {
             CZebBinary binary;
             binary = static_cast<const CZebBinary&>(w.binary);
         }},
        {"CZebBinary::operator=", [](World& w) { w.binary = World::Id("one"); }},

        {"CZebEntryIDRequest::CZebEntryIDRequest", [](World&) { CZebEntryIDRequest request; }},
        {"CZebEntryIDRequest::CZebEntryIDRequest", [](World& w) { CZebEntryIDRequest request(w.request); }},
        {"CZebEntryIDRequest::ClearEntryID", [](World& w) { w.request.ClearEntryID(); }},
        {"CZebEntryIDRequest::Empty", [](World& w) { w.request.Empty(); }},
        {"CZebEntryIDRequest::PreAllocate", [](World& w) { w.request.PreAllocate(); }},
        {"CZebEntryIDRequest::SetBinary", [](World& w) { w.request.SetBinary(3, World::Id("one").lpb); }},
        {"CZebEntryIDRequest::String", [](World& w) { w.request.String("010203"); }},
        {"CZebEntryIDRequest::operator type", [](World& w) { w.request.operator ENTRYID**(); }},
        {"CZebEntryIDRequest::operator type", [](World& w) { w.request.operator ULONG*(); }},
        {"CZebEntryIDRequest::operator=",
         [](World& w)
         {
             CZebEntryIDRequest request;
             request = static_cast<const CZebEntryIDRequest&>(w.request);
         }},
        {"CZebEntryIDRequest::operator=",
         [](World& w) { static_cast<CZebEntryIDRequest&>(w.request) = World::Id("one"); }},

        {"CZebBinArray::Allocate",
         [](World& w)
         {
             w.rest.isExpected = true;
             w.binaries.Allocate(9);
         }},
        {"CZebBinArray::CZebBinArray",
         [](World& w)
         {
             w.rest.isExpected = true;
             CZebBinArray array(World::Id("one"));
         }},
        {"CZebBinArray::CZebBinArray",
         [](World& w)
         {
             w.rest.isExpected = true;
             CZebBinArray array("0102");
         }},
        {"CZebBinArray::CZebBinArray",
         [](World& w)
         {
             w.rest.isExpected = true;
             CZebBinArray array(3);
         }},
        {"CZebBinArray::CZebBinArray",
         [](World& w)
         {
             w.rest.isExpected = true;
             CZebBinArray array(ULONG{3});
         }},
        {"CZebBinArray::CheckValid", [](World& w) { w.binaries.CheckValid(99); }},
        {"CZebBinArray::Empty", [](World& w) { w.binaries.Empty(); }},
        {"CZebBinArray::GetAt", [](World& w) { w.binaries.GetAt(0); }},
        {"CZebBinArray::IsValid", [](World& w) { w.binaries.IsValid(); }},
        {"CZebBinArray::SetAt", [](World& w) { w.binaries.SetAt(0, World::Id("three")); }},
        {"CZebBinArray::SetAt", [](World& w) { w.binaries.SetAt(0, "010203"); }},
        {"CZebBinArray::operator type", [](World& w) { w.binaries.operator SBinaryArray*(); }},

        {"CZebNameIdMap::CZebNameIdMap", [](World&) { CZebNameIdMap map; }},
        {"CZebNameIdMap::CZebNameIdMap", [](World& w) { CZebNameIdMap map(w.map); }},
        {"CZebNameIdMap::EmptyIdMap", [](World& w) { w.map.EmptyIdMap(); }},
        {"CZebNameIdMap::GetCount", [](World& w) { w.map.GetCount(); }},
        {"CZebNameIdMap::GetName", [](World& w) { w.map.GetName(0x8512001F, true); }},
        {"CZebNameIdMap::GetTag", [](World& w) { w.map.GetTag(0x8999001F, true); }},
        {"CZebNameIdMap::SetTag", [](World& w) { w.map.SetTag(0x80840001, 0x86000001); }},
        {"CZebNameIdMap::operator=",
         [](World& w)
         {
             CZebNameIdMap map;
             map = w.map;
         }},
        {"CZebNameIdHelper::CZebNameIdHelper", [](World&) { CZebNameIdHelper helper; }},
        {"CZebNameIdHelper::GetID", [](World&) { CZebNameIdHelper().GetID(99); }},
        {"CZebNameIdHelper::GetTag", [](World&) { CZebNameIdHelper().GetTag(99, 1); }},
        {"CZebNameIdHelper::operator type", [](World&) { CZebNameIdHelper().operator MAPINAMEID**(); }},
        {"CZebNameIdHelper::operator type", [](World&) { CZebNameIdHelper().operator ULONG(); }},

        {"Zeb_NameAt",
         [](World&)
         {
             char name[64];
             Zeb_NameAt("PropTags", 99999, name);
         }},
        {"Zeb_NameFromValue", [](World&) { Zeb_NameFromValue("PropTags", PR_SUBJECT_A); }},
        {"Zeb_TableCount", [](World&) { Zeb_TableCount("no such table"); }},
        {"Zeb_ValueAt", [](World&) { Zeb_ValueAt("PropTags", 99999); }},
        {"Zeb_ValueFromName",
         [](World&)
         {
             ULONG value = 0;
             Zeb_ValueFromName("PropTags", "PR_NOTHING", &value);
         }},
        {"Zeb_SetLogSink",
         [](World&)
         {
             Zeb_SetLogSink([](void*, int, const char*, const char*) {}, nullptr);
             Zeb_SetLogSink(nullptr, nullptr);
         }},
        {"Zeb_Wide", [](World&) { Zeb_Wide("a text that does not fit into the string itself"); }},
        {"Zeb_Utf8", [](World&) { Zeb_Utf8(CStringW(ZEBW("a text that does not fit into the string itself"))); }},
        {"Zeb_DumpEntryID", [](World&) { Zeb_DumpEntryID("00000000C0D1A8F3"); }},
        {"Zeb_DumpEntryID",
         [](World&)
         {
             // A one-off, which has texts of its own.
             Zeb_DumpEntryID("00000000812B1FA4BEA310199D6E00DD010F5402000001906100000053004D005400500000006100400062000000");
         }},
    };
    return calls;
}

} // namespace zeb::test
