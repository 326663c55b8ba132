// A host that loads the library itself, starts MAPI or opens the Windows Address Book, and ends without stopping it.
//
// frame_unload_probe OUTPUT ZEBAPI WAB TRACE MODE
//     the library, the library of the WAB, and the file that the provider traces into
//     wab-unload    opens the address book and unloads the library
//     wab-leave     opens the address book and leaves the library loaded; a static object frees what it holds
//     leave         the same with MAPI started
#include "platform/module.h"
#include "platform/registry.h"
#include "tests/support/RegistryScope.h"
#include "zebapi/Mapiload.h"

#include <fstream>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string>

namespace
{

/// An export of the library, as each C++ ABI spells it; null when there is none.
template <class Function>
Function Find(zeb::platform::ModuleHandle module, std::initializer_list<const char*> names)
{
    for (const char* name : names)
    {
        if (void* address = zeb::platform::FindExport(module, name))
        {
            return reinterpret_cast<Function>(address);
        }
    }
    return nullptr;
}

/// The functions of the library that the probe calls.
struct Library
{
    explicit Library(zeb::platform::ModuleHandle module)
        : getMapi(Find<decltype(getMapi)>(module, {"_Z11Zeb_GetMAPIv", "?Zeb_GetMAPI@@YAAEAVCZebAPI@@XZ"}))
        , allocate(Find<decltype(allocate)>(
              module, {"_Z15Zeb_MemAllocatejPv", "_Z15Zeb_MemAllocatemPv", "?Zeb_MemAllocate@@YAPEAXKPEAX@Z"}))
        , free(Find<decltype(free)>(module, {"_Z11Zeb_MemFreePv", "?Zeb_MemFree@@YAXPEAX@Z"}))
        , freeProws(
              Find<decltype(freeProws)>(module, {"_Z13Zeb_FreeProwsP8_SRowSet", "?Zeb_FreeProws@@YAXPEAU_SRowSet@@@Z"}))
    {
    }

    CZebAPI& (*getMapi)();
    void* (*allocate)(ULONG, void*);
    void (*free)(void*);
    void (*freeProws)(LPSRowSet);
};

/// Frees in the destructor of a static object, which is older than the library: on Linux it goes after the library has
/// ended, on Windows before.
struct Holder
{
    ~Holder()
    {
        if (library)
        {
            library->free(block);
            library->freeProws(rows);
            std::ofstream(output, std::ios::app) << "freed\n";
        }
    }

    std::optional<Library> library;
    std::string output;
    void* block = nullptr;
    LPSRowSet rows = nullptr;
} g_holder;

void HoldMemory(const Library& library, const char* output)
{
    g_holder.block = library.allocate(100, nullptr);
    g_holder.rows = static_cast<LPSRowSet>(library.allocate(sizeof(SRowSet), nullptr));
    g_holder.output = output;
    g_holder.library = library;
}

std::string Contents(const char* path)
{
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

} // namespace

/// The library abandons these objects by design, including its log.
extern "C" int __lsan_is_turned_off()
{
    return 1;
}

int main(int count, char** arguments)
{
    if (count != 6)
    {
        return 2;
    }
    const std::string mode = arguments[5];
    const RegistryScope registry;
    zeb::platform::RegistryKey::Create(zeb::platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath")
        .SetStringValue("", arguments[3]);
    std::ofstream output(arguments[1], std::ios::trunc);
    const zeb::platform::ModuleHandle module = zeb::platform::LoadModule(arguments[2], 0);
    const Library library(module);
    if (library.getMapi == nullptr || library.allocate == nullptr || library.free == nullptr ||
        library.freeProws == nullptr)
    {
        output << "a function is missing\n";
        return 1;
    }
    try
    {
        library.getMapi().Initialize(mode != "leave");
        if (mode != "wab-unload")
        {
            HoldMemory(library, arguments[1]);
        }
    }
    catch (...)
    {
        output << "not started\n";
        return 1;
    }
    output << "started\n";
    if (mode != "wab-unload")
    {
        return 0;
    }
    const std::string before = Contents(arguments[4]);
    zeb::platform::UnloadModule(module);
    output << (Contents(arguments[4]) == before ? "unloaded\n" : "the provider was called\n");
    return 0;
}
