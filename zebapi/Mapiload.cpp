#include "zebapi/Mapiload.h"

#include "qorlog/QorLog.h"
#include "qorth/RegKey.h"
#include "qorth/System.h"
#include "zebapi/EntryPoints.h"
#include "zebapi/Exception.h"
#include "zebapi/MEM.h"

#include <cstring>

namespace
{

// Mode of CDllLoader for a provider: kept for the process's calls, no error box, dependencies from its own
// folder.
constexpr long ModeProvider = 22;

constexpr ULONG LogonFlags = MAPI_LOGON_UI | MAPI_EXTENDED | MAPI_NO_MAIL;
static_assert(LogonFlags == 0x8021, "dialogs allowed, extended errors, no spooler");
static_assert((LogonFlags | MAPI_USE_DEFAULT | MAPI_ALLOW_OTHERS) == 0x8069, "the default profile, shared");

constexpr size_t ProfileNameSize = 1024;

const zeb::EntryPointRow* LoadTable(EnumOfficeBitness bitness)
{
    return bitness == OfficeBitness32 ? zeb::DecoratedEntryPoints : zeb::UndecoratedEntryPoints;
}

CZebAPI library;

} // namespace

CZebAPI& Zeb_GetMAPI()
{
    return library;
}

CZebAPI::CZebAPI() = default;

CZebAPI::~CZebAPI()
{
    // What a host frees later, in destructors of its own static objects, must not reach the unloaded
    // provider.
    Zeb_MemUninitialize();
    for (const zeb::EntryPointRow& row : zeb::UndecoratedEntryPoints)
    {
        zeb::SetEntryPoint(row.slot, nullptr);
    }
}

bool CZebAPI::IsWAB()
{
    return m_wab;
}

bool CZebAPI::WasInitialized()
{
    return m_initialized;
}

bool CZebAPI::WasFailed()
{
    return m_wasFailed;
}

void CZebAPI::SetWasFailed(bool failed)
{
    m_wasFailed = failed;
}

CCriticalSection* CZebAPI::GetGlobalMAPICriticalSection()
{
    return &m_globalMAPI;
}

void CZebAPI::Initialize(bool wab)
{
    if (WasFailed() && !wab)
    {
        CZebException::Throw(MAPI_E_CALL_FAILED, __FILE__, __LINE__);
    }
    try
    {
        if (wab)
        {
            InitializeWAB();
        }
        else
        {
            InitializeMAPI();
        }
    }
    catch (...)
    {
        SetWasFailed(true);
        throw;
    }
}

void CZebAPI::Uninitialize(CZebSession* session)
{
    if (IsWAB())
    {
        UninitializeWAB();
    }
    else
    {
        UninitializeMAPI(session);
    }
}

void CZebAPI::InitializeMAPI()
{
    CSingleLock globalLock(&m_globalMAPI, true);
    CSingleLock objectLock(&m_lock, true);
    m_bitness = OfficeBitnessNone;
    const CStringA path = Zeb_GetMapiDllPath(m_bitness);
    if (path.IsEmpty() || m_bitness == OfficeBitnessNone)
    {
        CZebException::Throw(MAPI_E_CALL_FAILED, __FILE__, __LINE__);
    }
    if (!m_loader.Load(path, ModeProvider))
    {
        CZebException::Throw(MAPI_E_CALL_FAILED, __FILE__, __LINE__);
    }
    ResolveEntryPoints(path);
    BindAllocator();
    MAPIINIT_0 init = {};
    init.ulFlags = MAPI_MULTITHREAD_NOTIFICATIONS;
    const HRESULT result = zeb::MAPIInitialize(&init);
    if (FAILED(result))
    {
        Unload();
        CZebException::Throw(result, __FILE__, __LINE__);
    }
    m_initialized = true;
}

void CZebAPI::ResolveEntryPoints(const CStringA& path)
{
    const zeb::EntryPointRow* table = LoadTable(m_bitness);
    for (const zeb::EntryPointRow* row = table; row != table + zeb::EntryPointCount; ++row)
    {
        void* address = m_loader.GetProc(row->name);
        zeb::SetEntryPoint(row->slot, address);
        if (address == nullptr)
        {
            RefuseLibrary(row->name, path);
        }
    }
}

void CZebAPI::RefuseLibrary(const char* missing, const char* path)
{
    LLog(1, "ZebAPI", "Failed to export %s from %s", missing, path);
    Unload();
    CZebException::Throw(MAPI_E_VERSION, __FILE__, __LINE__);
}

void CZebAPI::BindAllocator()
{
    ALLOCATEBUFFER* allocateBuffer = nullptr;
    ALLOCATEMORE* allocateMore = nullptr;
    FREEBUFFER* freeBuffer = nullptr;
    if (!m_loader.GetProc("MAPIAllocateBuffer", allocateBuffer) ||
        !m_loader.GetProc("MAPIAllocateMore", allocateMore) ||
        !m_loader.GetProc("MAPIFreeBuffer", freeBuffer))
    {
        LLog(1, "ZebAPI", "Failed to export memory manager");
        Unload();
        CZebException::Throw(MAPI_E_VERSION, __FILE__, __LINE__);
    }
    Zeb_MemInitialize(allocateBuffer, allocateMore, freeBuffer);
}

void CZebAPI::UninitializeMAPI(CZebSession* session)
{
    CSingleLock objectLock(&m_lock, true);
    if (session != nullptr)
    {
        session->Logoff(0, 0, 0);
    }
    if (m_initialized)
    {
        zeb::MAPIUninitialize();
        m_initialized = false;
    }
    Unload();
}

void CZebAPI::Unload()
{
    CSingleLock objectLock(&m_lock, true);
    Zeb_MemUninitialize();
    if (m_bitness == OfficeBitness32 || m_bitness == OfficeBitness64)
    {
        const zeb::EntryPointRow* table = LoadTable(m_bitness);
        for (const zeb::EntryPointRow* row = table; row != table + zeb::EntryPointCount; ++row)
        {
            zeb::SetEntryPoint(row->slot, nullptr);
        }
    }
    m_loader.Unload();
    m_initialized = false;
}

void CZebAPI::InitializeWAB()
{
    CSingleLock objectLock(&m_lock, true);
    const CStringA path =
        CQorRegKey(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\WAB\\DLLPath", 0, 1).GetString();
    if (path.IsEmpty() || !m_loader.Load(path, ModeProvider))
    {
        CZebException::Throw(MAPI_E_CALL_FAILED, __FILE__, __LINE__);
    }
    if (m_loader.GetProc("WABOpen") == nullptr)
    {
        RefuseLibrary("WABOpen", path);
    }
    CComPtr<IWABObject> wabObject = OpenWAB(m_wabAddressBook);
    Zeb_MemInitialize(wabObject.Get());
    m_wab = true;
    m_initialized = true;
}

CComPtr<IWABObject> CZebAPI::OpenWAB(CZebAddressBook& addressBook)
{
    WABOPEN* wabOpen = nullptr;
    if (!m_loader.GetProc("WABOpen", wabOpen))
    {
        CZebException::Throw(MAPI_E_VERSION, __FILE__, __LINE__);
    }
    WAB_PARAM param = {};
    param.cbSize = sizeof param;
    param.ulFlags = WAB_ENABLE_PROFILES;
    CComPtr<IWABObject> wabObject;
    ThrowIfFailed(wabOpen(reinterpret_cast<LPADRBOOK*>(&addressBook), wabObject.Put(), &param, 0), __FILE__,
                  __LINE__);
    addressBook.SetWAB(true);
    return wabObject;
}

void CZebAPI::UninitializeWAB()
{
    CSingleLock objectLock(&m_lock, true);
    Zeb_MemInitialize(nullptr);
    m_wabAddressBook.Free();
    Unload();
    m_wab = false;
    m_initialized = false;
}

CZebAddressBook CZebAPI::GetWABAddressBook(bool newInstance)
{
    CSingleLock objectLock(&m_lock, true);
    if (!newInstance || !QorIsWinVistaorHigher())
    {
        return m_wabAddressBook;
    }
    CZebAddressBook addressBook;
    CComPtr<IWABObject> wabObject = OpenWAB(addressBook);
    addressBook.SetWABObject(wabObject.Get());
    return addressBook;
}

CZebSession CZebAPI::OpenSession(HWND parent, const char* profileName)
{
    if (profileName == nullptr)
    {
        return Logon(parent, nullptr, 0);
    }
    // A name that fills the buffer has no terminator of its own: one byte more is always zero.
    char name[ProfileNameSize + 1] = {};
    std::strncpy(name, profileName, ProfileNameSize);
    return Logon(parent, name, 0);
}

CZebSession CZebAPI::OpenSessionW(HWND parent, const WCHAR* profileName)
{
    return Logon(parent, profileName, profileName == nullptr ? 0 : MAPI_UNICODE);
}

CZebSession CZebAPI::Logon(HWND parent, const void* profileName, ULONG flags)
{
    CSingleLock objectLock(&m_lock, true);
    try
    {
        if (!m_initialized)
        {
            CZebException::Throw(E_POINTER, __FILE__, __LINE__);
        }
        flags |= LogonFlags;
        flags |= profileName != nullptr ? MAPI_NEW_SESSION : MAPI_USE_DEFAULT | MAPI_ALLOW_OTHERS;
        CComPtr<IMAPISession> session;
        // MAPI declares the name without const and as either kind of character.
        ThrowIfFailed(zeb::MAPILogonEx(reinterpret_cast<ULONG_PTR>(parent),
                                       static_cast<LPTSTR>(const_cast<void*>(profileName)), nullptr, flags,
                                       session.Put()),
                      __FILE__, __LINE__);
        return CZebSession(session.Get());
    }
    catch (...)
    {
        SetWasFailed(true);
        throw;
    }
}

CStringA CZebAPI::GetDefaultProfileName()
{
    return CZebProfileNames().GetDefaultProfile();
}

CZebProfAdmin CZebAPI::GetProfAdmin()
{
    CSingleLock objectLock(&m_lock, true);
    CComPtr<IProfAdmin> profAdmin;
    ThrowIfFailed(zeb::MAPIAdminProfiles(0, profAdmin.Put()), __FILE__, __LINE__);
    return CZebProfAdmin(profAdmin.Get());
}
