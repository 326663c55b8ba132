// MAPI profiles: their names and which one is the default, from the registry or through MAPI.
#pragma once

#include "framework/CString.h"
#include "framework/ComPtr.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "qorth/RegKey.h"
#include "zebapi/tables/Table.h"

/// Reads the profiles' names straight from the registry; works without MAPI.
///
/// Outlook 15 keeps its profiles in a place of its own; everything else uses Windows' messaging subsystem.
/// Which one is installed is what "Outlook.Application\CurVer" says. The constructor and what is marked so
/// throw CZebException* MAPI_E_CALL_FAILED when the registry cannot be read at all; what is absent is empty.
/// Threads: none of its own; use one object from one thread.
class ZEBAPI_EXPORT CZebProfileNames
{
public:
    CZebProfileNames();
    virtual ~CZebProfileNames();
    CZebProfileNames(const CZebProfileNames&) = delete;
    CZebProfileNames& operator=(const CZebProfileNames&) = delete;

    /// Back to the first name.
    void Reset();

    /// The next name, in the registry's order.
    /// @return 1; or 0 when there are no more, and `name` is as it was
    int GetNextName(zeb::CString& name);

    /// The default profile's name; empty when none is set.
    /// @throws CZebException* MAPI_E_CALL_FAILED
    zeb::CStringA GetDefaultProfile();

    /// The key below HKEY_CURRENT_USER whose sub-keys are the profiles, as a new object would choose it.
    /// @throws CZebException* MAPI_E_CALL_FAILED
    static zeb::CStringA GetProfilesKey();

private:
    ULONG m_index = 0;
    CQorRegKey m_profiles;
};

/// Wraps MAPI's profile administration (IProfAdmin); holds one counted reference or nothing. Copies share the object.
///
/// Using an empty one raises _com_error with E_POINTER.
class ZEBAPI_EXPORT CZebProfAdmin
{
protected:
    /// Drops the reference; logs and swallows what is thrown.
    virtual void Free();

public:
    /// @param profAdmin may be null; the caller keeps its own reference
    explicit CZebProfAdmin(IProfAdmin* profAdmin = nullptr);
    CZebProfAdmin(const CZebProfAdmin& other);
    virtual ~CZebProfAdmin();

    /// Profile administration of the provider that Zeb_GetMAPI() has started (MAPIAdminProfiles).
    /// @throws CZebException* what MAPIAdminProfiles returned; MAPI_E_CALL_FAILED when no provider is loaded
    static CZebProfAdmin Open();

    /// The wrapped object, counted; empty when there is none. For the operations that are not wrapped: profiles are
    /// created, configured and deleted through IProfAdmin itself.
    zeb::CComPtr<IProfAdmin> GetInterface() const { return m_profAdmin; }

    /// Takes a reference to the other's object. When there is none, this is empty, the failure is logged and
    /// not thrown.
    virtual CZebProfAdmin& operator=(const CZebProfAdmin& other);
    virtual bool IsValid() const;
    /// Drops the reference.
    virtual void Close();

    /// The table of profiles (IProfAdmin::GetProfileTable).
    /// @throws CZebException* with the object's extended error, MAPI_E_CALL_FAILED when there is no table;
    /// _com_error E_POINTER when empty
    virtual CZebTable GetProfileTable();

    /// The display name of the first profile that is marked default in the table.
    /// @throws CZebException* MAPI_E_NOT_FOUND when none is marked, or as GetProfileTable
    virtual zeb::CStringA GetDefaultProfileName();

private:
    zeb::CComPtr<IProfAdmin> m_profAdmin;
};
