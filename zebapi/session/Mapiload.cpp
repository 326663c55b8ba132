#include "zebapi/session/Mapiload.h"

#include "platform/module.h"
#include "platform/text.h"
#include "qorlog/QorLog.h"
#include "qorth/System.h"
#include "zebapi/frame/Exception.h"
#include "zebapi/frame/MEM.h"
#include "zebapi/frame/internal/Calls.h"
#include "zebapi/frame/internal/EntryPoints.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/search/ProviderSearch.h"
#include "zebapi/search/Registry.h"
#include "zebapi/tables/internal/Locks.h"

#include <array>
#include <cstring>
#include <new>

namespace
{

// Mode of CDllLoader for a provider: kept for the process's calls, no error box, dependencies from its own folder.
constexpr long ModeProvider = 22;

constexpr ULONG LogonFlags = MAPI_LOGON_UI | MAPI_EXTENDED | MAPI_NO_MAIL;
static_assert(LogonFlags == 0x8021, "dialogs allowed, extended errors, no spooler");
static_assert((LogonFlags | MAPI_USE_DEFAULT | MAPI_ALLOW_OTHERS) == 0x8069, "the default profile, shared");

constexpr size_t ProfileNameSize = 1024;

const zeb::EntryPointRow* LoadTable(EnumOfficeBitness bitness)
{
    return bitness == OfficeBitness32 ? zeb::DecoratedEntryPoints : zeb::UndecoratedEntryPoints;
}

/// The object that has set the allocator and the entry points; null when there is none.
std::atomic<const CZebAPI*> g_boundBy{nullptr};

void ForgetEntryPoints()
{
    for (const zeb::EntryPointRow& row : zeb::UndecoratedEntryPoints)
    {
        zeb::SetEntryPoint(row.slot, nullptr);
    }
}

} // namespace

namespace zeb
{

/// The library's only object, in static memory: it is not destroyed while a provider is still loaded. In that case
/// either the process is ending and the provider's own objects are already destroyed, or this library is being unloaded
/// and the provider's threads would wait for the loader lock.
class LibraryObject
{
public:
    LibraryObject() { new (m_memory) CZebAPI; }
    ~LibraryObject()
    {
        // Memory that a host frees later, in destructors of static objects, must not reach the provider.
        ForgetEntryPoints();
        if (Get().m_loader.IsEmpty())
        {
            Zeb_MemUninitialize();
            Get().~CZebAPI();
        }
        else
        {
            AbandonMem();
        }
    }
    LibraryObject(const LibraryObject&) = delete;
    LibraryObject& operator=(const LibraryObject&) = delete;

    CZebAPI& Get() { return *std::launder(reinterpret_cast<CZebAPI*>(m_memory)); }

private:
    alignas(CZebAPI) unsigned char m_memory[sizeof(CZebAPI)];
};

} // namespace zeb

namespace
{

zeb::LibraryObject g_library;

} // namespace

CZebAPI& Zeb_GetMAPI()
{
    return g_library.Get();
}

CZebAPI::CZebAPI() = default;

CZebAPI::~CZebAPI()
{
    if (g_boundBy == this)
    {
        Zeb_MemUninitialize();
        ForgetEntryPoints();
        g_boundBy = nullptr;
    }
}

bool CZebAPI::MayUnbind() const
{
    return g_boundBy == this || g_boundBy == nullptr;
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
        CZebException::Throw(MAPI_E_CALL_FAILED);
    }
    try
    {
        zeb::framework::WithMemory([&] { wab ? InitializeWAB() : InitializeMAPI(); });
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
    const zeb::OrderedLock<zeb::lockorder::Start> globalLock(m_globalMAPI);
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
    m_bitness = OfficeBitnessNone;
    const CStringA path = Zeb_GetMapiDllPath(m_bitness);
    if (path.IsEmpty() || m_bitness == OfficeBitnessNone)
    {
        CZebException::Throw(MAPI_E_CALL_FAILED);
    }
    if (!m_loader.Load(path, ModeProvider))
    {
        zeb::ThrowAbout([&] { return zeb::NameText(path.GetString()); }, MAPI_E_CALL_FAILED);
    }
    ResolveEntryPoints(path);
    BindAllocator();
    MAPIINIT_0 init = {};
    init.ulFlags = MAPI_MULTITHREAD_NOTIFICATIONS;
    const HRESULT result = zeb::MAPIInitialize(&init);
    if (FAILED(result))
    {
        Unload();
        CZebException::Throw(result);
    }
    m_initialized = true;
}

void CZebAPI::ResolveEntryPoints(const CStringA& path)
{
    const zeb::EntryPointRow* table = LoadTable(m_bitness);
    std::array<void*, zeb::EntryPointCount> addresses = {};
    for (size_t i = 0; i < addresses.size(); ++i)
    {
        addresses[i] = m_loader.GetProc(table[i].name);
        if (addresses[i] == nullptr)
        {
            RefuseLibrary(table[i].name, path);
        }
    }
    g_boundBy = this;
    for (size_t i = 0; i < addresses.size(); ++i)
    {
        zeb::SetEntryPoint(table[i].slot, addresses[i]);
    }
}

void CZebAPI::RefuseLibrary(const char* missing, const char* path)
{
    LLog(1, "ZebAPI", "Failed to export %s from %s", missing, path);
    Unload();
    zeb::ThrowAbout([&] { return CStringA(missing) + " of " + zeb::NameText(path); }, MAPI_E_VERSION);
}

void CZebAPI::BindAllocator()
{
    ALLOCATEBUFFER* allocateBuffer = nullptr;
    ALLOCATEMORE* allocateMore = nullptr;
    FREEBUFFER* freeBuffer = nullptr;
    if (!m_loader.GetProc("MAPIAllocateBuffer", allocateBuffer) ||
        !m_loader.GetProc("MAPIAllocateMore", allocateMore) || !m_loader.GetProc("MAPIFreeBuffer", freeBuffer))
    {
        LLog(1, "ZebAPI", "Failed to export memory manager");
        Unload();
        CZebException::Throw(MAPI_E_VERSION);
    }
    Zeb_MemInitialize(allocateBuffer, allocateMore, freeBuffer);
}

void CZebAPI::UninitializeMAPI(CZebSession* session)
{
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
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
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
    if (MayUnbind())
    {
        Zeb_MemUninitialize();
        if (m_bitness == OfficeBitness32 || m_bitness == OfficeBitness64)
        {
            ForgetEntryPoints();
        }
        g_boundBy = nullptr;
    }
    m_loader.Unload();
    m_initialized = false;
}

void CZebAPI::InitializeWAB()
{
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
    const CStringA path = zeb::OpenRegistry(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\WAB\\DLLPath").GetString();
    if (!zeb::platform::IsBareOrAbsolutePath(path.GetString()) || !m_loader.Load(path, ModeProvider))
    {
        zeb::ThrowAbout([&] { return zeb::NameText(path.GetString()); }, MAPI_E_CALL_FAILED);
    }
    if (m_loader.GetProc("WABOpen") == nullptr)
    {
        RefuseLibrary("WABOpen", path);
    }
    CComPtr<IAddrBook> addressBook;
    CComPtr<IWABObject> wabObject = OpenWAB(addressBook);
    g_boundBy = this;
    Zeb_MemInitialize(wabObject.Get());
    // Nothing can fail from here on: UninitializeWAB releases a stored address book.
    *reinterpret_cast<LPADRBOOK*>(&m_wabAddressBook) = addressBook.Detach();
    m_wabAddressBook.SetWAB(true);
    m_wab = true;
    m_initialized = true;
}

CComPtr<IWABObject> CZebAPI::OpenWAB(CComPtr<IAddrBook>& addressBook)
{
    WABOPEN* wabOpen = nullptr;
    if (!m_loader.GetProc("WABOpen", wabOpen))
    {
        CZebException::Throw(MAPI_E_VERSION);
    }
    WAB_PARAM param = {};
    param.cbSize = sizeof param;
    param.ulFlags = WAB_ENABLE_PROFILES;
    CComPtr<IWABObject> wabObject;
    ThrowIfFailed(wabOpen(addressBook.Put(), wabObject.Put(), &param, 0));
    zeb::RequireObject(addressBook && wabObject);
    return wabObject;
}

void CZebAPI::UninitializeWAB()
{
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
    if (MayUnbind())
    {
        Zeb_MemInitialize(nullptr);
    }
    m_wabAddressBook.Free();
    Unload();
    m_wab = false;
    m_initialized = false;
}

CZebAddressBook CZebAPI::GetWABAddressBook(bool newInstance)
{
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
    if (!newInstance || !QorIsWinVistaorHigher())
    {
        return m_wabAddressBook;
    }
    CComPtr<IAddrBook> opened;
    CComPtr<IWABObject> wabObject = OpenWAB(opened);
    CZebAddressBook addressBook(opened.Get());
    addressBook.SetWAB(true);
    addressBook.SetWABObject(wabObject.Get());
    return addressBook;
}

CZebSession CZebAPI::OpenSession(HWND parent, const char* profileName)
{
    if (profileName == nullptr)
    {
        return Logon(parent, nullptr, 0);
    }
    // A name that fills the buffer has no terminator: one extra byte is always zero.
    char name[ProfileNameSize + 1] = {};
    // Whole characters only.
    std::memcpy(name, profileName, zeb::platform::NarrowPrefix(profileName, std::strlen(profileName), ProfileNameSize));
    return zeb::AboutName(name, [&] { return Logon(parent, name, 0); });
}

CZebSession CZebAPI::OpenSessionW(HWND parent, const WCHAR* profileName)
{
    return Logon(parent, profileName, profileName == nullptr ? 0 : MAPI_UNICODE);
}

CZebSession CZebAPI::Logon(HWND parent, const void* profileName, ULONG flags)
{
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
    try
    {
        if (!m_initialized)
        {
            CZebException::Throw(E_POINTER, __FILE__, __LINE__, "OpenSession");
        }
        flags |= LogonFlags;
        flags |= profileName != nullptr ? MAPI_NEW_SESSION : MAPI_USE_DEFAULT | MAPI_ALLOW_OTHERS;
        CComPtr<IMAPISession> session;
        // MAPI declares the name without const, for both character types.
        ThrowIfFailed(zeb::MAPILogonEx(reinterpret_cast<ULONG_PTR>(parent),
                                       static_cast<LPTSTR>(const_cast<void*>(profileName)), nullptr, flags,
                                       session.Put()),
                      __FILE__, __LINE__, "OpenSession");
        zeb::RequireObject(static_cast<bool>(session), __FILE__, __LINE__, "OpenSession");
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
    const zeb::OrderedLock<zeb::lockorder::Api> objectLock(m_lock);
    CComPtr<IProfAdmin> profAdmin;
    ThrowIfFailed(zeb::MAPIAdminProfiles(0, profAdmin.Put()));
    zeb::RequireObject(static_cast<bool>(profAdmin));
    return CZebProfAdmin(profAdmin.Get());
}

CStringA Zeb_GetMapiDllPath(EnumOfficeBitness& bitness)
{
    const zeb::ProviderReport report = zeb::framework::WithMemory([] { return zeb::SearchProvider(); });
    bitness = report.bitness;
    return CStringA(report.path);
}
