#include "ObjectsTest.h"
#include "zebapi/IProp.h"

using namespace zeb::test;

namespace
{

class IPropText : public ObjectsTest
{
protected:
    RecordingProp m_object{m_journal};
    CZebIProp m_prop{&m_object};
};

} // namespace

TEST_F(IPropText, PropertiesAreOpenedAsStreams)
{
    RecordingStream stream(m_journal, "");
    m_object.m_property = &stream;
    EXPECT_EQ(m_prop.OpenProperty(PR_BODY_A, 0).Get(), &stream);
    m_prop.OpenProperty(PR_BODY_A, MAPI_MODIFY | MAPI_CREATE);
    m_prop.OpenProperty(PR_BODY_A, MAPI_CREATE);
    EXPECT_EQ(Calls(),
              (Lines{"prop: OpenProperty(0x1000001E,IStream,0x0,0x0)", "prop: OpenProperty(0x1000001E,IStream,0x2,0x3)",
                     "prop: OpenProperty(0x1000001E,IStream,0x0,0x2)"}));
    EXPECT_EQ(stream.References(), 0u);
}

TEST_F(IPropText, SuccessWithoutAStreamFails)
{
    EXPECT_EQ(Thrown([&] { m_prop.OpenProperty(PR_BODY_A, 0); }), MAPI_E_CALL_FAILED);
}

TEST_F(IPropText, ALongNarrowTextIsWhole)
{
    for (size_t size : {0u, 1u, 7u, 65535u, 10000000u})
    {
        const std::string text(size, 'x');
        RecordingStream stream(m_journal, text);
        m_object.m_property = &stream;
        EXPECT_EQ(Str(m_prop.GetLongStringA(PR_BODY_A)), text) << size;
        EXPECT_EQ(Calls(), (Lines{"prop: OpenProperty(0x1000001E,IStream,0x0,0x0)", "stream: Stat(0x1)",
                                  "stream: Read(" + Number(size) + ",null)"}));
    }
}

TEST_F(IPropText, SevenWideBytesAreThreeCharacters)
{
    RecordingStream stream(m_journal, std::string("a\0b\0c\0d", 7));
    m_object.m_property = &stream;
    EXPECT_EQ(Str(m_prop.GetLongStringW(PR_BODY_W)), u"abc");
    EXPECT_EQ(Calls(),
              (Lines{"prop: OpenProperty(0x1000001F,IStream,0x0,0x0)", "stream: Stat(0x1)", "stream: Read(0x7,null)"}));
}

TEST_F(IPropText, ALongTextEndsAtZero)
{
    RecordingStream zero(m_journal, std::string("ab\0cd", 5));
    m_object.m_property = &zero;
    EXPECT_EQ(Str(m_prop.GetLongString(PR_BODY_A)), "ab");
    RecordingStream shorter(m_journal, "abc");
    shorter.ClaimSize(100);
    m_object.m_property = &shorter;
    EXPECT_EQ(Str(m_prop.GetLongStringA(PR_BODY_A)), "abc");
    RecordingStream shorterWide(m_journal, std::string("a\0b\0", 4));
    shorterWide.ClaimSize(100);
    m_object.m_property = &shorterWide;
    EXPECT_EQ(Str(m_prop.GetLongStringW(PR_BODY_W)), u"ab");
}

TEST_F(IPropText, OversizedTextIsRefusedUnread)
{
    for (unsigned long long size : {0x7FFFFFFFull, 0xFFFFFFFFull, 0x100000000ull, 0x100000005ull, ~0ull})
    {
        RecordingStream stream(m_journal, "abc");
        stream.ClaimSize(size);
        m_object.m_property = &stream;
        EXPECT_EQ(Thrown([&] { m_prop.GetLongStringA(PR_BODY_A); }), MAPI_E_NOT_ENOUGH_MEMORY) << size;
        EXPECT_EQ(Thrown([&] { m_prop.GetLongStringW(PR_BODY_W); }), MAPI_E_NOT_ENOUGH_MEMORY) << size;
    }
    for (const std::string& call : Calls())
    {
        EXPECT_EQ(call.find("Read"), std::string::npos) << call;
    }
}

TEST_F(IPropText, ALongWideTextIsWhole)
{
    for (size_t size : {0u, 1u, 7u, 65535u, 10000000u})
    {
        const std::string bytes(size, 'x');
        RecordingStream stream(m_journal, bytes);
        m_object.m_property = &stream;
        const std::u16string text = Str(m_prop.GetLongStringW(PR_BODY_W));
        EXPECT_EQ(text, std::u16string(size / 2, u'\x7878')) << size;
        EXPECT_EQ(Calls(), (Lines{"prop: OpenProperty(0x1000001F,IStream,0x0,0x0)", "stream: Stat(0x1)",
                                  "stream: Read(" + Number(size) + ",null)"}));
        EXPECT_EQ(stream.References(), 0u);
    }
}

TEST_F(IPropText, AFailingStreamThrowsItsResult)
{
    m_object.m_error = "not the stream's";
    RecordingStream stream(m_journal, "abc");
    stream.Fail("Read", STG_E_READFAULT);
    m_object.m_property = &stream;
    EXPECT_EQ(Thrown([&] { m_prop.GetLongStringA(PR_BODY_A); }), STG_E_READFAULT);
    EXPECT_EQ(Described([&] { m_prop.GetLongStringW(PR_BODY_W); }), "0x8003001E");
    RecordingStream silent(m_journal, "abc");
    silent.Fail("Stat", STG_E_ACCESSDENIED);
    m_object.m_property = &silent;
    EXPECT_EQ(Thrown([&] { m_prop.GetLongStringW(PR_BODY_W); }), STG_E_ACCESSDENIED);
}

TEST_F(IPropText, NothingDumpsAsTwoLines)
{
    m_prop.DumpAllProps();
    EXPECT_EQ(m_log.Lines(), (std::vector<LogLine>{Line(3, "------------------"), Line(3, "------------------")}));
}

TEST_F(IPropText, TheDumpNamesTagsAndTypes)
{
    const std::string percent = "100%s %n\r\nnext";
    m_object.m_bag.Set(PR_SUBJECT_W, percent);
    m_object.m_bag.Set(PR_BODY_A, std::string(300, 'b'));
    m_object.m_bag.Set(PR_OBJECT_TYPE, 5);
    m_object.m_bag.Set(PROP_TAG(PT_LONG, 0x8001), -1);
    m_object.m_bag.Set(PROP_TAG(0x7F, 0x67F0), 0);
    m_object.m_bag.Set(PROP_TAG(PT_OBJECT, 0x3701), 0);
    m_object.m_bag.Set(PROP_TAG(PT_LONG, 0x05), 7);
    m_prop.DumpAllProps();
    const Lines expected = {"------------------",
                            "PR_SUBJECT\tPT_UNICODE\t" + percent,
                            "PR_BODY\tPT_STRING8\t" + std::string(256, 'b'),
                            "PR_OBJECT_TYPE\tPT_LONG\t5",
                            "0X8001\tPT_LONG\t-1",
                            "0X67F0\t0X7F\t<No string conversion>",
                            "PR_ATTACH_DATA_BIN\tPT_OBJECT\t<No string conversion>",
                            "PR_AUTO_FORWARDED\tPT_LONG\t7",
                            "------------------"};
    EXPECT_EQ(m_log.Texts(), expected);
    for (const LogLine& line : m_log.Lines())
    {
        EXPECT_EQ(line.level, 3);
    }
    EXPECT_EQ(Calls().front(), "prop: GetPropList(0x80000000)");
}

TEST_F(IPropText, TheDumpWritesHostileValuesUnchanged)
{
    m_object.m_bag.Set(PR_SUBJECT_A, std::string("%s%n%1$s%"));
    m_object.m_bag.Set(PR_BODY_W, std::string(300, 'w'));
    m_object.m_bag.Set(PR_ENTRYID, std::string(300, '\xAB'));
    m_object.m_bag.Set(PR_DISPLAY_NAME_A, std::string(255, 'n') + "\n\r");
    m_object.m_bag.Set(PR_COMMENT_A, std::string());
    m_prop.DumpAllProps();
    std::string hex;
    for (int i = 0; i < 128; ++i)
    {
        hex += "AB";
    }
    EXPECT_EQ(m_log.Texts(), (Lines{"------------------", "PR_SUBJECT\tPT_STRING8\t%s%n%1$s%",
                                    "PR_BODY\tPT_UNICODE\t" + std::string(256, 'w'), "PR_ENTRYID\tPT_BINARY\t" + hex,
                                    "PR_DISPLAY_NAME\tPT_STRING8\t" + std::string(255, 'n') + "\n",
                                    "PR_COMMENT\tPT_STRING8\t", "------------------"}));
}

TEST_F(IPropText, MissingValuesDumpAsTwoLines)
{
    m_object.m_bag.Set(PR_SUBJECT_A, "s");
    m_object.m_givesNothing = true;
    m_prop.DumpAllProps();
    EXPECT_EQ(m_log.Texts(), (Lines{"------------------", "------------------"}));
}

TEST_F(IPropText, AFailingDumpIsLogged)
{
    m_object.m_bag.Set(PR_SUBJECT_A, "s");
    m_object.Fail("GetProps", MAPI_E_NO_ACCESS);
    m_prop.DumpAllProps();
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(m_log.CountBeginning("---"), 0u);
    CZebIProp().DumpAllProps();
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: _com_error: 0x80004003, File: \""), 1u);
}
