#include "tests/zebstore/provider/ProviderFixture.h"

#include <fstream>
#include <new>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace zebstore
{
namespace
{

TEST(CallGuard, TurnsExceptionsIntoCodes)
{
    EXPECT_EQ(Guarded("a", [] {}), S_OK);
    EXPECT_EQ(Guarded("a", [] { return MAPI_W_ERRORS_RETURNED; }), MAPI_W_ERRORS_RETURNED);
    EXPECT_EQ(Guarded("a", [] { throw Error(MAPI_E_NOT_FOUND, "x"); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Guarded("a", [] { throw std::bad_alloc(); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Guarded("a", [] { throw std::runtime_error("y"); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Guarded("a", [] { throw 1; }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Guarded("a", [] { throw Error(S_OK, "success is no failure"); }), MAPI_E_CALL_FAILED);
}

TEST(CallGuard, KeepsEachThreadsLastText)
{
    Guarded("a", [] { throw Error(MAPI_E_NOT_FOUND, "mine"); });
    std::thread other([]
    {
        EXPECT_EQ(LastErrorText(MAPI_E_NOT_FOUND), "");
        Guarded("a", [] { throw Error(MAPI_E_NOT_FOUND, "theirs"); });
        EXPECT_EQ(LastErrorText(MAPI_E_NOT_FOUND), "theirs");
    });
    other.join();
    EXPECT_EQ(LastErrorText(MAPI_E_NOT_FOUND), "mine");
    EXPECT_EQ(LastErrorText(MAPI_E_NO_ACCESS), "");
    Guarded("a", [] { return MAPI_E_NOT_FOUND; });
    EXPECT_EQ(LastErrorText(MAPI_E_NOT_FOUND), "");
}

TEST(CallGuard, ReadsTheFaultText)
{
    Switches switches;
    EXPECT_TRUE(ParseFault("call:17:0x80040115", switches));
    EXPECT_EQ(switches.failingCall, 17u);
    EXPECT_EQ(switches.failingCode, MAPI_E_NETWORK_ERROR);
    EXPECT_TRUE(ParseFault("alloc:3", switches));
    EXPECT_EQ(switches.failingAllocation, 3u);
    for (const char* bad : {"", "call", "call:1", "call:0:0x80004005", "call:1:0x1", "call:1:0x80004005x",
                            "alloc:", "alloc:0", "alloc:1 ", "free:1"})
    {
        EXPECT_FALSE(ParseFault(bad, switches)) << bad;
    }
}

TEST(CallGuard, FailsTheChosenCallAndAllocation)
{
    Switches switches;
    ASSERT_TRUE(ParseFault("call:2:0x80040115", switches));
    ApplySwitches(switches);
    int ran = 0;
    const auto body = [&] { ++ran; };
    EXPECT_EQ(Guarded("a", body), S_OK);
    EXPECT_FALSE(FaultHappened());
    EXPECT_EQ(Guarded("a", body), MAPI_E_NETWORK_ERROR);
    EXPECT_TRUE(FaultHappened());
    EXPECT_EQ(Guarded("a", body), S_OK);
    EXPECT_EQ(ran, 2);
    EXPECT_EQ(CallsCounted(), 3u);

    Switches allocation;
    ASSERT_TRUE(ParseFault("alloc:2", allocation));
    ApplySwitches(allocation);
    void* first = nullptr;
    void* second = nullptr;
    EXPECT_EQ(MAPIAllocateBuffer(1, &first), S_OK);
    EXPECT_EQ(MAPIAllocateMore(1, first, &second), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(MAPIAllocateMore(1, first, &second), S_OK);
    MAPIFreeBuffer(first);
    ApplySwitches({});
}

class CallTrace : public Provider
{
};

TEST_F(CallTrace, NamesCallsAndLiveObjects)
{
    const std::string file = m_folder.File("trace.txt");
    Switches switches;
    switches.traceFile = file;
    ApplySwitches(switches);
    Inbox();
    ULONG type = 0;
    IUnknown* object = nullptr;
    BYTE wrong[4] = {};
    EXPECT_EQ(Session().OpenEntry(4, reinterpret_cast<LPENTRYID>(wrong), nullptr, 0, &type, &object),
              MAPI_E_INVALID_ENTRYID);
    m_session = {};
    MAPIUninitialize();
    std::ifstream stream(file);
    std::stringstream text;
    text << stream.rdbuf();
    EXPECT_NE(text.str().find("1 MAPILogonEx 0x00000000\n"), std::string::npos) << text.str();
    EXPECT_NE(text.str().find("IMAPISession::OpenEntry 0x80040107 "), std::string::npos) << text.str();
    EXPECT_NE(text.str().find("live objects 0, live buffers 0, bad frees 0\n"), std::string::npos) << text.str();
    EXPECT_EQ(MAPIInitialize(nullptr), S_OK);
}

} // namespace
} // namespace zebstore
