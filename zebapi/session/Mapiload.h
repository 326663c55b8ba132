// The library object: finding, loading and starting a provider, and logging on.
#pragma once

#include "framework/Atomic.h"
#include "framework/CString.h"
#include "framework/Sync.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "qorth/DllLoader.h"
#include "zebapi/constants/OfficeBitness.h"
#include "zebapi/objects/AddressBook.h"
#include "zebapi/session/Profiles.h"
#include "zebapi/session/SESSION.h"

namespace zeb
{
class LibraryObject;
}

/// The library: finds, loads and starts a MAPI provider or the Windows Address Book, and opens sessions.
/// There is one instance, created when the library is loaded: Zeb_GetMAPI().
///
/// Threads: every operation that changes or uses the loaded provider takes the object lock; the start of MAPI takes the
/// global MAPI critical section before it. Both are recursive. The flags may be read from any thread.
///
/// The start may be called again while MAPI is ready: the provider is searched and started again, and one stop undoes
/// all starts. When such a second start finds no provider, the bitness is 0 from then on and the next stop leaves the
/// entry points set although their library is unloaded: after that call nothing of MAPI except a start.
///
/// Call Uninitialize before the process ends or the library is unloaded. If a provider is still loaded at that point,
/// none of its functions is called and nothing is released (it may already have ended, and waiting for it may
/// deadlock): it stays loaded with its open objects.
///
/// Any other object changes the allocator and the entry points only while they are those that it has set itself.
///
/// Call Uninitialize before the other kind is started, and before the Windows Address Book is started again from
/// another library: a start releases the previously loaded library, but not the objects that it returned.
class ZEBAPI_EXPORT CZebAPI
{
    friend class CZebProfAdmin;
    friend class zeb::LibraryObject;

    virtual void Unload();
    virtual void InitializeWAB();
    virtual void UninitializeWAB();
    virtual void InitializeMAPI();
    virtual void UninitializeMAPI(CZebSession* session);
    virtual CZebProfAdmin GetProfAdmin();

public:
    CZebAPI();
    /// Releases the address book and unloads the provider; drops the allocator and
    /// the entry points that this object has set.
    virtual ~CZebAPI();
    CZebAPI(const CZebAPI&) = delete;
    CZebAPI& operator=(const CZebAPI&) = delete;

    /// Whether the Windows Address Book, not MAPI, is loaded.
    virtual bool IsWAB();

    /// Finds, loads and starts a provider: the Windows Address Book (`wab`) or MAPI.
    ///
    /// MAPI: Zeb_GetMapiDllPath, then MAPIInitialize with notifications on MAPI's own threads. WAB: the library named
    /// by the registry, then WABOpen. After a failure WasFailed() is true and another MAPI start is refused.
    /// @throws CZebException* MAPI_E_CALL_FAILED when there is no provider, it cannot be loaded, the registry cannot be
    /// read or WasFailed() is still set; MAPI_E_VERSION when an entry point is missing; what MAPIInitialize or WABOpen
    /// returned. _com_error when the WAB object refuses to be its own allocator
    virtual void Initialize(bool wab);

    /// Logs `session` (may be null) off, stops the provider (MAPI or WAB) and unloads it. Release all of its objects
    /// before.
    virtual void Uninitialize(CZebSession* session);

    /// Logs on (MAPILogonEx) to a profile, or with a null name to the default profile, sharing an existing session.
    /// @param parent window for the provider's dialogs; may be null
    /// @param profileName at most 1024 bytes of it are used
    /// @throws CZebException* E_POINTER before Initialize, what MAPILogonEx returned, or MAPI_E_CALL_FAILED when it
    /// returned no session; each sets WasFailed()
    virtual CZebSession OpenSession(HWND parent, const char* profileName);

    /// Like OpenSession with a name, which may have characters outside the ANSI code page (MAPILogonEx with
    /// MAPI_UNICODE). Not every provider accepts such names.
    /// @param profileName terminated; null is the default profile
    /// @throws CZebException* as OpenSession, and MAPI_E_BAD_CHARWIDTH from a provider that accepts only narrow names
    CZebSession OpenSessionW(HWND parent, const WCHAR* profileName);

    /// The default profile's name from the registry, without MAPI; empty when there is none.
    /// @throws CZebException* MAPI_E_CALL_FAILED when the registry cannot be read
    virtual zeb::CStringA GetDefaultProfileName();

    /// Whether a provider or the Windows Address Book is started.
    virtual bool WasInitialized();

    /// Whether a start or a logon has failed; only SetWasFailed(false) clears it.
    virtual bool WasFailed();
    /// Sets or clears what WasFailed returns.
    virtual void SetWasFailed(bool failed);

    /// The Windows Address Book opened by Initialize(true), or with `newInstance` another one, from a new WABOpen.
    /// @throws CZebException* MAPI_E_VERSION when no library with WABOpen is loaded, or what WABOpen returned
    virtual CZebAddressBook GetWABAddressBook(bool newInstance);

    /// The critical section that the start of MAPI takes; for hosts that serialise MAPI calls with it.
    virtual zeb::CCriticalSection* GetGlobalMAPICriticalSection();

private:
    CZebSession Logon(HWND parent, const void* profileName, ULONG flags);
    /// Whether no other object has set the allocator and the entry points.
    bool MayUnbind() const;
    void ResolveEntryPoints(const zeb::CStringA& path);
    void BindAllocator();
    [[noreturn]] void RefuseLibrary(const char* missing, const char* path);
    zeb::CComPtr<IWABObject> OpenWAB(zeb::CComPtr<IAddrBook>& addressBook);

    CDllLoader m_loader;
    zeb::framework::Atomic<bool> m_wasFailed{false};
    zeb::framework::Atomic<bool> m_initialized{false};
    zeb::framework::Atomic<bool> m_wab{false};
    EnumOfficeBitness m_bitness = OfficeBitnessNone;
    zeb::CCriticalSection m_globalMAPI;
    zeb::CCriticalSection m_lock;
    CZebAddressBook m_wabAddressBook;
};

/// The library's only instance.
ZEBAPI_EXPORT CZebAPI& Zeb_GetMAPI();

/// Searches a MAPI provider: Outlook's, the common one, the system's. @param bitness the form of the provider's export
/// names; OfficeBitnessNone when there is none
/// @return the full path or bare file name of the provider to use; empty when there is none
/// @throws CZebException* MAPI_E_CALL_FAILED when the registry cannot be read
ZEBAPI_EXPORT zeb::CStringA Zeb_GetMapiDllPath(EnumOfficeBitness& bitness);
