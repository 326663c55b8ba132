// A library that has the provider's address book open and lets go of it when it is unloaded, or when its process ends.
#include "platform/export.h"
#include "platform/mapi.h"
#include "platform/module.h"

#include <string>

namespace
{

class Sink final : public IMAPIAdviseSink
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, LPVOID*) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    ULONG STDMETHODCALLTYPE OnNotify(ULONG, LPNOTIFICATION) override { return 0; }
};

Sink g_sink;

struct Held
{
    zeb::platform::ModuleHandle provider = nullptr;
    IAddrBook* book = nullptr;
    IWABObject* wab = nullptr;
    IMAPITable* table = nullptr;
    bool abandoned = false; ///< the provider is gone, and what it gave with it

    ~Held()
    {
        if (abandoned)
        {
            return;
        }
        if (table)
        {
            table->Release();
        }
        if (book)
        {
            book->Release();
        }
        if (wab)
        {
            wab->Release();
        }
        if (provider)
        {
            zeb::platform::UnloadModule(provider);
        }
    }
};

Held g_held;

/// Opens the table of the address book's containers, or of what is in the first of them.
HRESULT OpenTable(IAddrBook& book, IMAPITable** table)
{
    ULONG size = 0;
    ENTRYID* id = nullptr;
    HRESULT result = book.GetPAB(&size, &id);
    ULONG type = 0;
    IUnknown* container = nullptr;
    if (SUCCEEDED(result))
    {
        result = book.OpenEntry(size, id, nullptr, 0, &type, &container);
    }
    if (SUCCEEDED(result))
    {
        result = static_cast<IABContainer*>(container)->GetContentsTable(0, table);
    }
    if (container)
    {
        container->Release();
    }
    g_held.wab->FreeBuffer(id);
    return result;
}

} // namespace

/// Opens the store file's address book and has the provider look for changes of it on its own thread.
/// @return the step that failed, or 0
extern "C" ZEBAPI_EXPORT int HoldWab(const char* library, const char* file)
{
    using Open = HRESULT(STDMETHODCALLTYPE*)(LPADRBOOK*, LPWABOBJECT*, LPWAB_PARAM, DWORD);
    g_held.provider = zeb::platform::LoadModule(library, 0);
    if (!g_held.provider)
    {
        return 1;
    }
    const auto open = reinterpret_cast<Open>(zeb::platform::FindExport(g_held.provider, "WABOpen"));
    WAB_PARAM param{};
    param.cbSize = sizeof(param);
    param.szFileName = const_cast<char*>(file);
    if (!open || FAILED(open(&g_held.book, &g_held.wab, &param, 0)))
    {
        return 2;
    }
    if (FAILED(OpenTable(*g_held.book, &g_held.table)))
    {
        return 3;
    }
    ULONG_PTR connection = 0;
    const HRESULT result = g_held.table->Advise(fnevTableModified, &g_sink, &connection);
    return FAILED(result) ? 4 : 0;
}

/// Unloads the provider with everything open.
extern "C" ZEBAPI_EXPORT void AbandonWab()
{
    g_held.abandoned = true;
    zeb::platform::UnloadModule(g_held.provider);
}
