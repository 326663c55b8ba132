// Texts and binaries of every length through streams.
#include "tests/integration/Host.h"

namespace zeb::test
{
namespace
{

using Wide = std::basic_string<WCHAR>;

class LongText : public StoreHost
{
protected:
    static void Write(CZebIProp& object, ULONG tag, const void* bytes, size_t size)
    {
        const CComPtr<IStream> stream = object.OpenProperty(tag, MAPI_CREATE | MAPI_MODIFY);
        ULONG written = 0;
        ThrowIfFailed(stream->Write(bytes, static_cast<ULONG>(size), &written));
        EXPECT_EQ(written, size);
        ThrowIfFailed(stream->Commit(STGC_DEFAULT));
    }
    CZebMessage Saved(ULONG tag, const void* bytes, size_t size)
    {
        CZebMessage message = Inbox().CreateMessage(0);
        Write(message, tag, bytes, size);
        message.SaveChanges(KEEP_OPEN_READWRITE);
        return Opened<CZebMessage>(message.GetEntryID());
    }
    static std::string Text(size_t size)
    {
        std::string text(size, ' ');
        for (size_t i = 0; i < size; ++i)
        {
            text[i] = static_cast<char>('a' + i % 23);
        }
        return text;
    }
    /// The bytes of a stream, read in pieces.
    static std::string Bytes(const CComPtr<IStream>& stream)
    {
        std::string all;
        char piece[4096];
        for (ULONG got = 1; got != 0;)
        {
            ThrowIfFailed(stream->Read(piece, sizeof piece, &got));
            all.append(piece, got);
        }
        return all;
    }
};

TEST_F(LongText, NarrowTextOfEveryLengthReturns)
{
    for (const size_t size : {0u, 1u, 7u, 65'535u, 10'000'000u})
    {
        const std::string text = Text(size);
        CZebMessage message = Saved(PR_BODY_A, text.data(), text.size());
        EXPECT_TRUE(message.GetLongStringA(PR_BODY_A).GetString() == text) << size;
        EXPECT_TRUE(message.GetLongString(PR_BODY_A).GetString() == text) << size;
        EXPECT_TRUE(message.GetLongStringW(PR_BODY_W).GetString() == Wide(text.begin(), text.end())) << size;
    }
}

TEST_F(LongText, WideTextOfEveryLengthReturns)
{
    for (const size_t length : {0u, 1u, 7u, 32'768u, 5'000'000u})
    {
        Wide text(length, WCHAR(0));
        for (size_t i = 0; i < length; ++i)
        {
            text[i] = static_cast<WCHAR>(0x4E00 + i % 0x1000);
        }
        CZebMessage message = Saved(PR_BODY_W, text.data(), text.size() * sizeof(WCHAR));
        EXPECT_TRUE(message.GetLongStringW(PR_BODY_W).GetString() == text) << length;
    }
}

TEST_F(LongText, HalfAWideCharacterIsDropped)
{
    for (const size_t length : {3u, 32'767u})
    {
        const Wide text(length + 1, WCHAR('w'));
        CZebMessage message = Saved(PR_BODY_W, text.data(), 2 * length + 1);
        EXPECT_TRUE(message.GetLongStringW(PR_BODY_W).GetString() == text.substr(1)) << length;
    }
}

TEST_F(LongText, ArraysAndStreamsExchangeText)
{
    const std::string text = Text(300'000);
    CZebPropValArray values(1);
    values[PR_BODY_A] = text.c_str();
    CZebMessage message = Inbox().CreateMessage(values, true, 0);
    EXPECT_TRUE(Opened<CZebMessage>(message.GetEntryID()).GetLongString(PR_BODY_A).GetString() == text);
    Write(message, PR_BODY_A, "short", 5);
    message.SaveChanges(KEEP_OPEN_READWRITE);
    EXPECT_STREQ(Opened<CZebMessage>(message.GetEntryID()).GetStringProp(PR_BODY_A), "short");
}

TEST_F(LongText, Above64KilobytesNeedsAStream)
{
    for (const size_t size : {4'096u, 4'098u, 65'536u, 65'538u})
    {
        const bool given = size <= 65'536;
        const std::string text = Text(size);
        const Wide wide(size / 2, WCHAR(0x4F60));
        CZebPropValArray values(3);
        values[PR_BODY_A] = text.c_str();
        values[PR_COMMENT_W] = wide.c_str();
        values[PR_RTF_COMPRESSED] =
            SBinary{static_cast<ULONG>(size), reinterpret_cast<BYTE*>(const_cast<char*>(text.data()))};
        CZebMessage message = Opened<CZebMessage>(Inbox().CreateMessage(values, true, 0).GetEntryID());
        CZebPropValArray read;
        message.GetProps(read, 3, PR_BODY_A, PR_COMMENT_W, PR_RTF_COMPRESSED);
        for (const ULONG tag : {PR_BODY_A, PR_COMMENT_W, PR_RTF_COMPRESSED})
        {
            EXPECT_EQ(read.hasRealValue(tag), given) << size;
        }
        EXPECT_TRUE(message.GetStringPropA(PR_BODY_A).GetString() == (given ? text : "")) << size;
        EXPECT_TRUE(message.GetStringPropW(PR_COMMENT_W).GetString() == (given ? wide : Wide())) << size;
        EXPECT_TRUE(message.GetLongStringW(PR_COMMENT_W).GetString() == wide) << size;
        if (!given)
        {
            EXPECT_EQ(static_cast<const SPropValue&>(read.GetAt(0)).Value.err, MAPI_E_NOT_ENOUGH_MEMORY);
            EXPECT_EQ(FailureOf([&] { message.GetBin(PR_RTF_COMPRESSED); }).result, MAPI_E_INVALID_TYPE);
            continue;
        }
        EXPECT_EQ(static_cast<const SBinary&>(read.GetAt(2)).cb, size);
        EXPECT_TRUE(Bytes(message.OpenProperty(PR_RTF_COMPRESSED, 0)) == text);
    }
}

TEST_F(LongText, MissingAndOtherPropertiesAreRefused)
{
    CZebPropValArray values(1);
    values[PR_IMPORTANCE] = static_cast<LONG>(1);
    CZebMessage message = Inbox().CreateMessage(values, true, 0);
    EXPECT_EQ(FailureOf([&] { message.GetLongString(PR_BODY_A); }).result, MAPI_E_NOT_FOUND);
    const Failure thrown = FailureOf([&] { message.GetLongString(PR_IMPORTANCE); });
    EXPECT_EQ(thrown.result, MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_NE(thrown.text.find("binary and text"), std::string::npos) << thrown.text;
}

TEST_F(LongText, AReadingStreamRefusesWrites)
{
    CZebMessage message = Saved(PR_BODY_A, "text", 4);
    const CComPtr<IStream> stream = message.OpenProperty(PR_BODY_A, 0);
    EXPECT_EQ(stream->Write("more", 4, nullptr), STG_E_ACCESSDENIED);
    EXPECT_EQ(Bytes(stream), "text");
}

TEST_F(LongText, BinariesOfEveryLengthComeBack)
{
    for (const size_t size : {0u, 1u, 65'535u, 1'000'000u})
    {
        std::string bytes = Text(size);
        if (size > 1)
        {
            bytes[size / 2] = '\0';
        }
        CZebMessage message = Saved(PR_RTF_COMPRESSED, bytes.data(), bytes.size());
        EXPECT_TRUE(Bytes(message.OpenProperty(PR_RTF_COMPRESSED, 0)) == bytes) << size;
    }
}

TEST_F(LongText, UnsavedWritesAreLost)
{
    CZebMessage message = Saved(PR_BODY_A, "kept", 4);
    const std::string text = Text(100'000);
    Write(message, PR_BODY_A, text.data(), text.size());
    EXPECT_TRUE(message.GetLongString(PR_BODY_A).GetString() == text);
    const CZebBinary id = message.GetEntryID();
    message.Free();
    EXPECT_STREQ(Opened<CZebMessage>(id).GetLongString(PR_BODY_A), "kept");
}

} // namespace
} // namespace zeb::test
