#include "zebapi/objects/IProp.h"

#include "qorlog/QorLog.h"
#include "zebapi/frame/Exception.h"
#include "zebapi/frame/internal/Blocks.h"
#include "zebapi/frame/internal/Calls.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/objects/internal/SaveFlags.h"
#include "zebapi/session/SESSION.h"
#include "zebapi/values/OnePROPVAL.h"
#include "zebapi/values/PROPVALArray.h"
#include "zebapi/values/TAGS.h"
#include "zebapi/values/internal/PropDump.h"
#include "zebapi/values/internal/Received.h"

#include <climits>
#include <cstdarg>
#include <memory>
#include <new>
#include <set>
#include <string>

namespace
{

constexpr ULONG FirstNamedTag = 0x80000000;
// Simple MAPI's code for "not supported"; positive, so no check treats it as a failure.
constexpr HRESULT SimpleNotSupported = 26;

bool RefusesNames(HRESULT result)
{
    return result == MAPI_E_NO_SUPPORT || result == E_ACCESSDENIED || result == SimpleNotSupported;
}

std::string BytesOf(const SBinary& binary)
{
    return std::string(reinterpret_cast<const char*>(binary.lpb), binary.cb);
}

/// Maps every name of the list to the object's tag for it.
void FillMap(CZebNameIdMap& map, const CZebNameIdHelper& names, ULONG count, const SPropTagArray& tags)
{
    try
    {
        for (ULONG i = 0; i < count && i < tags.cValues; ++i)
        {
            if (PROP_TYPE(tags.aulPropTag[i]) != PT_ERROR)
            {
                map.SetTag(names.GetTag(i, PT_NULL), tags.aulPropTag[i]);
            }
        }
    }
    catch (...)
    {
        // A partial map would count as filled, and the other names would never be queried.
        map.EmptyIdMap();
        throw;
    }
}

template <class String>
String ReadWhole(const CComPtr<IStream>& stream)
{
    using Char = typename String::XCHAR;
    STATSTG stat = {};
    ThrowIfFailed(stream->Stat(&stat, STATFLAG_NONAME));
    if (stat.cbSize.QuadPart > INT_MAX - sizeof(Char))
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    const ULONG size = stat.cbSize.LowPart;
    const int length = static_cast<int>(size / sizeof(Char));
    String text;
    Char* buffer = nullptr;
    try
    {
        buffer = text.GetBuffer(length + 1);
    }
    catch (CZebException*) // the preallocated exception for out of memory, never deleted
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    ThrowIfFailed(stream->Read(buffer, size, nullptr));
    buffer[length] = 0;
    text.ReleaseBuffer();
    return text;
}

} // namespace

CZebIProp::CZebIProp(IMAPIProp* prop)
    : m_object(prop)
{
}

CZebIProp::CZebIProp(const CZebIProp& other)
{
    CZebIProp::operator=(other);
}

CZebIProp::~CZebIProp()
{
    CZebIProp::Free();
}

IMAPIProp* CZebIProp::Prop() const
{
    return static_cast<IMAPIProp*>(m_object.Checked());
}

CComPtr<IMAPIProp> CZebIProp::GetInterface() const
{
    return CComPtr<IMAPIProp>(static_cast<IMAPIProp*>(m_object.Get()));
}

void CZebIProp::CheckIDsMap()
{
    if (m_tags.GetCount() > 0)
    {
        return;
    }
    try
    {
        IMAPIProp* const prop = Prop();
        CZebNameIdHelper names;
        const ULONG count = names;
        CZebPropTagArray tags;
        const HRESULT result = prop->GetIDsFromNames(count, names, MAPI_CREATE, &tags);
        if (result == SimpleNotSupported)
        {
            CZebException::Throw(result);
        }
        ThrowIfFailed(result, prop);
        FillMap(m_tags, names, count, *static_cast<SPropTagArray*>(tags));
    }
    catch (CZebException* exception)
    {
        if (!RefusesNames(exception->GetResult()))
        {
            throw;
        }
        exception->Delete();
        m_tags.SetTag(0, 0);
    }
}

void CZebIProp::SetWAB(CZebIProp& other)
{
    SetWAB(other.IsWAB());
}

void CZebIProp::SetWAB(bool isWAB)
{
    m_bWAB = isWAB;
}

void CZebIProp::PassWAB(bool wasWAB, CZebIProp& target)
{
    if (std::addressof(target) == this)
    {
        SetWAB(wasWAB);
    }
    else
    {
        target.SetWAB(*this);
    }
}

const GUID* CZebIProp::GetInterfaceCIID()
{
    return &IID_IMAPIProp;
}

ULONG CZebIProp::GetMAPIType()
{
    return 0;
}

bool CZebIProp::IsMAPITypeAcceptable(unsigned int type)
{
    const ULONG own = GetMAPIType();
    return own == 0 || own == type;
}

ULONG CZebIProp::GetObjectType() const
{
    CZebPropVal value;
    ThrowIfFailed(_HrGetOneProp_(Prop(), PR_OBJECT_TYPE, &value), Prop());
    return value.operator ULONG();
}

bool CZebIProp::IsWAB()
{
    return m_bWAB;
}

CZebIProp& CZebIProp::operator=(const CZebIProp& other)
{
    // Copied before freeing, because that may free `other`.
    CComPtr<IUnknown> object(other.m_object);
    const bool isWAB = other.m_bWAB;
    zeb::Guarded([&]
    {
        Free();
        m_object = object;
        if (!IsValid())
        {
            CZebException::Throw(E_NOINTERFACE);
        }
    });
    m_bWAB = isWAB;
    return *this;
}

IUnknown** CZebIProp::operator&()
{
    Free();
    return m_object.Put();
}

CZebIProp::operator CZebIProp*()
{
    return this;
}

CZebIProp::operator const CZebIProp*() const
{
    return this;
}

void CZebIProp::Free()
{
    zeb::Guarded([&] { m_object.Release(); });
    m_bWAB = false;
    m_tags.EmptyIdMap();
}

bool CZebIProp::IsValid() const
{
    return static_cast<bool>(m_object);
}

CZebNameIdMap& CZebIProp::GetTagsMap()
{
    CheckIDsMap();
    return m_tags;
}

ULONG CZebIProp::GetRealTag(ULONG tag, bool flag)
{
    if (tag < FirstNamedTag)
    {
        return tag;
    }
    CheckIDsMap();
    return m_tags.GetTag(tag, flag);
}

ULONG CZebIProp::GetNameFromTag(ULONG tag, bool flag)
{
    if (tag < FirstNamedTag)
    {
        return tag;
    }
    CheckIDsMap();
    return m_tags.GetName(tag, flag);
}

void CZebIProp::GetIDsFromNames(ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags)
{
    ThrowIfFailed(Prop()->GetIDsFromNames(count, names, flags, tags), Prop());
    zeb::RequireObject(*tags != nullptr);
}

void CZebIProp::GetNamesFromIDs(SPropTagArray** tags, GUID* set, ULONG flags, ULONG* count, MAPINAMEID*** names)
{
    ThrowIfFailed(Prop()->GetNamesFromIDs(tags, set, flags, count, names), Prop());
    zeb::RequireObject(*names != nullptr || *count == 0);
}

ULONG CZebIProp::TagOfName(MAPINAMEID& name, ULONG type, bool create)
{
    MAPINAMEID* names = &name;
    CZebPropTagArray tags;
    GetIDsFromNames(1, &names, create ? MAPI_CREATE : 0, &tags);
    if (tags.GetCount() == 1 && PROP_TYPE(tags[0]) != PT_ERROR)
    {
        return PROP_TAG(type, PROP_ID(tags[0]));
    }
    if (create)
    {
        CZebException::Throw(MAPI_E_NOT_FOUND, ZEB_FILE, ZEB_LINE, "GetNamedTag");
    }
    return 0;
}

ULONG CZebIProp::GetNamedTag(const GUID& set, LONG id, ULONG type, bool create)
{
    MAPINAMEID name = {const_cast<GUID*>(&set), MNID_ID, {}};
    name.Kind.lID = id;
    return zeb::About([id] { return zeb::NumberText("name", static_cast<ULONG>(id)); },
                      [&] { return TagOfName(name, type, create); });
}

ULONG CZebIProp::GetNamedTag(const GUID& set, const WCHAR* text, ULONG type, bool create)
{
    if (text == nullptr || *text == 0)
    {
        CZebException::Throw(MAPI_E_INVALID_PARAMETER);
    }
    MAPINAMEID name = {const_cast<GUID*>(&set), MNID_STRING, {}};
    name.Kind.lpwstrName = const_cast<WCHAR*>(text);
    return zeb::AboutName(text, [&] { return TagOfName(name, type, create); });
}

bool CZebIProp::GetNameOfTag(ULONG tag, GUID& set, LONG& id, CStringW& text)
{
    CZebPropTagArray tags;
    tags.AddOne(tag);
    SPropTagArray* list = tags;
    ULONG count = 0;
    MAPINAMEID** names = nullptr;
    zeb::AboutTag(tag, [&] { GetNamesFromIDs(&list, nullptr, 0, &count, &names); });
    const zeb::Block<MAPINAMEID*> owner(names);
    if (count == 0 || names[0] == nullptr || names[0]->lpguid == nullptr)
    {
        return false;
    }
    const bool isText = names[0]->ulKind == MNID_STRING;
    text = isText ? CStringW(names[0]->Kind.lpwstrName) : CStringW();
    id = isText ? 0 : names[0]->Kind.lID;
    set = *names[0]->lpguid;
    return true;
}

CZebBinary CZebIProp::GetEntryID()
{
    return GetBin(PR_ENTRYID);
}

CZebBinary CZebIProp::GetParentID()
{
    return GetBin(PR_PARENT_ENTRYID);
}

CStringA CZebIProp::GetStringPropA(ULONG tag)
{
    CZebPropVal value;
    const char* const operation = __func__;
    zeb::AboutTag(tag,
                  [&] { ThrowIfFailed(_HrGetOneProp_(Prop(), tag, &value), Prop(), __FILE__, __LINE__, operation); });
    return value.UseDefault(CStringA());
}

CStringW CZebIProp::GetStringPropW(ULONG tag)
{
    CZebPropVal value;
    const char* const operation = __func__;
    zeb::AboutTag(tag,
                  [&] { ThrowIfFailed(_HrGetOneProp_(Prop(), tag, &value), Prop(), __FILE__, __LINE__, operation); });
    return value.UseDefault(CStringW());
}

CStringA CZebIProp::GetStringProp(ULONG tag)
{
    return GetStringPropA(tag);
}

CComPtr<IStream> CZebIProp::OpenProperty(ULONG tag, ULONG flags)
{
    const ULONG options = (flags & MAPI_MODIFY) != 0 ? STGM_READWRITE : STGM_READ;
    IUnknown* object = nullptr;
    zeb::ThrowIfFailedAbout([tag] { return zeb::TagText(tag); },
                            Prop()->OpenProperty(tag, &IID_IStream, options, flags, &object), Prop());
    zeb::RequireObject(object != nullptr);
    return CComPtr<IStream>::Take(static_cast<IStream*>(object));
}

CStringA CZebIProp::GetLongStringA(ULONG tag)
{
    return ReadWhole<CStringA>(OpenProperty(tag, 0));
}

CStringW CZebIProp::GetLongStringW(ULONG tag)
{
    return ReadWhole<CStringW>(OpenProperty(tag, 0));
}

CStringA CZebIProp::GetLongString(ULONG tag)
{
    return GetLongStringA(tag);
}

void CZebIProp::GetPropList(SPropTagArray** out, ULONG flags)
{
    ThrowIfFailed(Prop()->GetPropList(flags, out), Prop());
}

void CZebIProp::GetAllProps(ULONG* count, SPropValue** values, ULONG flags)
{
    CZebPropTagArray list;
    try
    {
        GetPropList(&list, flags);
    }
    catch (CZebException* exception)
    {
        if (exception->GetResult() != MAPI_E_UNKNOWN_CPID)
        {
            throw;
        }
        exception->Delete();
        list.Empty();
    }
    SPropTagArray* const tags = list.IsValid() ? static_cast<SPropTagArray*>(list) : nullptr;
    GetProps(tags, count, values, 0);
}

void CZebIProp::GetProps(CZebPropValArray& result, ULONG n, ...)
{
    Prop(); // an empty wrapper leaves the result unchanged
    CZebPropTagArray tags;
    tags.Reserve(n);
    va_list args;
    va_start(args, n);
    tags.Fill(n, args);
    va_end(args);
    GetProps(static_cast<SPropTagArray*>(tags), result.CountPtr(), &result, 0);
}

void CZebIProp::GetProps(SPropTagArray* tags, ULONG* count, SPropValue** values, ULONG flags)
{
    IMAPIProp* const prop = Prop();
    if (tags != nullptr && tags->cValues == 0)
    {
        // MAPI refuses an empty list.
        *count = 0;
        *values = nullptr;
        return;
    }
    zeb::ThrowIfFailedAbout([tags] { return zeb::TagsText(tags); }, prop->GetProps(tags, flags, count, values), prop);
}

void CZebIProp::SetProps(CZebPropValArray& values, bool save, SPropProblemArray** problems)
{
    values.TruncateToExisting();
    if (values.Count() == 0)
    {
        return;
    }
    SetProps(values.GetCount(), values, problems);
    if (save)
    {
        SaveChanges(SaveFlags);
    }
}

void CZebIProp::SetProps(ULONG n, SPropValue* values, SPropProblemArray** problems)
{
    zeb::ThrowIfFailedAbout([=] { return zeb::ValuesText(n, values); }, Prop()->SetProps(n, values, problems), Prop());
}

void CZebIProp::DeleteProps(SPropTagArray* tags, SPropProblemArray** problems)
{
    zeb::ThrowIfFailedAbout([tags] { return zeb::TagsText(tags); }, Prop()->DeleteProps(tags, problems), Prop());
}

void CZebIProp::SaveChanges(ULONG flags)
{
    ThrowIfFailed(Prop()->SaveChanges(flags), Prop());
}

bool CZebIProp::MayHaveParent()
{
    const ULONG type = GetObjectType();
    if (type == 0)
    {
        return true;
    }
    if (type < MAPI_FOLDER)
    {
        return false;
    }
    if (type != MAPI_FOLDER)
    {
        return true;
    }
    CZebPropVal folderType;
    ThrowIfFailed(_HrGetOneProp_(Prop(), PR_FOLDER_TYPE, &folderType), Prop());
    return folderType.operator ULONG() != FOLDER_ROOT;
}

bool CZebIProp::IsChildOf(CZebSession& session, const SBinary& parentID, bool directOnly)
{
    if (parentID.cb == 0)
    {
        return false;
    }
    // A store with a cycle of parent folders must not cause an endless loop.
    std::set<std::string> seen;
    CZebPropObj above;
    CZebIProp* current = this;
    while (current->MayHaveParent())
    {
        const CZebBinary parent = current->GetParentID();
        if (!parent.IsValid())
        {
            return false;
        }
        if (session.CompareEntryIDs(parent, parentID))
        {
            return true;
        }
        if (directOnly || !zeb::framework::WithMemory([&] { return seen.insert(BytesOf(parent)).second; }))
        {
            return false;
        }
        session.OpenEntry(parent, above, MAPI_BEST_ACCESS);
        current = std::addressof(above);
    }
    return false;
}

void CZebIProp::DumpAllProps()
{
    static constexpr char Separator[] = "------------------";
    zeb::Guarded([&]
    {
        CZebPropValArray values;
        GetAllProps(values.CountPtr(), &values, MAPI_UNICODE);
        LLog(3, "ZebAPI", Separator);
        for (ULONG i = 0; values.IsValid() && i < values.Count(); ++i)
        {
            LLog(3, "ZebAPI", static_cast<const char*>(zeb::DumpLine(values.GetAt(i))));
        }
        LLog(3, "ZebAPI", Separator);
    });
}

CZebBinary CZebIProp::GetBin(ULONG tag)
{
    return GetBinary(tag);
}

CZebBinary CZebIProp::GetBinary(ULONG tag) const
{
    CZebPropVal value;
    const char* const operation = __func__;
    zeb::AboutTag(tag,
                  [&] { ThrowIfFailed(_HrGetOneProp_(Prop(), tag, &value), Prop(), __FILE__, __LINE__, operation); });
    return CZebBinary(zeb::Received(value));
}

HRESULT CZebIProp::_HrGetOneProp_(IMAPIProp* prop, ULONG tag, SPropValue** value) const
{
    CZebPropTagArray tags;
    tags.AddOne(tag);
    ULONG count = 0;
    const ULONG flags = PROP_TYPE(tag) == PT_UNICODE ? MAPI_UNICODE : 0;
    return prop->GetProps(tags, flags, &count, value);
}

CStringA CZebIProp::GetDisplayNameA()
{
    return GetStringPropA(GetDisplayNameTag(false));
}

CStringW CZebIProp::GetDisplayNameW()
{
    return GetStringPropW(GetDisplayNameTag(true));
}

CStringA CZebIProp::GetDisplayName()
{
    return GetStringProp(GetDisplayNameTag(false));
}

void CZebIProp::SetDisplayNameA(const char* name)
{
    CZebPropValArray values(1);
    values[GetDisplayNameTag(false)] = name;
    SetProps(values, true, nullptr);
}

void CZebIProp::SetDisplayNameW(const WCHAR* name)
{
    CZebPropValArray values(1);
    values[GetDisplayNameTag(true)] = name;
    SetProps(values, true, nullptr);
}

void CZebIProp::SetDisplayName(const char* name)
{
    SetDisplayNameA(name);
}

ULONG CZebIProp::GetDisplayNameTag(bool unicode) const
{
    return unicode ? PR_DISPLAY_NAME_W : PR_DISPLAY_NAME_A;
}
