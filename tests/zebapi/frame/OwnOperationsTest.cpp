// A class derived from the library object or from profile administration changes all
// operations that build on what it overrides.
#include "tests/support/MapiMemory.h"
#include "tests/support/doubles/RecordingProfAdmin.h"
#include "tests/support/doubles/RecordingStore.h"
#include "tests/zebapi/frame/LibraryFixture.h"
#include "zebapi/Profiles.h"

#include <cstring>
#include <string>
#include <vector>

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Writes its operations down. Those that are private to the library object it cannot do.
class WatchedLibrary : public CZebAPI
{
public:
    bool IsWAB() override { return Note("IsWAB"), isWab; }
    bool WasFailed() override { return Note("WasFailed"), claimsToHaveFailed; }
    void SetWasFailed(bool failed) override { Note(failed ? "SetWasFailed(true)" : "SetWasFailed(false)"); }

    bool isWab = false;
    bool claimsToHaveFailed = false;
    bool startFails = false;
    CZebSession* stopped = nullptr;
    std::vector<std::string> notes;

protected:
    void Note(const char* operation) { notes.push_back(operation); }
};

class WatchedStart : public WatchedLibrary
{
    void InitializeWAB() override { Start("InitializeWAB"); }
    void InitializeMAPI() override { Start("InitializeMAPI"); }
    void UninitializeWAB() override { Note("UninitializeWAB"); }
    void UninitializeMAPI(CZebSession* session) override
    {
        Note("UninitializeMAPI");
        stopped = session;
    }
    void Start(const char* operation)
    {
        Note(operation);
        if (startFails)
        {
            CZebException::Throw(MAPI_E_BUSY, nullptr, 0);
        }
    }
};

class WatchedUnload : public WatchedLibrary
{
    void Unload() override { Note("Unload"); }
};

class WatchedSession : public CZebSession
{
public:
    void Logoff(ULONG uiParam, ULONG flags, ULONG reserved) override
    {
        ++logoffs;
        EXPECT_EQ(uiParam + flags + reserved, 0u);
    }
    int logoffs = 0;
};

class WatchedAdmin : public CZebProfAdmin
{
public:
    using CZebProfAdmin::CZebProfAdmin;
    using CZebProfAdmin::operator=;
    bool IsValid() const override { return claimsToBeValid && CZebProfAdmin::IsValid(); }
    void Free() override
    {
        ++frees;
        CZebProfAdmin::Free();
    }
    bool claimsToBeValid = true;
    int frees = 0;
};

/// Hands out profile administration of its own. It gives its operations to the library's object, so it has no fields.
class OwnAdminLibrary : public CZebAPI
{
    CZebProfAdmin GetProfAdmin() override { CZebException::Throw(MAPI_E_BUSY, nullptr, 0); }
};

using OwnOperations = LibraryFixture;

} // namespace

TEST_F(OwnOperations, AStartAsksTheDerivedClass)
{
    WatchedStart own;
    CZebAPI& base = own;
    base.Initialize(false);
    EXPECT_THAT(own.notes, ElementsAre("WasFailed", "InitializeMAPI"));
    own.notes.clear();
    base.Initialize(true);
    EXPECT_THAT(own.notes, ::testing::Contains("InitializeWAB"));
    EXPECT_THAT(own.notes, ::testing::Not(::testing::Contains("InitializeMAPI")));
    own.notes.clear();
    own.claimsToHaveFailed = true;
    EXPECT_EQ(ThrownBy([&] { base.Initialize(false); }), MAPI_E_CALL_FAILED);
    EXPECT_THAT(own.notes, ElementsAre("WasFailed"));
}

TEST_F(OwnOperations, TheDerivedClassMarksFailures)
{
    WatchedStart own;
    CZebAPI& base = own;
    own.startFails = true;
    EXPECT_EQ(ThrownBy([&] { base.Initialize(false); }), MAPI_E_BUSY);
    EXPECT_THAT(own.notes, ElementsAre("WasFailed", "InitializeMAPI", "SetWasFailed(true)"));
    own.notes.clear();
    EXPECT_EQ(ThrownBy([&] { base.OpenSession(nullptr, nullptr); }), E_POINTER);
    EXPECT_THAT(own.notes, ElementsAre("SetWasFailed(true)"));
}

TEST_F(OwnOperations, TheDerivedClassDecidesTheStop)
{
    WatchedStart own;
    CZebAPI& base = own;
    CZebSession session;
    base.Uninitialize(&session);
    EXPECT_THAT(own.notes, ElementsAre("IsWAB", "UninitializeMAPI"));
    EXPECT_EQ(own.stopped, &session);
    own.notes.clear();
    own.isWab = true;
    base.Uninitialize(&session);
    EXPECT_THAT(own.notes, ElementsAre("IsWAB", "UninitializeWAB"));
}

TEST_F(OwnOperations, AStopUsesTheDerivedClass)
{
    WatchedUnload own;
    CZebAPI& base = own;
    WatchedSession session;
    base.Uninitialize(&session);
    EXPECT_THAT(own.notes, ElementsAre("IsWAB", "Unload"));
    EXPECT_EQ(session.logoffs, 1);
    own.notes.clear();
    own.isWab = true;
    base.Uninitialize(nullptr);
    EXPECT_THAT(own.notes, ElementsAre("IsWAB", "Unload"));
}

TEST_F(OwnOperations, MissingEntryPointsUnloadThroughThem)
{
    Install(ProviderFile::Undecorated().Remove("PropCopyMore"));
    WatchedUnload own;
    CZebAPI& base = own;
    EXPECT_EQ(ThrownBy([&] { base.Initialize(false); }), MAPI_E_VERSION);
    EXPECT_THAT(own.notes, ElementsAre("WasFailed", "Unload", "SetWasFailed(true)"));
}

TEST_F(OwnOperations, AMissingAllocatorUnloadsThroughThem)
{
    InstallChanging(ProviderFile::Undecorated());
    ProviderFile::Undecorated().Remove("MAPIAllocateMore").Save(Next());
    WatchedUnload own;
    CZebAPI& base = own;
    EXPECT_EQ(ThrownBy([&] { base.Initialize(false); }), MAPI_E_VERSION);
    EXPECT_THAT(own.notes, ElementsAre("WasFailed", "Unload", "SetWasFailed(true)"));
}

TEST_F(OwnOperations, ARefusedStartUnloadsThroughThem)
{
    Install(ProviderFile::Undecorated());
    provider.initialize = MAPI_E_BUSY;
    WatchedUnload own;
    CZebAPI& base = own;
    EXPECT_EQ(ThrownBy([&] { base.Initialize(false); }), MAPI_E_BUSY);
    EXPECT_THAT(own.notes, ElementsAre("WasFailed", "Unload", "SetWasFailed(true)"));
}

TEST_F(OwnOperations, TheLibraryOpensProfileAdministration)
{
    const OwnAdminLibrary donor;
    unsigned char table[sizeof(void*)];
    void* const object = &library;
    std::memcpy(table, object, sizeof table);
    std::memcpy(object, static_cast<const void*>(&donor), sizeof table);
    const HRESULT result = ThrownBy([] { CZebProfAdmin::Open(); });
    std::memcpy(object, table, sizeof table);
    EXPECT_EQ(result, MAPI_E_BUSY);
}

TEST_F(OwnOperations, TheDerivedClassClosesProfileAdministration)
{
    Journal journal;
    RecordingProfAdmin admin(journal);
    {
        WatchedAdmin own(&admin);
        CZebProfAdmin& base = own;
        base.Close();
        EXPECT_EQ(own.frees, 1);
        EXPECT_EQ(admin.References(), 0u);
        base = CZebProfAdmin(&admin);
        EXPECT_THAT(log.Lines(), IsEmpty());
        own.claimsToBeValid = false;
        base = CZebProfAdmin(&admin);
        EXPECT_EQ(log.CountBeginning("EXCEPTION: Description: \"MAPI_E_INTERFACE_NOT_SUPPORTED\""), 1u)
            << "the answer of the derived class counts";
    }
}

} // namespace zeb::test
