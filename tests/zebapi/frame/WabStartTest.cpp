// Starting and stopping the Windows Address Book.
#include "tests/zebapi/frame/LibraryFixture.h"

#include "tests/support/CurrentFolder.h"
#include "tests/support/FailingNew.h"
#include "tests/support/doubles/RecordingStore.h"
#include "tests/support/providers/WabObject.h"
#include "tests/zebapi/frame/EntryPointScope.h"
#include "zebapi/MEM.h"

#include <optional>

namespace zeb::test
{

namespace
{

using ::testing::Contains;
using ::testing::StartsWith;

HRESULT WINAPI AnswerBusy(LPMAPIPROP, LPSPropValue)
{
    return MAPI_E_BUSY;
}

class WabStart : public LibraryFixture
{
protected:
    WabStart()
    {
        provider.addressBook = &book;
        provider.wabObject = &wab;
    }
    ~WabStart() override
    {
        library.Uninitialize(nullptr);
        EXPECT_EQ(wab.references, 1);
    }
    std::string RegisterWab(const std::string& path)
    {
        SetRegistry(platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath", "", path);
        return path;
    }
    void StartWab()
    {
        RegisterWab(Library("wab32.dll", ProviderFile::Undecorated()));
        library.Initialize(true);
    }

    Journal journal;
    RecordingAddrBook book{journal};
    WabObject wab;
};

} // namespace

TEST_F(WabStart, OpensTheRegisteredLibrarysAddressBook)
{
    StartWab();
    EXPECT_TRUE(library.IsWAB());
    EXPECT_TRUE(library.WasInitialized());
    EXPECT_FALSE(library.WasFailed());
    EXPECT_EQ(provider.wabOpenCalls, 1);
    EXPECT_EQ(provider.wabParam.cbSize, 48u);
    EXPECT_EQ(provider.wabParam.hwnd, nullptr);
    EXPECT_EQ(provider.wabParam.szFileName, nullptr);
    EXPECT_EQ(provider.wabParam.ulFlags, 0x00400000u);
    EXPECT_EQ(provider.wabParam.guidPSExt, GUID());
    EXPECT_EQ(provider.wabReserved, 0u);
    EXPECT_EQ(provider.initializeCalls, 0);
    EXPECT_EQ(log.CountBeginning("Checking"), 0u) << "no MAPI provider is looked for";
}

TEST_F(WabStart, ItsObjectAllocates)
{
    StartWab();
    EXPECT_EQ(wab.references, 2) << "the binding's reference";
    Zeb_MemFree(Zeb_MemAllocate(8, nullptr));
    EXPECT_EQ(wab.allocations, 1);
    EXPECT_EQ(wab.frees, 1);
}

TEST_F(WabStart, StoppingReleasesEverything)
{
    StartWab();
    library.Uninitialize(nullptr);
    EXPECT_FALSE(library.IsWAB());
    EXPECT_EQ(wab.references, 1);
    EXPECT_EQ(book.References(), 0u);
    EXPECT_EQ(provider.uninitializeCalls, 0);
    ExpectNothingLoaded();
}

TEST_F(WabStart, AnEndingInstanceReleasesEverything)
{
    RegisterWab(Library("wab32.dll", ProviderFile::Undecorated()));
    {
        CZebAPI instance;
        instance.Initialize(true);
        EXPECT_EQ(wab.references, 2);
        EXPECT_EQ(book.References(), 1u);
    }
    EXPECT_EQ(wab.references, 1);
    EXPECT_EQ(book.References(), 0u);
    ExpectNothingLoaded();
}

TEST_F(WabStart, HandsOutItsOpenAddressBook)
{
    StartWab();
    {
        CZebAddressBook first = library.GetWABAddressBook(false);
        EXPECT_TRUE(first.IsValid());
        EXPECT_TRUE(first.IsWAB());
        EXPECT_EQ(provider.wabOpenCalls, 1);
    }
    EXPECT_EQ(wab.references, 2);
}

TEST_F(WabStart, AnEarlierInstanceLeavesTheLatersMemory)
{
    RegisterWab(Library("wab32.dll", ProviderFile::Undecorated()));
    CZebAPI earlier;
    earlier.Initialize(true);
    library.Initialize(true);
    earlier.Uninitialize(nullptr);
    const int before = wab.references;
    void* const block = Zeb_MemAllocate(8, nullptr);
    EXPECT_NE(block, nullptr) << "the later instance's allocator is still bound";
    Zeb_MemFree(block);
    EXPECT_EQ(wab.references, before);
}

TEST_F(WabStart, AnotherInstanceHasItsOwnObject)
{
    StartWab();
    {
        CZebAddressBook another = library.GetWABAddressBook(true);
        EXPECT_TRUE(another.IsValid());
        EXPECT_TRUE(another.IsWAB());
        EXPECT_EQ(provider.wabOpenCalls, 2);
        EXPECT_EQ(provider.wabParam.cbSize, 48u);
        EXPECT_EQ(provider.wabParam.ulFlags, 0x00400000u);
        EXPECT_EQ(wab.references, 3) << "the new address book keeps its WAB object";
    }
    EXPECT_EQ(wab.references, 2);
    provider.wabOpen = MAPI_E_NO_ACCESS;
    EXPECT_EQ(ThrownBy([this] { library.GetWABAddressBook(true); }), MAPI_E_NO_ACCESS);
}

TEST_F(WabStart, WithoutALibraryHasNoBook)
{
    EXPECT_FALSE(library.GetWABAddressBook(false).IsValid());
    EXPECT_EQ(ThrownBy([this] { library.GetWABAddressBook(true); }), MAPI_E_VERSION);
}

TEST_F(WabStart, MapiUtilitiesAndLogonFail)
{
    StartWab();
    EXPECT_EQ(zeb::HrQueryAllRows(nullptr, nullptr, nullptr, nullptr, 0, nullptr), MAPI_E_CALL_FAILED);
    SPropValue value = {};
    EXPECT_EQ(ThrownBy([&value] { Zeb_PropCopyMore(&value, &value, nullptr); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(ThrownBy([this] { library.OpenSession(nullptr, nullptr); }), MAPI_E_CALL_FAILED);
}

TEST_F(WabStart, UnknownSpellingLeavesTheEntryPoints)
{
    // A start without a provider leaves no bitness set.
    ThrownBy([this] { library.Initialize(false); });
    StartWab();
    EntryPointScope scope(EntryPoint::HrSetOneProp, reinterpret_cast<void*>(&AnswerBusy));
    library.Uninitialize(nullptr);
    EXPECT_EQ(zeb::HrSetOneProp(nullptr, nullptr), MAPI_E_BUSY);
}

TEST_F(WabStart, WithoutARegisteredLibraryFails)
{
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_CALL_FAILED);
    EXPECT_TRUE(library.WasFailed());
    EXPECT_FALSE(library.IsWAB());
    ExpectNothingLoaded();
}

TEST_F(WabStart, WithAnUnloadableLibraryFails)
{
    RegisterWab(TextFile("wab32.dll"));
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_CALL_FAILED);
    EXPECT_TRUE(library.WasFailed());
    ExpectNothingLoaded();
}

TEST_F(WabStart, ALibraryNeedsWabOpen)
{
    const std::string path = RegisterWab(Library("wab32.dll", ProviderFile::Undecorated().Remove("WABOpen")));
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_VERSION);
    EXPECT_THAT(log.Lines(), Contains(Line(1, "Failed to export WABOpen from " + path)));
    EXPECT_TRUE(library.WasFailed());
    ExpectNothingLoaded();
}

TEST_F(WabStart, FailedWabOpenKeepsTheLibrary)
{
    provider.wabOpen = MAPI_E_NOT_FOUND;
    RegisterWab(Library("wab32.dll", ProviderFile::Undecorated()));
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_NOT_FOUND);
    EXPECT_TRUE(library.WasFailed());
    EXPECT_FALSE(library.WasInitialized());
    EXPECT_FALSE(library.IsWAB());
    EXPECT_EQ(provider.loads - provider.unloads, 1);
    library.Uninitialize(nullptr);
    EXPECT_EQ(provider.uninitializeCalls, 0);
    ExpectNothingLoaded();
}

TEST_F(WabStart, FailedWabOpensObjectsAreReleased)
{
    provider.wabOpen = MAPI_E_NOT_FOUND;
    provider.handsOutOnFailure = true;
    RegisterWab(Library("wab32.dll", ProviderFile::Undecorated()));
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(book.References(), 0u);
    EXPECT_EQ(wab.references, 1);
    EXPECT_FALSE(library.GetWABAddressBook(false).IsValid());
}

TEST_F(WabStart, ARefusingAllocatorLeavesNoBook)
{
    wab.answer = E_FAIL;
    RegisterWab(Library("wab32.dll", ProviderFile::Undecorated()));
    EXPECT_EQ(ComErrorThrownBy([this] { library.Initialize(true); }), E_FAIL);
    EXPECT_TRUE(library.WasFailed());
    EXPECT_FALSE(library.WasInitialized());
    EXPECT_EQ(book.References(), 0u);
    EXPECT_EQ(wab.references, 1);
    EXPECT_FALSE(library.GetWABAddressBook(false).IsValid());
    library.Uninitialize(nullptr);
    ExpectNothingLoaded();
    wab.answer = S_OK;
    library.Initialize(true);
    EXPECT_EQ(book.References(), 1u);
}

TEST_F(WabStart, SuccessWithoutAnObjectFails)
{
    RegisterWab(Library("wab32.dll", ProviderFile::Undecorated()));
    provider.addressBook = nullptr;
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_CALL_FAILED);
    EXPECT_FALSE(library.WasInitialized());
    provider.addressBook = &book;
    provider.wabObject = nullptr;
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(book.References(), 0u);
    provider.wabObject = &wab;
    library.Initialize(true);
    provider.addressBook = nullptr;
    EXPECT_EQ(ThrownBy([this] { library.GetWABAddressBook(true); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(wab.references, 2) << "the binding's";
}

TEST_F(WabStart, VariablesInThePathAreExpanded)
{
    Library("wab32.dll", ProviderFile::Undecorated());
    const EnvironmentScope variable("ZEB_TEST_FOLDER", folder.Path());
    RegistryScope::SetExpandable(platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath", "",
                                 "%ZEB_TEST_FOLDER%\\wab32.dll");
    library.Initialize(true);
    EXPECT_TRUE(library.IsWAB());
}

TEST_F(WabStart, ARelativeLibraryIsNotLoaded)
{
    Library("sub/wab32.dll", ProviderFile::Undecorated());
    const CurrentFolder here(folder.Path());
    for (const char* path : {"sub\\wab32.dll", "sub/wab32.dll", ".\\sub\\wab32.dll"})
    {
        RegisterWab(path);
        EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_CALL_FAILED) << path;
        EXPECT_EQ(provider.loads, 0) << path;
    }
    // What stays unexpanded is a folder's name.
    RegistryScope::SetExpandable(platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath", "",
                                 "%ZEB_TEST_NONE%\\wab32.dll");
    Library("%ZEB_TEST_NONE%/wab32.dll", ProviderFile::Undecorated());
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(provider.loads, 0);
}

TEST_F(WabStart, AnyExceptionIsAFailedStart)
{
    StartWab();
    library.Uninitialize(nullptr);
    int failures = 0;
    for (int after = 0; after < 10000; ++after)
    {
        library.SetWasFailed(false);
        bool failed = false;
        std::optional<FailingNew> failing;
        failing.emplace(after, true);
        try
        {
            library.Initialize(true);
        }
        catch (CZebException* exception)
        {
            exception->Delete();
            failed = true;
        }
        const bool wasShort = failing->HasFailed();
        failing.reset();
        EXPECT_EQ(library.WasFailed(), failed) << after;
        library.Uninitialize(nullptr);
        EXPECT_EQ(book.References(), 0u) << after;
        failures += failed ? 1 : 0;
        if (!wasShort)
        {
            EXPECT_FALSE(failed) << after;
            EXPECT_GT(failures, 3) << "a line of the log is lost, and nothing else, where there is no memory for it";
            return;
        }
    }
    FAIL() << "never had enough memory";
}

TEST_F(WabStart, MayFollowAFailedMapiStart)
{
    provider.initialize = MAPI_E_CALL_FAILED;
    Install(ProviderFile::Undecorated());
    ThrownBy([this] { library.Initialize(false); });
    EXPECT_TRUE(library.WasFailed());
    StartWab();
    EXPECT_TRUE(library.IsWAB());
    EXPECT_TRUE(library.WasFailed()) << "only the host takes it back";
}

} // namespace zeb::test
