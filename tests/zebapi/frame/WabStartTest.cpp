// Starting and stopping the Windows Address Book.
#include "tests/zebapi/frame/LibraryFixture.h"

#include "tests/support/doubles/RecordingStore.h"
#include "tests/support/providers/WabObject.h"
#include "tests/zebapi/frame/EntryPointScope.h"
#include "zebapi/MEM.h"

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

TEST_F(WabStart, OpensTheAddressBookOfTheRegisteredLibrary)
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

TEST_F(WabStart, AnInstanceThatEndsStartedReleasesEverything)
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

TEST_F(WabStart, HandsOutTheAddressBookThatItOpened)
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

TEST_F(WabStart, AnotherInstanceIsOpenedWithItsOwnWabObject)
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

TEST_F(WabStart, WithoutALibraryThereIsNoAddressBook)
{
    EXPECT_FALSE(library.GetWABAddressBook(false).IsValid());
    EXPECT_EQ(ThrownBy([this] { library.GetWABAddressBook(true); }), MAPI_E_VERSION);
}

TEST_F(WabStart, MapisUtilitiesAreNotThereAndALogonFails)
{
    StartWab();
    EXPECT_EQ(zeb::HrQueryAllRows(nullptr, nullptr, nullptr, nullptr, 0, nullptr), MAPI_E_CALL_FAILED);
    SPropValue value = {};
    EXPECT_EQ(ThrownBy([&value] { Zeb_PropCopyMore(&value, &value, nullptr); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(ThrownBy([this] { library.OpenSession(nullptr, nullptr); }), MAPI_E_CALL_FAILED);
}

TEST_F(WabStart, UnloadingWithoutAKnownSpellingLeavesTheEntryPoints)
{
    // A start that finds no provider leaves no spelling behind.
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

TEST_F(WabStart, WithALibraryThatDoesNotLoadFails)
{
    RegisterWab(TextFile("wab32.dll"));
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_CALL_FAILED);
    EXPECT_TRUE(library.WasFailed());
    ExpectNothingLoaded();
}

TEST_F(WabStart, ALibraryWithoutWabOpenIsRefusedAndUnloaded)
{
    const std::string path = RegisterWab(Library("wab32.dll", ProviderFile::Undecorated().Remove("WABOpen")));
    EXPECT_EQ(ThrownBy([this] { library.Initialize(true); }), MAPI_E_VERSION);
    EXPECT_THAT(log.Lines(), Contains(Line(1, "Failed to export WABOpen from " + path)));
    EXPECT_TRUE(library.WasFailed());
    ExpectNothingLoaded();
}

TEST_F(WabStart, AFailingWabOpenLeavesTheLibraryUntilTheNextStop)
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

TEST_F(WabStart, MayBeTriedAfterAFailedMapiStart)
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
