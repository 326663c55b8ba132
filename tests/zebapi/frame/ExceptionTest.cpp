#include "zebapi/Exception.h"

#include "platform/text.h"
#include "tests/support/Environment.h"
#include "tests/support/FailingNew.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/TempFolder.h"
#include "tests/zebapi/frame/ErrorObject.h"
#include "zebapi/constants/internal/ErrorNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;

struct Deleter
{
    void operator()(CException* exception) const { exception->Delete(); }
};
using Caught = std::unique_ptr<CZebException, Deleter>;

/// What `body` throws; null and a failed test when it throws nothing.
template <class Body>
Caught Catch(Body&& body)
{
    try
    {
        body();
    }
    catch (CZebException* exception)
    {
        return Caught(exception);
    }
    ADD_FAILURE() << "nothing was thrown";
    return nullptr;
}

std::string Description(CException* exception)
{
    return std::string(Zeb_GetExceptionDescription(exception));
}

constexpr LONG NotFound = static_cast<LONG>(0x8004010F);
constexpr LONG Unknown = static_cast<LONG>(0x80001234);

void FailsByItself()
{
    ThrowIfFailed(NotFound, nullptr, 0);
}

void FailsOnAnObject()
{
    ThrowIfFailed(NotFound, static_cast<IMAPISession*>(nullptr), nullptr, 0);
}

void ThrowsByItself()
{
    CZebException::Throw(NotFound, "x", 1);
}

} // namespace

TEST(ThrowIfFailed, ReturnsSuccessAndWarningsUnchanged)
{
    LogCapture log;
    EXPECT_EQ(ThrowIfFailed(0, "x", 1), 0);
    EXPECT_EQ(ThrowIfFailed(1, "x", 1), 1);
    EXPECT_EQ(ThrowIfFailed(MAPI_W_ERRORS_RETURNED, "x", 1), MAPI_W_ERRORS_RETURNED);
    EXPECT_TRUE(log.Lines().empty());
}

TEST(ThrowIfFailed, ThrowsTheNameAndLogsOnce)
{
    LogCapture log;
    Caught caught = Catch([] { ThrowIfFailed(NotFound, "x", 12); });
    EXPECT_EQ(caught->GetResult(), NotFound);
    EXPECT_EQ(Description(caught.get()), "MAPI_E_NOT_FOUND");
    EXPECT_THAT(log.Lines(), ElementsAre(Line(1, "THROW Exception 0x8004010f (MAPI_E_NOT_FOUND), File x, line 12")));
}

TEST(ThrowIfFailed, IsCaughtAsEachBase)
{
    EXPECT_NO_THROW(try { ThrowIfFailed(NotFound, nullptr, 0); } catch (CException* e) { e->Delete(); });
    EXPECT_NO_THROW(try { ThrowIfFailed(NotFound, nullptr, 0); } catch (CObject* e) { delete e; });
}

TEST(ThrowIfFailed, GivesUnknownCodesInUpperCase)
{
    LogCapture log;
    Caught caught = Catch([] { ThrowIfFailed(Unknown, "file", 3); });
    EXPECT_EQ(Description(caught.get()), "0x80001234");
    EXPECT_THAT(log.Lines(), ElementsAre(Line(1, "THROW Exception 0x80001234 (0x80001234), File file, line 3")));

    Caught letters = Catch([] { ThrowIfFailed(static_cast<LONG>(0xDEADBEEF), "file", 4); });
    EXPECT_EQ(Description(letters.get()), "0xDEADBEEF");
    EXPECT_EQ(log.Texts().back(), "THROW Exception 0xdeadbeef (0xDEADBEEF), File file, line 4");
}

TEST(ThrowIfFailed, WithoutAFileLogsNothing)
{
    LogCapture log;
    Catch([] { ThrowIfFailed(NotFound, nullptr, 12); });
    EXPECT_TRUE(log.Lines().empty());
}

TEST(ThrowIfFailed, RethrowingAddsNoLine)
{
    LogCapture log;
    Catch([]
    {
        try
        {
            ThrowIfFailed(NotFound, "x", 1);
        }
        catch (...)
        {
            throw;
        }
    });
    EXPECT_EQ(log.Lines().size(), 1u);
}

TEST(ThrowIfFailed, AsksTheObjectForItsError)
{
    MapiMemory memory;
    LogCapture log;
    ErrorObject object;
    object.error = memory.NewMapiError(1, "disk 100% full", "zeb", 7, 9);
    Caught caught = Catch([&] { ThrowIfFailed(NotFound, &object, "x", 5); });
    EXPECT_EQ(object.calls, 1);
    EXPECT_EQ(object.askedFor, NotFound);
    EXPECT_EQ(object.askedFlags, 0u);
    EXPECT_EQ(Description(caught.get()), "Ver:1, Error:disk 100% full, Component:zeb, LowLewelError:7, Context:9 \n");
    EXPECT_THAT(log.Lines(), ElementsAre(Line(1, "THROW Exception 0x8004010f (Ver:1, Error:disk 100% full, "
                                                 "Component:zeb, LowLewelError:7, Context:9 \n), File x, line 5")));
    EXPECT_TRUE(memory.IsRoot(object.error)) << "the extended error is not freed";
}

TEST(ThrowIfFailed, DoesNotAskAfterSuccess)
{
    ErrorObject object;
    EXPECT_EQ(ThrowIfFailed(S_FALSE, &object, "x", 1), S_FALSE);
    EXPECT_EQ(object.calls, 0);
}

TEST(ThrowIfFailed, PrintsMissingTextsAsNull)
{
    MapiMemory memory;
    ErrorObject object;
    object.error = memory.NewMapiError(0, nullptr, nullptr, 0xFFFFFFFF, 0);
    Caught caught = Catch([&] { ThrowIfFailed(NotFound, &object, nullptr, 0); });
    EXPECT_EQ(Description(caught.get()), "Ver:0, Error:(null), Component:(null), LowLewelError:-1, Context:0 \n");
}

TEST(ThrowIfFailed, TheReturnedErrorAloneDecides)
{
    MapiMemory memory;
    ErrorObject failing;
    failing.answer = MAPI_E_NO_SUPPORT;
    failing.error = memory.NewMapiError(1, "kept", "zeb", 0, 0);
    Caught extended = Catch([&] { ThrowIfFailed(NotFound, &failing, nullptr, 0); });
    EXPECT_EQ(Description(extended.get()), "Ver:1, Error:kept, Component:zeb, LowLewelError:0, Context:0 \n");

    ErrorObject silent;
    Caught plain = Catch([&] { ThrowIfFailed(NotFound, &silent, nullptr, 0); });
    EXPECT_EQ(silent.calls, 1);
    EXPECT_EQ(Description(plain.get()), "MAPI_E_NOT_FOUND");
}

TEST(ThrowIfFailed, WithoutAnObjectNamesTheResult)
{
    Caught raw = Catch([] { ThrowIfFailed(NotFound, static_cast<IMAPISession*>(nullptr), nullptr, 0); });
    EXPECT_EQ(Description(raw.get()), "MAPI_E_NOT_FOUND");
    Caught counted = Catch([] { ThrowIfFailed(NotFound, CComPtr<IMAPITable>(), nullptr, 0); });
    EXPECT_EQ(Description(counted.get()), "MAPI_E_NOT_FOUND");
}

TEST(ThrowIfFailed, WithoutMemoryThrowsAKeptException)
{
    LogCapture log;
    for (int after = 0; after < 8; ++after)
    {
        Caught caught = Catch([after]
        {
            FailingNew failing(after);
            ThrowIfFailed(NotFound, nullptr, 0);
        });
        ASSERT_NE(caught, nullptr);
        if (caught->GetResult() == NotFound)
        {
            ASSERT_GT(after, 0) << "without any memory a new exception was created";
            return;
        }
        EXPECT_EQ(caught->GetResult(), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(Description(caught.get()), "MAPI_E_NOT_ENOUGH_MEMORY");
    }
    FAIL() << "never had enough memory";
}

TEST(ThrowIfFailed, TheKeptExceptionSurvivesItsDeletion)
{
    for (int round = 0; round < 2; ++round)
    {
        ErrorObject object;
        Caught caught = Catch([&object]
        {
            FailingNew failing;
            ThrowIfFailed(NotFound, &object, nullptr, 0);
        });
        ASSERT_NE(caught, nullptr);
        EXPECT_EQ(Description(caught.get()), "MAPI_E_NOT_ENOUGH_MEMORY");
    }
}

TEST(Exception, ItsClassRecordNamesItsBase)
{
    Caught exception(new CZebException(NotFound, nullptr, 0));
    EXPECT_STREQ(exception->GetRuntimeClass()->m_lpszClassName, "CZebException");
    EXPECT_TRUE(exception->IsKindOf(RUNTIME_CLASS(CZebException)));
    EXPECT_TRUE(exception->IsKindOf(RUNTIME_CLASS(CException)));
    EXPECT_TRUE(exception->IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_TRUE(CZebException::GetThisClass()->m_pfnGetBaseClass()->IsSameClass(RUNTIME_CLASS(CException)));
}

TEST(Exception, ATruncatedMessageHasNoTerminator)
{
    Caught exception(new CZebException(NotFound, nullptr, 0));
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_TRUE(exception->GetErrorMessage(buffer, 6, nullptr));
    EXPECT_EQ(std::string(buffer, sizeof buffer), "MAPI_E##");
}

TEST(Exception, AMessageNeedsNoBuffer)
{
    Caught exception(new CZebException(NotFound, nullptr, 0));
    unsigned int helpContext = 7;
    EXPECT_TRUE(exception->GetErrorMessage(nullptr, 6, &helpContext));
    EXPECT_EQ(helpContext, 0u);
}

TEST(Exception, MessageIsCutBetweenCharacters)
{
    const WCHAR euro[] = {0x20AC};
    const std::string character = platform::NarrowFromWide(euro, 1);
    MapiMemory memory;
    ErrorObject object;
    object.error = memory.NewMapiError(1, (character + character).c_str(), "zeb", 0, 0);
    Caught caught = Catch([&] { ThrowIfFailed(NotFound, &object, nullptr, 0); });
    const std::string head = "Ver:1, Error:";
    for (size_t room = 0; room <= 2 * character.size(); ++room)
    {
        std::string buffer(head.size() + 2 * character.size() + 1, '#');
        caught->GetErrorMessage(buffer.data(), static_cast<unsigned int>(head.size() + room), nullptr);
        std::string expected = head;
        for (size_t whole = 0; whole < room / character.size(); ++whole)
        {
            expected += character;
        }
        // What half a character would have taken is free for the terminator.
        expected += room % character.size() != 0 ? std::string(1, 0) : std::string();
        EXPECT_EQ(buffer.substr(0, expected.size()), expected) << room;
        EXPECT_EQ(buffer[expected.size()], '#') << room;
    }
}

TEST(Exception, ALongDescriptionEndsBetweenCharacters)
{
    const WCHAR euro[] = {0x20AC};
    const std::string character = platform::NarrowFromWide(euro, 1);
    std::string text;
    while (text.size() < 2000)
    {
        text += character;
    }
    MapiMemory memory;
    ErrorObject object;
    object.error = memory.NewMapiError(1, text.c_str(), "zeb", 0, 0);
    Caught caught = Catch([&] { ThrowIfFailed(NotFound, &object, nullptr, 0); });
    const std::string head = "Ver:1, Error:";
    const size_t whole = (1024 - head.size()) / character.size() * character.size();
    EXPECT_EQ(Description(caught.get()), head + text.substr(0, whole));
}

TEST(Context, IsTheFunctionThatThrew)
{
    LogCapture log;
    const auto& thrower = [](const char* operation)
    { return Catch([operation] { ThrowIfFailed(NotFound, "x", 1, operation); }); };
    EXPECT_EQ(thrower("CreateFolder")->GetContext(), "CreateFolder");
    EXPECT_EQ(thrower(nullptr)->GetContext(), "");
    EXPECT_EQ(Catch(&FailsByItself)->GetContext(), "FailsByItself");
    EXPECT_EQ(Catch(&FailsOnAnObject)->GetContext(), "FailsOnAnObject");
    EXPECT_EQ(Catch(&ThrowsByItself)->GetContext(), "ThrowsByItself");
    EXPECT_EQ(Caught(new CZebException(NotFound, nullptr, 0))->GetContext(), "");
    EXPECT_EQ(Catch([] { CZebException::Throw(NotFound, nullptr, 0); })->GetContext(), "") << "a lambda";
    EXPECT_EQ(log.CountBeginning("THROW"), 3u);
    EXPECT_EQ(log.Lines().size(), 3u) << "the stated lines and no others";
}

TEST(Context, TemplateArgumentsAreLeftOut)
{
    LogCapture log;
    const auto& context = [](const char* operation)
    { return Catch([operation] { ThrowIfFailed(NotFound, "x", 1, operation); })->GetContext(); };
    EXPECT_EQ(context("Read<int,CTable<long>>"), "Read");
    EXPECT_EQ(context("operator<"), "operator<");
    EXPECT_EQ(context("<lambda_1>::operator"), "<lambda_1>::operator");
}

TEST(Context, CollectsThingsAndLeavesTheDescription)
{
    LogCapture log;
    Caught caught =
        Catch([] { About([] { return "'Projects'"; }, [] { ThrowIfFailed(NotFound, "x", 1, "CreateFolder"); }); });
    EXPECT_EQ(caught->GetContext(), "CreateFolder 'Projects'");
    EXPECT_EQ(caught->GetResult(), NotFound);
    EXPECT_EQ(Description(caught.get()), "MAPI_E_NOT_FOUND");
    EXPECT_EQ(log.Lines().size(), 1u);
    EXPECT_EQ(About([]() -> const char* { throw 42; }, [] { return 7; }), 7) << "asked only for a failure";
}

TEST(Context, TheDefaultSinkShowsIt)
{
    const TempFolder folder;
    const std::string file = folder.File("log.txt");
    {
        const EnvironmentScope target("ZEBAPI_LOG", file);
        const EnvironmentScope level("ZEBAPI_LOG_LEVEL", "1");
        qorlog::SetSink(nullptr);
        Catch([] { About([] { return "100%s"; }, [] { ThrowIfFailed(NotFound, "x", 1, "CreateFolder"); }); });
    }
    qorlog::SetSink(nullptr);
    std::ifstream input(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(input, line);)
    {
        lines.push_back(line.substr(line.find(' ')));
    }
    EXPECT_THAT(lines, ElementsAre(" 1 ZebAPI: THROW Exception 0x8004010f (MAPI_E_NOT_FOUND), File x, line 1",
                                   " 1 ZebAPI: CONTEXT CreateFolder 100%s"));
}

TEST(Context, TheKeptExceptionHasNone)
{
    Caught caught = Catch([]
    {
        const FailingNew failing;
        About([] { return "a thing"; }, [] { ThrowIfFailed(NotFound, nullptr, 0); });
    });
    EXPECT_EQ(caught->GetResult(), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(caught->GetContext(), "");
}

TEST(Describe, WritesAnyExceptionInOneLine)
{
    const auto described = [](auto&& body) -> std::string
    {
        try
        {
            body();
        }
        catch (...)
        {
            return std::string(Zeb_DescribeCurrentException());
        }
        return "nothing was thrown";
    };
    EXPECT_EQ(described(&FailsByItself), "FailsByItself: MAPI_E_NOT_FOUND");
    EXPECT_EQ(described([]
    { About([] { return "'Projects'"; }, [] { ThrowIfFailed(Unknown, nullptr, 0, "CreateFolder"); }); }),
              "CreateFolder 'Projects': 0x80001234");
    MapiMemory memory;
    ErrorObject object;
    object.error = memory.NewMapiError(1, "locked", "zeb", 0, 0);
    EXPECT_EQ(described([&] { ThrowIfFailed(NotFound, &object, nullptr, 0, "Open"); }),
              "Open: Ver:1, Error:locked, Component:zeb, LowLewelError:0, Context:0");
    EXPECT_EQ(described([] { RaiseComError(E_POINTER); }), "0x80004003");
    EXPECT_EQ(described([] { RaiseComError(E_NOINTERFACE); }), "MAPI_E_INTERFACE_NOT_SUPPORTED");
    EXPECT_EQ(described([] { throw std::bad_alloc(); }), "MAPI_E_NOT_ENOUGH_MEMORY");
    EXPECT_EQ(described([] { throw std::runtime_error("a host's own"); }), "a host's own");
    EXPECT_EQ(described([] { throw 42; }), "unknown exception");
    int deleted = 0;
    struct Counted : CException
    {
        explicit Counted(int& count)
            : m_deleted(count)
        {
        }
        ~Counted() override { ++m_deleted; }
        int& m_deleted;
    };
    EXPECT_EQ(described([&deleted] { throw static_cast<CException*>(new Counted(deleted)); }), "");
    EXPECT_EQ(deleted, 1);
}

TEST(Exception, AnExactMessageHasNoTerminator)
{
    Caught exception(new CZebException(NotFound, nullptr, 0));
    const std::string text = "MAPI_E_NOT_FOUND";
    std::string buffer(text.size() + 2, '#');
    exception->GetErrorMessage(buffer.data(), static_cast<unsigned int>(text.size()), nullptr);
    EXPECT_EQ(buffer, text + "##");
    exception->GetErrorMessage(buffer.data(), static_cast<unsigned int>(text.size() + 1), nullptr);
    EXPECT_EQ(buffer, text + '\0' + '#');
}

TEST(Exception, MessageWithoutRoomClearsHelpContext)
{
    Caught exception(new CZebException(NotFound, nullptr, 0));
    unsigned int helpContext = 77;
    char buffer[1] = {'#'};
    EXPECT_TRUE(exception->GetErrorMessage(buffer, 0, &helpContext));
    EXPECT_EQ(helpContext, 0u);
    EXPECT_EQ(buffer[0], '#');
}

TEST(Exception, DescriptionIsCutAt1024Bytes)
{
    MapiMemory memory;
    ErrorObject object;
    object.error = memory.NewMapiError(1, std::string(3000, 'e').c_str(), "zeb", 0, 0);
    Caught caught = Catch([&] { ThrowIfFailed(NotFound, &object, nullptr, 0); });
    const std::string head = "Ver:1, Error:";
    EXPECT_EQ(Description(caught.get()), head + std::string(1024 - head.size(), 'e'));
}

TEST(Exception, DescriptionWorksForAnyFrameworkException)
{
    class Other : public CException
    {
    public:
        BOOL GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext) override
        {
            EXPECT_EQ(maxChars, 1024u);
            EXPECT_EQ(helpContext, nullptr);
            EXPECT_EQ(std::string(buffer, maxChars), std::string(1024, '\0'));
            std::memcpy(buffer, "other", 5);
            return TRUE;
        }
    };
    Other other;
    EXPECT_EQ(Description(&other), "other");
}

TEST(ErrorNames, EveryRowGivesItsNameOnce)
{
    ASSERT_EQ(ErrorNameCount, 67u);
    std::set<std::string> names;
    for (size_t i = 0; i < ErrorNameCount; ++i)
    {
        const ErrorName& row = ErrorNames[i];
        Caught exception(new CZebException(static_cast<LONG>(row.code), nullptr, 0));
        EXPECT_EQ(Description(exception.get()), row.name);
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_EQ(std::string(row.name, 7), row.name[5] == 'W' ? "MAPI_W_" : "MAPI_E_");
        EXPECT_EQ(static_cast<LONG>(row.code) < 0, row.name[5] == 'E') << row.name;
    }
}

TEST(ErrorNames, HavePublishedValuesInTableOrder)
{
    static_assert(sizeof(ErrorName) == 52, "a code and 48 characters");
    const ULONG published[] = {
        0x80004005, 0x8007000E, 0x80070057, 0x80004002, 0x80070005, 0x80040102, 0x80040103, 0x80040105, 0x80040106,
        0x80040107, 0x80040108, 0x80040109, 0x8004010A, 0x8004010B, 0x8004010D, 0x8004010E, 0x8004010F, 0x80040110,
        0x80040111, 0x80040112, 0x80040113, 0x80040114, 0x80040115, 0x80040116, 0x80040117, 0x80040118, 0x80040119,
        0x8004011A, 0x8004011B, 0x8004011C, 0x8004011D, 0x80040200, 0x80040201, 0x80040202, 0x00040203, 0x80040301,
        0x80040302, 0x80040303, 0x80040304, 0x80040305, 0x80040306, 0x80040307, 0x00040380, 0x80040400, 0x80040401,
        0x80040402, 0x80040403, 0x80040405, 0x00040481, 0x00040482, 0x80040500, 0x80040501, 0x80040502, 0x00040580,
        0x80040600, 0x80040601, 0x80040602, 0x80040604, 0x80040605, 0x80040606, 0x80040607, 0x80040608, 0x80040609,
        0x8004060A, 0x8004060B, 0x00040680, 0x80040700};
    ASSERT_EQ(std::size(published), ErrorNameCount);
    for (size_t i = 0; i < ErrorNameCount; ++i)
    {
        EXPECT_EQ(ErrorNames[i].code, published[i]) << ErrorNames[i].name;
    }
    EXPECT_STREQ(ErrorNames[0].name, "MAPI_E_CALL_FAILED");
    EXPECT_STREQ(ErrorNames[66].name, "MAPI_E_AMBIGUOUS_RECIP");
}

TEST(Guarded, SaysWhetherTheBodyEnded)
{
    LogCapture log;
    bool ran = false;
    EXPECT_TRUE(Guarded([&ran] { ran = true; }, "site", 1));
    EXPECT_TRUE(ran);
    EXPECT_TRUE(log.Lines().empty());
}

TEST(Guarded, LogsAndDeletesAFrameworkException)
{
    LogCapture log;
    EXPECT_FALSE(Guarded([] { ThrowIfFailed(NotFound, "x", 12); }, "site", 21));
    EXPECT_THAT(log.Lines(),
                ElementsAre(Line(1, "THROW Exception 0x8004010f (MAPI_E_NOT_FOUND), File x, line 12"),
                            Line(1, "EXCEPTION: Description: \"MAPI_E_NOT_FOUND\", File: \"site\", Line: 21")));

    struct Counted : CException
    {
        explicit Counted(int& deleted)
            : m_deleted(deleted)
        {
        }
        ~Counted() override { ++m_deleted; }
        int& m_deleted;
    };
    int deleted = 0;
    EXPECT_FALSE(Guarded([&deleted] { throw static_cast<CException*>(new Counted(deleted)); }, "site", 22));
    EXPECT_EQ(deleted, 1);
    EXPECT_EQ(log.Texts().back(), "EXCEPTION: Description: \"\", File: \"site\", Line: 22");
}

TEST(Guarded, LogsComErrorsWithTheirResult)
{
    LogCapture log;
    EXPECT_FALSE(Guarded([] { RaiseComError(E_POINTER); }, "site", 3));
    EXPECT_THAT(log.Lines(), ElementsAre(Line(1, "EXCEPTION: _com_error: 0x80004003, File: \"site\", Line: 3")));
    EXPECT_FALSE(Guarded([] { RaiseComError(static_cast<HRESULT>(0xDEADBEEF)); }, "site", 4));
    EXPECT_EQ(log.Texts().back(), "EXCEPTION: _com_error: 0xDEADBEEF, File: \"site\", Line: 4");
}

TEST(Guarded, LogsAnythingElseAsUnknown)
{
    LogCapture log;
    EXPECT_FALSE(Guarded([] { throw 42; }, "a%sb", 4));
    EXPECT_FALSE(Guarded([] { throw std::runtime_error("text"); }, "site", 5));
    EXPECT_THAT(log.Lines(), ElementsAre(Line(1, "EXCEPTION: Description: <Unknown>, File: \"a%sb\", Line: 4"),
                                         Line(1, "EXCEPTION: Description: <Unknown>, File: \"site\", Line: 5")));
}

TEST(Guarded, LackOfMemoryThrowsNothing)
{
    auto exception = std::make_unique<CZebException>(NotFound, nullptr, 0);
    FailingNew failing;
    EXPECT_FALSE(Guarded([&exception] { throw static_cast<CException*>(exception.release()); }, "site", 6));
}

} // namespace zeb::test
