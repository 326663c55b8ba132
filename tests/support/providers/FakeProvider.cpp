// A provider library controlled by a FakeProviderControl. Its decorated exports are spelled with '_' in place of '@';
// ProviderFile puts the '@' into a copy.
#include "tests/support/providers/FakeProvider.h"

#include "platform/export.h"
#include "tests/support/providers/WabObject.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using zeb::test::FakeProviderControl;

namespace
{

FakeProviderControl* Control()
{
    const char* address = std::getenv(zeb::test::FakeProviderVariable);
    return address != nullptr && *address != '\0'
               ? reinterpret_cast<FakeProviderControl*>(static_cast<uintptr_t>(std::strtoull(address, nullptr, 10)))
               : nullptr;
}

void Trace(const char* line)
{
    const char* name = std::getenv(zeb::test::FakeProviderTraceVariable);
    if (name == nullptr || *name == '\0')
    {
        return;
    }
    if (std::FILE* file = std::fopen(name, "a"))
    {
        std::fprintf(file, "%s\n", line);
        std::fclose(file);
    }
}

bool g_hasEnded = false;

/// A real provider's objects are gone after its end: whoever calls it then crashes, sometimes.
void TraceWhenEnded()
{
    if (g_hasEnded)
    {
        Trace("called after its end");
    }
}

/// Counts loads and unloads.
struct Lifetime
{
    Lifetime()
    {
        if (FakeProviderControl* control = Control())
        {
            ++control->loads;
        }
    }
    ~Lifetime()
    {
        Trace("ended");
        g_hasEnded = true;
        FakeProviderControl* control = Control();
        if (control != nullptr && ++control->unloads == 1 && control->replaceFile != nullptr)
        {
            std::rename(control->replaceFile, control->replacedTo);
            std::rename(control->replacement, control->replaceFile);
        }
    }
} lifetime;

/// Copies texts up to the empty one that ends them.
void CopyMultiText(char* target, const char* texts)
{
    while (*texts != '\0')
    {
        const size_t size = std::strlen(texts) + 1;
        std::memcpy(target, texts, size);
        target += size;
        texts += size;
    }
    *target = '\0';
}

void Called(const char* name)
{
    TraceWhenEnded();
    if (FakeProviderControl* control = Control())
    {
        std::snprintf(control->called, sizeof control->called, "%s", name);
    }
}

template <class Interface>
HRESULT HandOut(HRESULT result, Interface* object, Interface** target)
{
    if (SUCCEEDED(result) && object != nullptr)
    {
        object->AddRef();
        *target = object;
    }
    return result;
}

/// The result of WABOpen without a control: lives until its last reference is released, and traces its releases.
class OwnWabObject : public zeb::test::WabObject
{
public:
    ULONG STDMETHODCALLTYPE Release() override
    {
        Trace("released");
        const ULONG left = WabObject::Release();
        if (left == 0)
        {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE FreeBuffer(void* block) override
    {
        TraceWhenEnded();
        return WabObject::FreeBuffer(block);
    }
};

// The objects of a host that releases nothing. The address book is only counted and released: a substitute with the
// slots of IUnknown is enough.
OwnWabObject* ownWabObject = nullptr;
OwnWabObject* ownAddressBook = nullptr;

/// In front of each block; a root's list holds the blocks allocated under it.
struct alignas(16) Block
{
    Block* next;
};

SCODE NewBlock(ULONG size, Block** block)
{
    *block = static_cast<Block*>(std::malloc(sizeof(Block) + size));
    if (*block == nullptr)
    {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    (*block)->next = nullptr;
    return S_OK;
}

} // namespace

extern "C"
{

    ZEBAPI_EXPORT HRESULT WINAPI MAPIInitialize(LPVOID init)
    {
        FakeProviderControl* control = Control();
        if (control == nullptr)
        {
            return S_OK;
        }
        ++control->initializeCalls;
        control->initVersion = static_cast<MAPIINIT_0*>(init)->ulVersion;
        control->initFlags = static_cast<MAPIINIT_0*>(init)->ulFlags;
        return control->initialize;
    }

    ZEBAPI_EXPORT void WINAPI MAPIUninitialize()
    {
        if (FakeProviderControl* control = Control())
        {
            ++control->uninitializeCalls;
        }
    }

    ZEBAPI_EXPORT HRESULT WINAPI MAPILogonEx(ULONG_PTR parent, LPTSTR name, LPTSTR password, ULONG flags,
                                             LPMAPISESSION* session)
    {
        FakeProviderControl* control = Control();
        if (control == nullptr)
        {
            return MAPI_E_LOGON_FAILED;
        }
        ++control->logonCalls;
        if (control->throwsOnLogon)
        {
            throw 42;
        }
        control->logonParent = parent;
        control->logonNamed = name != nullptr;
        std::snprintf(control->logonName, sizeof control->logonName, "%s", name != nullptr ? name : "");
        control->logonPassword = password != nullptr;
        control->logonFlags = flags;
        return HandOut(control->logon, control->session, session);
    }

    ZEBAPI_EXPORT HRESULT WINAPI MAPIAdminProfiles(ULONG flags, LPPROFADMIN* profAdmin)
    {
        FakeProviderControl* control = Control();
        if (control == nullptr)
        {
            return MAPI_E_NO_SUPPORT;
        }
        ++control->adminCalls;
        control->adminFlags = flags;
        return HandOut(control->admin, control->profAdmin, profAdmin);
    }

    ZEBAPI_EXPORT SCODE WINAPI MAPIAllocateBuffer(ULONG size, LPVOID* buffer)
    {
        Block* block = nullptr;
        const SCODE result = NewBlock(size, &block);
        if (result == S_OK)
        {
            *buffer = block + 1;
            if (FakeProviderControl* control = Control())
            {
                ++control->liveRoots;
            }
        }
        return result;
    }

    ZEBAPI_EXPORT SCODE WINAPI MAPIAllocateMore(ULONG size, LPVOID parent, LPVOID* buffer)
    {
        Block* block = nullptr;
        const SCODE result = NewBlock(size, &block);
        if (result == S_OK)
        {
            Block* root = static_cast<Block*>(parent) - 1;
            block->next = root->next;
            root->next = block;
            *buffer = block + 1;
        }
        return result;
    }

    ZEBAPI_EXPORT ULONG WINAPI MAPIFreeBuffer(LPVOID buffer)
    {
        TraceWhenEnded();
        Block* block = buffer != nullptr ? static_cast<Block*>(buffer) - 1 : nullptr;
        FakeProviderControl* control = Control();
        if (block != nullptr && control != nullptr)
        {
            --control->liveRoots;
        }
        while (block != nullptr)
        {
            Block* next = block->next;
            std::free(block);
            block = next;
        }
        return 0;
    }

    ZEBAPI_EXPORT BOOL WINAPI FGetComponentPath(LPSTR component, LPSTR qualifier, LPSTR path, DWORD size, BOOL install)
    {
        FakeProviderControl* control = Control();
        if (control == nullptr || control->componentCalls == 3)
        {
            return FALSE;
        }
        const int call = control->componentCalls++;
        std::snprintf(control->componentIds[call], sizeof control->componentIds[call], "%s", component);
        CopyMultiText(control->componentQualifiers[call], qualifier != nullptr ? qualifier : "(null)\0");
        control->componentSizes[call] = size;
        control->componentInstalls[call] = install;
        if (control->componentPaths[call] == nullptr)
        {
            // The buffer's content after a refusal must not be used as a path.
            std::memcpy(path, "junk", 5);
            return FALSE;
        }
        const size_t length = std::strlen(control->componentPaths[call]);
        std::memcpy(path, control->componentPaths[call], length < size ? length + 1 : size);
        return TRUE;
    }

    ZEBAPI_EXPORT HRESULT WINAPI WABOpen(LPADRBOOK* addressBook, LPWABOBJECT* wabObject, LPWAB_PARAM param,
                                         DWORD reserved)
    {
        FakeProviderControl* control = Control();
        if (control == nullptr)
        {
            ownWabObject = new OwnWabObject;
            ownAddressBook = new OwnWabObject;
            *wabObject = ownWabObject;
            *addressBook = reinterpret_cast<LPADRBOOK>(static_cast<IUnknown*>(ownAddressBook));
            return S_OK;
        }
        ++control->wabOpenCalls;
        control->wabParam = *param;
        control->wabReserved = reserved;
        const HRESULT given = control->handsOutOnFailure ? S_OK : control->wabOpen;
        HandOut(given, control->addressBook, addressBook);
        HandOut(given, control->wabObject, wabObject);
        return control->wabOpen;
    }

// The utility functions: each records which spelling was called.
#define UTILITY(type, name, suffix, parameters, result)                                                                \
    ZEBAPI_EXPORT type WINAPI name parameters                                                                          \
    {                                                                                                                  \
        Called(#name);                                                                                                 \
        return result;                                                                                                 \
    }                                                                                                                  \
    ZEBAPI_EXPORT type WINAPI name##_##suffix parameters                                                               \
    {                                                                                                                  \
        Called(#name "@" #suffix);                                                                                     \
        return result;                                                                                                 \
    }

    UTILITY(HRESULT, HrGetOneProp, 12, (LPMAPIPROP, ULONG, LPSPropValue*), S_OK)
    UTILITY(HRESULT, HrSetOneProp, 8, (LPMAPIPROP, LPSPropValue), S_OK)
    UTILITY(HRESULT, HrValidateIPMSubtree, 20, (LPMDB, ULONG, ULONG*, LPSPropValue*, LPMAPIERROR*), S_OK)
    UTILITY(void, FreeProws, 4, (LPSRowSet), void())
    UTILITY(HRESULT, HrQueryAllRows, 24,
            (LPMAPITABLE, LPSPropTagArray, LPSRestriction, LPSSortOrderSet, LONG, LPSRowSet*), S_OK)
    UTILITY(SCODE, PropCopyMore, 16, (LPSPropValue, LPSPropValue, ALLOCATEMORE*, LPVOID), S_OK)

#undef UTILITY

} // extern "C"
