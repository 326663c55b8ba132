#include "zebapi/session/Profiles.h"

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/internal/Calls.h"
#include "zebapi/search/Registry.h"
#include "zebapi/session/Mapiload.h"
#include "zebapi/tables/RowSet.h"

namespace
{

constexpr char Outlook15Key[] = "Software\\Microsoft\\Office\\15.0\\Outlook";
constexpr char Outlook15ProfilesKey[] = "Software\\Microsoft\\Office\\15.0\\Outlook\\Profiles";
constexpr char SubsystemProfilesKey[] =
    "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";

bool IsOutlook15()
{
    return zeb::OpenRegistry(HKEY_CLASSES_ROOT, "Outlook.Application\\CurVer").GetString().Find("15") >= 0;
}

/// A mark of another type is ignored.
bool IsDefaultProfile(const CZebRow& row)
{
    if (!row.IsExists(PR_DEFAULT_PROFILE))
    {
        return false;
    }
    const CZebOnePropVal value = row[PR_DEFAULT_PROFILE];
    return value.GetType() == PT_BOOLEAN && value.operator bool();
}

} // namespace

CZebProfileNames::CZebProfileNames()
    : m_profiles(zeb::OpenRegistry(HKEY_CURRENT_USER, GetProfilesKey()))
{
    Reset();
}

CZebProfileNames::~CZebProfileNames() = default;

void CZebProfileNames::Reset()
{
    m_index = 0;
}

int CZebProfileNames::GetNextName(CString& name)
{
    CString next;
    if (!m_profiles.EnumKey(m_index, next))
    {
        return 0;
    }
    name = next;
    ++m_index;
    return 1;
}

CStringA CZebProfileNames::GetDefaultProfile()
{
    const CQorRegKey key = zeb::OpenRegistry(HKEY_CURRENT_USER, IsOutlook15() ? Outlook15Key : SubsystemProfilesKey);
    CStringA name;
    key.GetString(name, "DefaultProfile", 1);
    return name;
}

CStringA CZebProfileNames::GetProfilesKey()
{
    return IsOutlook15() ? Outlook15ProfilesKey : SubsystemProfilesKey;
}

CZebProfAdmin::CZebProfAdmin(IProfAdmin* profAdmin)
    : m_profAdmin(profAdmin)
{
}

CZebProfAdmin::CZebProfAdmin(const CZebProfAdmin& other) = default;

CZebProfAdmin::~CZebProfAdmin()
{
    Free();
}

CZebProfAdmin CZebProfAdmin::Open()
{
    return Zeb_GetMAPI().GetProfAdmin();
}

CZebProfAdmin& CZebProfAdmin::operator=(const CZebProfAdmin& other)
{
    zeb::Guarded([this, &other]
    {
        CComPtr<IProfAdmin> profAdmin;
        if (other.m_profAdmin)
        {
            other.m_profAdmin.QueryInterface(IID_IProfAdmin, profAdmin);
        }
        m_profAdmin = profAdmin;
        if (!IsValid())
        {
            CZebException::Throw(MAPI_E_INTERFACE_NOT_SUPPORTED);
        }
    });
    return *this;
}

bool CZebProfAdmin::IsValid() const
{
    return static_cast<bool>(m_profAdmin);
}

void CZebProfAdmin::Close()
{
    Free();
}

void CZebProfAdmin::Free()
{
    zeb::Guarded([this] { m_profAdmin.Release(); });
}

CZebTable CZebProfAdmin::GetProfileTable()
{
    CComPtr<IMAPITable> table;
    ThrowIfFailed(m_profAdmin->GetProfileTable(0, table.Put()), m_profAdmin);
    zeb::RequireObject(static_cast<bool>(table));
    return CZebTable(table.Get());
}

CStringA CZebProfAdmin::GetDefaultProfileName()
{
    CZebRowSet rows;
    GetProfileTable().QueryRows(&rows, 0, nullptr, nullptr);
    const ULONG count = rows.IsValid() ? rows.Count() : 0;
    for (ULONG i = 0; i < count; ++i)
    {
        const CZebRow row = rows[i];
        if (IsDefaultProfile(row))
        {
            return row[PR_DISPLAY_NAME_A];
        }
    }
    CZebException::Throw(MAPI_E_NOT_FOUND);
}
