// Logging on, and profile administration of the started provider.
#include "tests/zebapi/frame/LibraryFixture.h"

#include "platform/text.h"
#include "tests/support/Context.h"
#include "tests/support/doubles/RecordingStore.h"

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;

class Logon : public LibraryFixture
{
protected:
    /// A letter beyond ASCII; it has two bytes where narrow text is UTF-8.
    static std::string NarrowLetter()
    {
        const WCHAR letter[] = {0xFC};
        return platform::NarrowFromWide(letter, 1);
    }

    Journal journal;
    RecordingSession session{journal};
};

} // namespace

TEST_F(Logon, NeedsAStartedProvider)
{
    EXPECT_EQ(ThrownBy([this] { library.OpenSession(nullptr, nullptr); }), E_POINTER);
    EXPECT_TRUE(library.WasFailed());
}

TEST_F(Logon, NoNameSharesTheDefaultSession)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    int window = 0;
    CZebSession opened = library.OpenSession(reinterpret_cast<HWND>(&window), nullptr);
    EXPECT_TRUE(opened.IsValid());
    EXPECT_EQ(provider.logonCalls, 1);
    EXPECT_EQ(provider.logonParent, reinterpret_cast<ULONG_PTR>(&window));
    EXPECT_FALSE(provider.logonNamed);
    EXPECT_FALSE(provider.logonPassword);
    EXPECT_EQ(provider.logonFlags, 0x8069u);
    EXPECT_EQ(session.References(), 1u) << "the wrapper's own";
    EXPECT_FALSE(library.WasFailed());
}

TEST_F(Logon, ANameOpensANewSession)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    CZebSession opened = library.OpenSession(nullptr, "Outlook");
    EXPECT_TRUE(provider.logonNamed);
    EXPECT_STREQ(provider.logonName, "Outlook");
    EXPECT_FALSE(provider.logonPassword);
    EXPECT_EQ(provider.logonParent, 0u);
    EXPECT_EQ(provider.logonFlags, 0x8023u);
}

TEST_F(Logon, AWideNameIsPassedUnchanged)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    CZebSession opened = library.OpenSessionW(nullptr, ZEBW("\u65E5\u672C\u8A9E"));
    EXPECT_TRUE(opened.IsValid());
    EXPECT_STREQ(provider.logonName, "\xE5\x65\x2C\x67\x9E\x8A") << "the bytes of UTF-16";
    EXPECT_EQ(provider.logonFlags, 0x8023u | MAPI_UNICODE);
}

TEST_F(Logon, NoWideNameSharesTheDefault)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    library.OpenSessionW(nullptr, nullptr);
    EXPECT_FALSE(provider.logonNamed);
    EXPECT_EQ(provider.logonFlags, 0x8069u);
}

TEST_F(Logon, AWideNameNeedsAProvider)
{
    EXPECT_EQ(ThrownBy([this] { library.OpenSessionW(nullptr, ZEBW("x")); }), E_POINTER);
    EXPECT_TRUE(library.WasFailed());
}

TEST_F(Logon, AnEmptyNameIsAName)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    library.OpenSession(nullptr, "");
    EXPECT_TRUE(provider.logonNamed);
    EXPECT_STREQ(provider.logonName, "");
    EXPECT_EQ(provider.logonFlags, 0x8023u);
}

TEST_F(Logon, LongNamesEndAt1024Bytes)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    library.OpenSession(nullptr, std::string(1023, 'a').c_str());
    EXPECT_EQ(provider.logonName, std::string(1023, 'a'));
    library.OpenSession(nullptr, std::string(1024, 'b').c_str());
    EXPECT_EQ(provider.logonName, std::string(1024, 'b'));
    library.OpenSession(nullptr, std::string(1500, 'c').c_str());
    EXPECT_EQ(provider.logonName, std::string(1024, 'c'));
}

TEST_F(Logon, AFailureBlocksTheNextStart)
{
    provider.logon = MAPI_E_USER_CANCEL;
    Start(ProviderFile::Undecorated());
    EXPECT_EQ(ThrownBy([this] { library.OpenSession(nullptr, "x"); }), MAPI_E_USER_CANCEL);
    EXPECT_TRUE(library.WasFailed());
    EXPECT_TRUE(library.WasInitialized());
    library.Uninitialize(nullptr);
    EXPECT_EQ(ThrownBy([this] { library.Initialize(false); }), MAPI_E_CALL_FAILED);
    library.SetWasFailed(false);
    library.Initialize(false);
    EXPECT_TRUE(library.WasInitialized());
}

TEST_F(Logon, AFailureNamesTheProfile)
{
    provider.logon = MAPI_E_USER_CANCEL;
    Start(ProviderFile::Undecorated());
    EXPECT_EQ(ContextOf([this] { library.OpenSession(nullptr, "Outlook"); }), "OpenSession 'Outlook'");
    EXPECT_EQ(ContextOf([this] { library.OpenSession(nullptr, nullptr); }), "OpenSession");
}

TEST_F(Logon, SuccessWithoutASessionFails)
{
    Start(ProviderFile::Undecorated());
    EXPECT_EQ(ThrownBy([this] { library.OpenSession(nullptr, "x"); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(provider.logonCalls, 1);
    EXPECT_TRUE(library.WasFailed());
}

TEST_F(Logon, AnyExceptionBlocksTheNextStart)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    session.RefuseInterfaces();
    bool passed = false;
    try
    {
        // Its own exception: thrown out of the provider.
        provider.throwsOnLogon = true;
        library.OpenSession(nullptr, nullptr);
    }
    catch (int)
    {
        passed = true;
    }
    EXPECT_TRUE(passed);
    EXPECT_TRUE(library.WasFailed());
}

TEST_F(Logon, LongNamesAreCutBetweenCharacters)
{
    const std::string letter = NarrowLetter();
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    library.OpenSession(nullptr, (std::string(1023, 'a') + letter + "b").c_str());
    EXPECT_EQ(provider.logonName, std::string(1023, 'a') + (letter.size() == 1 ? letter : ""));
}

TEST_F(Logon, StoppingLogsTheSessionOffFirst)
{
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    CZebSession opened = library.OpenSession(nullptr, nullptr);
    library.Uninitialize(&opened);
    EXPECT_THAT(journal.Take(), ElementsAre("session: Logoff(0x0,0x0,0x0)"));
    EXPECT_FALSE(opened.IsValid());
    EXPECT_EQ(session.References(), 0u);
    EXPECT_EQ(provider.uninitializeCalls, 1);
    ExpectNothingLoaded();
}

TEST_F(Logon, AFailingLogoffAllowsTheStop)
{
    provider.session = &session;
    session.Fail("Logoff", MAPI_E_NETWORK_ERROR);
    Start(ProviderFile::Undecorated());
    CZebSession opened = library.OpenSession(nullptr, nullptr);
    library.Uninitialize(&opened);
    EXPECT_EQ(log.CountBeginning("EXCEPTION: Description: \"MAPI_E_NETWORK_ERROR\""), 1u);
    EXPECT_EQ(provider.uninitializeCalls, 1);
    ExpectNothingLoaded();
}

} // namespace zeb::test
