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
/// Outlook 15 has its own profiles key; all others use the key of Windows' messaging subsystem. The installed version
/// is read from "Outlook.Application\CurVer". The constructor and the operations documented so throw CZebException*
/// MAPI_E_CALL_FAILED when the registry cannot be read at all; absent values are empty. Threads: none of its own; use
/// one object from one thread.
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
    /// @return 1; or 0 when there are no more, and `name` is unchanged
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
    /// Releases the reference; exceptions are logged and ignored.
    virtual void Free();

public:
    /// @param profAdmin may be null; the caller keeps its own reference
    explicit CZebProfAdmin(IProfAdmin* profAdmin = nullptr);
    /// Shares the object of other; empty like it.
    CZebProfAdmin(const CZebProfAdmin& other);
    virtual ~CZebProfAdmin();

    /// Profile administration of the provider that Zeb_GetMAPI() has started (MAPIAdminProfiles).
    /// @throws CZebException* what MAPIAdminProfiles returned; MAPI_E_CALL_FAILED when no provider is loaded
    static CZebProfAdmin Open();

    /// The wrapped object, counted; empty when there is none. For operations that are not wrapped: create, configure
    /// and delete profiles through IProfAdmin itself.
    zeb::CComPtr<IProfAdmin> GetInterface() const { return m_profAdmin; }

    /// Adds a reference to the other's object. When it has none, this object becomes empty; the failure is logged, not
    /// thrown.
    virtual CZebProfAdmin& operator=(const CZebProfAdmin& other);
    /// Whether an object is held.
    virtual bool IsValid() const;
    /// Releases the reference.
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
