// Starting and stopping MAPI.
#include "tests/zebapi/frame/LibraryFixture.h"

#include "qorth/DllLoader.h"
#include "tests/support/FailingNew.h"
#include "zebapi/MEM.h"

#include <cstdio>
#include <functional>
#include <future>
#include <new>
#include <optional>

namespace zeb::test
{

namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

using MapiStart = LibraryFixture;

/// Calls one of the utility entry points; what the provider wrote down says which.
std::string Reached(const FakeProviderControl& provider, EntryPoint entry)
{
    switch (entry)
    {
    case EntryPoint::HrGetOneProp:
        zeb::HrGetOneProp(nullptr, 0, nullptr);
        break;
    case EntryPoint::HrSetOneProp:
        zeb::HrSetOneProp(nullptr, nullptr);
        break;
    case EntryPoint::HrValidateIPMSubtree:
        zeb::HrValidateIPMSubtree(nullptr, 0, nullptr, nullptr, nullptr);
        break;
    case EntryPoint::FreeProws:
        zeb::FreeProws(nullptr);
        break;
    case EntryPoint::HrQueryAllRows:
        zeb::HrQueryAllRows(nullptr, nullptr, nullptr, nullptr, 0, nullptr);
        break;
    case EntryPoint::PropCopyMore:
        zeb::PropCopyMore(nullptr, nullptr, nullptr, nullptr);
        break;
    default:
        return "not a utility";
    }
    return provider.called;
}

class MissingAtLoad : public LibraryFixture, public ::testing::WithParamInterface<std::tuple<int, EnumOfficeBitness>>
{
protected:
    static ProviderFile Good(EnumOfficeBitness bitness)
    {
        return bitness == OfficeBitness32 ? ProviderFile::Decorated() : ProviderFile::Undecorated();
    }
};

class AllocatorMissingAtLoad : public LibraryFixture, public ::testing::WithParamInterface<const char*>
{
};

} // namespace

TEST_F(MapiStart, IsEmptyBeforeTheFirstStart)
{
    EXPECT_FALSE(library.WasInitialized());
    EXPECT_FALSE(library.WasFailed());
    EXPECT_FALSE(library.IsWAB());
    EXPECT_EQ(&Zeb_GetMAPI(), &library);
}

TEST_F(MapiStart, StartsTheProviderForThreadedNotifications)
{
    Start(ProviderFile::Undecorated());
    EXPECT_EQ(provider.initializeCalls, 1);
    EXPECT_EQ(provider.initVersion, 0u);
    EXPECT_EQ(provider.initFlags, 1u);
    EXPECT_TRUE(library.WasInitialized());
    EXPECT_FALSE(library.WasFailed());
    EXPECT_FALSE(library.IsWAB());
    EXPECT_EQ(provider.loads - provider.unloads, 1);
    EXPECT_EQ(log.CountBeginning("THROW"), 0u);
}

TEST_F(MapiStart, ResolvesUndecoratedNamesFor64Bit)
{
    Start(ProviderFile::Undecorated());
    for (const EntryPointRow& row : UndecoratedEntryPoints)
    {
        if (row.slot >= EntryPoint::HrGetOneProp)
        {
            EXPECT_EQ(Reached(provider, row.slot), row.name);
        }
    }
}

TEST_F(MapiStart, ResolvesDecoratedNamesFor32Bit)
{
    Start(ProviderFile::Both());
    for (const EntryPointRow& row : DecoratedEntryPoints)
    {
        if (row.slot >= EntryPoint::HrGetOneProp)
        {
            EXPECT_EQ(Reached(provider, row.slot), row.name);
        }
    }
}

TEST_F(MapiStart, BindsTheProvidersAllocator)
{
    Start(ProviderFile::Decorated());
    void* root = Zeb_MemAllocate(10, nullptr);
    EXPECT_EQ(provider.liveRoots, 1);
    Zeb_MemAllocate(10, root);
    EXPECT_EQ(provider.liveRoots, 1);
    Zeb_MemFree(root);
    EXPECT_EQ(provider.liveRoots, 0);
}

TEST_F(MapiStart, StoppingUndoesIt)
{
    Start(ProviderFile::Decorated());
    library.Uninitialize(nullptr);
    EXPECT_EQ(provider.uninitializeCalls, 1);
    EXPECT_FALSE(library.WasFailed());
    ExpectNothingLoaded();
    for (const EntryPointRow& row : DecoratedEntryPoints)
    {
        if (row.slot >= EntryPoint::HrGetOneProp)
        {
            EXPECT_EQ(Reached(provider, row.slot), "") << row.name;
        }
    }
    EXPECT_EQ(zeb::MAPIInitialize(nullptr), MAPI_E_CALL_FAILED);
    zeb::MAPIUninitialize();
    EXPECT_EQ(provider.uninitializeCalls, 1);
    EXPECT_EQ(zeb::MAPILogonEx(0, nullptr, nullptr, 0, nullptr), MAPI_E_CALL_FAILED);
    EXPECT_EQ(zeb::MAPIAdminProfiles(0, nullptr), MAPI_E_CALL_FAILED);
    EXPECT_EQ(zeb::HrGetOneProp(nullptr, 0, nullptr), MAPI_E_CALL_FAILED);
    EXPECT_EQ(zeb::HrValidateIPMSubtree(nullptr, 0, nullptr, nullptr, nullptr), MAPI_E_CALL_FAILED);
    EXPECT_EQ(zeb::HrQueryAllRows(nullptr, nullptr, nullptr, nullptr, 0, nullptr), MAPI_E_CALL_FAILED);
    EXPECT_EQ(zeb::PropCopyMore(nullptr, nullptr, nullptr, nullptr), MAPI_E_CALL_FAILED);
}

TEST_F(MapiStart, MemoryFreedAfterTheStopLeaks)
{
    Start(ProviderFile::Undecorated());
    void* block = Zeb_MemAllocate(10, nullptr);
    void* const kept = block;
    library.Uninitialize(nullptr);
    Zeb_MemExFree(block);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(provider.liveRoots, 1) << "the provider that could free it is gone";
    std::free(static_cast<char*>(kept) - 16);
}

TEST_F(MapiStart, StoppingWithNothingLoadedDoesNothing)
{
    library.Uninitialize(nullptr);
    EXPECT_EQ(provider.uninitializeCalls, 0);
    ExpectNothingLoaded();
}

TEST_F(MapiStart, AnotherStartAfterTheStopWorks)
{
    Start(ProviderFile::Undecorated());
    library.Uninitialize(nullptr);
    Install(ProviderFile::Decorated());
    library.Initialize(false);
    EXPECT_EQ(Reached(provider, EntryPoint::HrSetOneProp), "HrSetOneProp@8");
    EXPECT_EQ(provider.initializeCalls, 2);
}

TEST_F(MapiStart, OneStopUndoesTwoStarts)
{
    Start(ProviderFile::Undecorated());
    library.Initialize(false);
    EXPECT_EQ(provider.initializeCalls, 2);
    EXPECT_EQ(Reached(provider, EntryPoint::HrGetOneProp), "HrGetOneProp");
    library.Uninitialize(nullptr);
    EXPECT_EQ(provider.uninitializeCalls, 1);
    ExpectNothingLoaded();
}

TEST_F(MapiStart, WithoutAProviderIsNotRetried)
{
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_CALL_FAILED);
    EXPECT_TRUE(library.WasFailed());
    ExpectNothingLoaded();

    RegisterOutlook(Library("good.dll", ProviderFile::Undecorated()));
    log.Clear();
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_CALL_FAILED);
    EXPECT_THAT(log.Texts(), ElementsAre(StartsWith("THROW Exception 0x80004005 (MAPI_E_CALL_FAILED), File "
                                                    "zebapi/session/Mapiload.cpp, line ")))
        << "nothing is looked for";
    library.SetWasFailed(false);
    library.Initialize(false);
    EXPECT_TRUE(library.WasInitialized());
}

TEST_F(MapiStart, AFailedSearchResetsTheSpelling)
{
    EnumOfficeBitness bitness = OfficeBitness64;
    EXPECT_EQ(std::string(Zeb_GetMapiDllPath(bitness)), "");
    EXPECT_EQ(bitness, OfficeBitnessNone);
}

TEST_F(MapiStart, AnEndingInstanceLeavesNothing)
{
    Install(ProviderFile::Decorated());
    {
        CZebAPI instance;
        instance.Initialize(false);
        EXPECT_EQ(Reached(provider, EntryPoint::HrGetOneProp), "HrGetOneProp@12");
        EXPECT_EQ(provider.loads - provider.unloads, 1);
    }
    for (const EntryPointRow& row : UndecoratedEntryPoints)
    {
        provider.called[0] = '\0';
        EXPECT_EQ(Reached(provider, row.slot), row.slot < EntryPoint::HrGetOneProp ? "not a utility" : "");
    }
    ExpectNothingLoaded();
}

TEST_F(MapiStart, WithoutAStartNothingEnds)
{
    Start(ProviderFile::Decorated());
    const auto expectStarted = [this](const char* when)
    {
        EXPECT_TRUE(library.WasInitialized()) << when;
        provider.called[0] = 0;
        EXPECT_EQ(Reached(provider, EntryPoint::HrGetOneProp), "HrGetOneProp@12") << when;
        EXPECT_EQ(ThrownBy([] { Zeb_MemFree(Zeb_MemAllocate(1, nullptr)); }), S_OK) << when;
    };
    {
        CZebAPI stray;
    }
    expectStarted("unused");
    {
        CZebAPI stray;
        stray.Uninitialize(nullptr);
    }
    expectStarted("stopped");
    {
        CZebAPI stray;
        RegisterOutlook(Library("other.dll", ProviderFile::Undecorated().Remove("PropCopyMore")));
        EXPECT_EQ(ThrownBy([&stray] { stray.Initialize(false); }), MAPI_E_VERSION);
        expectStarted("failed");
        stray.Uninitialize(nullptr);
    }
    expectStarted("failed and stopped");
    {
        CZebAPI stray;
        platform::RegistryKey::DeleteTree(platform::RegistryRoot::LocalMachine, OutlookClientKey);
        EXPECT_EQ(ThrownBy([&stray] { stray.Initialize(false); }), MAPI_E_CALL_FAILED);
        EXPECT_EQ(ThrownBy([&stray] { stray.Initialize(true); }), MAPI_E_CALL_FAILED);
    }
    expectStarted("failed without a provider");
    EXPECT_EQ(provider.uninitializeCalls, 0);
}

TEST_F(MapiStart, AnyExceptionIsAFailedStart)
{
    Start(ProviderFile::Undecorated());
    library.Uninitialize(nullptr);
    log.Clear();
    int failures = 0;
    for (int after = 0; after < 10000; ++after)
    {
        library.SetWasFailed(false);
        bool failed = false;
        std::optional<FailingNew> failing;
        failing.emplace(after, true);
        try
        {
            library.Initialize(false);
        }
        catch (CZebException* exception)
        {
            exception->Delete();
            failed = true;
        }
        const bool wasShort = failing->HasFailed();
        failing.reset();
        EXPECT_EQ(library.WasFailed(), failed) << after;
        EXPECT_EQ(library.WasInitialized(), !failed) << after;
        library.Uninitialize(nullptr);
        EXPECT_EQ(provider.loads, provider.unloads) << after;
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

TEST_F(MapiStart, OnlyMapiStartsTakeTheSection)
{
    Start(ProviderFile::Undecorated());
    const auto finishes = [](std::function<void()> body)
    {
        std::future<void> done = std::async(std::launch::async, std::move(body));
        return done.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    };
    CSingleLock lock(library.GetGlobalMAPICriticalSection(), true);
    EXPECT_TRUE(finishes([this] { ThrownBy([this] { library.OpenSession(nullptr, nullptr); }); }));
    EXPECT_TRUE(finishes([] { ThrownBy([] { CZebProfAdmin::Open(); }); }));
    EXPECT_TRUE(finishes([this] { library.GetWABAddressBook(false); }));
    EXPECT_TRUE(finishes([this] { ThrownBy([this] { library.Initialize(true); }); }));
    EXPECT_TRUE(finishes([this] { library.GetDefaultProfileName(); }));
    EXPECT_TRUE(finishes([this] { library.Uninitialize(nullptr); }));
    EXPECT_FALSE(library.WasInitialized());
}

TEST_F(MapiStart, ALibraryNoLongerLoadableFails)
{
    InstallChanging(ProviderFile::Undecorated());
    TextFile("next.dll");
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_CALL_FAILED);
    EXPECT_TRUE(library.WasFailed());
    EXPECT_EQ(log.CountBeginning("Outlook MAPI is correct"), 1u);
    EXPECT_EQ(log.CountBeginning("Failed to export"), 0u);
    ExpectNothingLoaded();
}

TEST_P(MissingAtLoad, IsNamedAndTheLibraryUnloaded)
{
    const auto [position, bitness] = GetParam();
    const EntryPointRow& row = (bitness == OfficeBitness32 ? DecoratedEntryPoints : UndecoratedEntryPoints)[position];
    const std::string path = InstallChanging(Good(bitness));
    Good(bitness).Remove(row.name).Save(Next());
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_VERSION);
    EXPECT_THAT(log.Lines(), Contains(Line(1, std::string("Failed to export ") + row.name + " from " + path)));
    EXPECT_EQ(log.CountBeginning("Failed to export"), 1u);
    EXPECT_EQ(provider.loads, 2);
    EXPECT_EQ(provider.initializeCalls, 0);
    EXPECT_TRUE(library.WasFailed());
    ExpectNothingLoaded();
    for (int other = 0; other < position; ++other)
    {
        EXPECT_EQ(Reached(provider, DecoratedEntryPoints[other].slot), other < 4 ? "not a utility" : "");
    }
}

INSTANTIATE_TEST_SUITE_P(Row, MissingAtLoad,
                         ::testing::Combine(::testing::Range(0, 10),
                                            ::testing::Values(OfficeBitness32, OfficeBitness64)));

TEST_F(MapiStart, PropCopyMoreIsRequiredToo)
{
    const std::string path = Install(ProviderFile::Undecorated().Remove("PropCopyMore"));
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_VERSION);
    EXPECT_THAT(log.Lines(), Contains(Line(1, "Failed to export PropCopyMore from " + path)));
    ExpectNothingLoaded();
}

TEST_P(AllocatorMissingAtLoad, IsReportedAndTheLibraryUnloaded)
{
    InstallChanging(ProviderFile::Decorated());
    ProviderFile::Decorated().Remove(GetParam()).Save(Next());
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_VERSION);
    EXPECT_THAT(log.Lines(), Contains(Line(1, "Failed to export memory manager")));
    EXPECT_EQ(provider.initializeCalls, 0);
    EXPECT_TRUE(library.WasFailed());
    ExpectNothingLoaded();
}

INSTANTIATE_TEST_SUITE_P(Name, AllocatorMissingAtLoad,
                         ::testing::Values("MAPIAllocateBuffer", "MAPIAllocateMore", "MAPIFreeBuffer"));

TEST_F(MapiStart, AFailingMapiInitializeUnloadsLibrary)
{
    provider.initialize = MAPI_E_LOGON_FAILED;
    Install(ProviderFile::Undecorated());
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_LOGON_FAILED);
    EXPECT_TRUE(library.WasFailed());
    EXPECT_EQ(provider.uninitializeCalls, 0);
    ExpectNothingLoaded();
}

TEST_F(MapiStart, AWarningOfMapiInitializePasses)
{
    provider.initialize = S_FALSE;
    Start(ProviderFile::Undecorated());
    EXPECT_TRUE(library.WasInitialized());
}

TEST_F(MapiStart, TheSameExceptionPassesOn)
{
    provider.initialize = MAPI_E_LOGON_FAILED;
    Install(ProviderFile::Undecorated());
    ThrownBy([this] { library.Initialize(false); });
    EXPECT_EQ(log.CountBeginning("THROW"), 1u) << "it is not made again";
}

TEST_F(MapiStart, AFailedRestartKeepsEntryPoints)
{
    Start(ProviderFile::Undecorated());
    // Keeps the code of the entry points in memory.
    const CDllLoader keeper(folder.File("provider.dll").c_str(), 22);
    platform::RegistryKey::DeleteTree(platform::RegistryRoot::LocalMachine, OutlookClientKey);
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_CALL_FAILED);
    EXPECT_TRUE(library.WasInitialized()) << "the first start is still valid";
    library.Uninitialize(nullptr);
    EXPECT_EQ(provider.uninitializeCalls, 1);
    EXPECT_FALSE(library.WasInitialized());
    EXPECT_EQ(Reached(provider, EntryPoint::HrGetOneProp), "HrGetOneProp");
    EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(1, nullptr); }), MAPI_E_NOT_INITIALIZED);
}

TEST_F(MapiStart, GlobalSectionPrecedesTheObjectLock)
{
    Install(ProviderFile::Undecorated());
    CCriticalSection* global = library.GetGlobalMAPICriticalSection();
    ASSERT_NE(global, nullptr);
    global->Lock();
    std::future<void> start = std::async(std::launch::async, [this] { library.Initialize(false); });
    EXPECT_EQ(start.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    std::future<HRESULT> other = std::async(std::launch::async, [] { return ThrownBy([] { CZebProfAdmin::Open(); }); });
    EXPECT_EQ(other.wait_for(std::chrono::seconds(20)), std::future_status::ready)
        << "the waiting start holds the object lock";
    EXPECT_FALSE(library.WasInitialized());
    global->Unlock();
    start.get();
    EXPECT_EQ(other.get(), MAPI_E_CALL_FAILED);
    EXPECT_TRUE(library.WasInitialized());
}

TEST_F(MapiStart, TheStarterMayHoldTheSection)
{
    Install(ProviderFile::Undecorated());
    CSingleLock lock(library.GetGlobalMAPICriticalSection(), true);
    library.Initialize(false);
    EXPECT_TRUE(library.WasInitialized());
}

} // namespace zeb::test
