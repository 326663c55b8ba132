// Properties of 100 MB: written as a value or through a stream, read back whole, nothing half-written.
#include "tests/integration/Host.h"

#include <cstring>
#include <filesystem>

namespace zeb::test
{
namespace
{

using Wide = std::basic_string<WCHAR>;
constexpr size_t Size = 100'000'000;

class LargeProperty : public StoreHost
{
protected:
    static std::string Bytes()
    {
        std::string bytes(Size, '\0');
        for (size_t i = 0; i < Size; i += 4)
        {
            std::memcpy(&bytes[i], &i, 4);
        }
        return bytes;
    }
    static std::string Text()
    {
        std::string text = "0123456789abcdefghijklmnopqrstuvwxyz\r\n";
        while (text.size() < Size)
        {
            text += text.substr(0, Size - text.size());
        }
        return text;
    }
    static Wide WideText()
    {
        Wide text = ZEBW("0123456789 \u00e4\u00f6\u00fc \u4f60\u597d\r\n");
        while (text.size() < Size / sizeof(WCHAR))
        {
            text += text.substr(0, Size / sizeof(WCHAR) - text.size());
        }
        return text;
    }
    /// Writes, saves, reads through a stream, and finds the value too large for GetProps.
    CZebMessage Saved(CZebMessage message, ULONG tag)
    {
        message.SaveChanges(KEEP_OPEN_READWRITE);
        CZebMessage again = Opened<CZebMessage>(message.GetEntryID());
        CZebPropValArray values;
        again.GetProps(values, 1, tag);
        const SPropValue& value = static_cast<const SPropValue&>(values.GetAt(0));
        EXPECT_EQ(PROP_TYPE(value.ulPropTag), static_cast<ULONG>(PT_ERROR));
        EXPECT_EQ(value.Value.err, MAPI_E_NOT_ENOUGH_MEMORY);
        return again;
    }
    template <class Value>
    CZebMessage ByValue(ULONG tag, const Value& value)
    {
        CZebMessage message = Inbox().CreateMessage(0);
        CZebPropValArray values(1);
        values[tag] = value;
        message.SetProps(values, false, nullptr);
        return Saved(message, tag);
    }
    CZebMessage ByStream(ULONG tag, const void* bytes)
    {
        CZebMessage message = Inbox().CreateMessage(0);
        const CComPtr<IStream> stream = message.OpenProperty(tag, MAPI_CREATE | MAPI_MODIFY);
        ThrowIfFailed(stream->Write(bytes, Size, nullptr));
        ThrowIfFailed(stream->Commit(STGC_DEFAULT));
        return Saved(message, tag);
    }
    static bool Holds(const CComPtr<IStream>& stream, const std::string& bytes)
    {
        std::string read(bytes.size() + 1, '\0');
        ULONG got = 0;
        ThrowIfFailed(stream->Read(&read[0], static_cast<ULONG>(read.size()), &got));
        return got == bytes.size() && std::memcmp(read.data(), bytes.data(), got) == 0;
    }
};

TEST_F(LargeProperty, BinaryComesBack)
{
    const std::string bytes = Bytes();
    const SBinary binary{static_cast<ULONG>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
    EXPECT_TRUE(Holds(ByValue(PR_RTF_COMPRESSED, binary).OpenProperty(PR_RTF_COMPRESSED, 0), bytes));
    EXPECT_TRUE(Holds(ByStream(PR_RTF_COMPRESSED, bytes.data()).OpenProperty(PR_RTF_COMPRESSED, 0), bytes));
}

TEST_F(LargeProperty, NarrowTextComesBack)
{
    const std::string text = Text();
    EXPECT_TRUE(ByValue(PR_BODY_A, text.c_str()).GetLongString(PR_BODY_A).GetString() == text);
    EXPECT_TRUE(ByStream(PR_BODY_A, text.data()).GetLongString(PR_BODY_A).GetString() == text);
}

TEST_F(LargeProperty, WideTextComesBack)
{
    const Wide text = WideText();
    EXPECT_TRUE(ByValue(PR_BODY_W, text.c_str()).GetLongStringW(PR_BODY_W).GetString() == text);
    EXPECT_TRUE(ByStream(PR_BODY_W, text.data()).GetLongStringW(PR_BODY_W).GetString() == text);
}

TEST_F(LargeProperty, UnsavedLeavesNothingInTheStore)
{
    const auto size = std::filesystem::file_size(File("test.zeb"));
    {
        const std::string text = Text();
        CZebMessage message = Inbox().CreateMessage(0);
        CZebPropValArray values(1);
        values[PR_BODY_A] = text.c_str();
        message.SetProps(values, false, nullptr);
        const CComPtr<IStream> stream = message.OpenProperty(PR_RTF_COMPRESSED, MAPI_CREATE | MAPI_MODIFY);
        ThrowIfFailed(stream->Write(text.data(), Size, nullptr));
        ThrowIfFailed(stream->Commit(STGC_DEFAULT));
    }
    EXPECT_EQ(Contents().GetRowCount(), 0u);
    LogOff();
    EXPECT_LT(std::filesystem::file_size(File("test.zeb")), size + 1'000'000);
}

TEST_F(LargeProperty, BeyondTwoGigabytesIsRefused)
{
    CZebMessage message = Inbox().CreateMessage(0);
    const CComPtr<IStream> stream = message.OpenProperty(PR_BODY_A, MAPI_CREATE | MAPI_MODIFY);
    ThrowIfFailed(stream->Write("kept", 4, nullptr));
    ULARGE_INTEGER size;
    size.QuadPart = 0x80000000;
    EXPECT_EQ(stream->SetSize(size), STG_E_MEDIUMFULL);
    LARGE_INTEGER end;
    end.QuadPart = 0x7FFFFFFF;
    ThrowIfFailed(stream->Seek(end, STREAM_SEEK_SET, nullptr));
    EXPECT_EQ(stream->Write("more", 4, nullptr), STG_E_MEDIUMFULL);
    ThrowIfFailed(stream->Commit(STGC_DEFAULT));
    message.SaveChanges(KEEP_OPEN_READWRITE);
    EXPECT_STREQ(Opened<CZebMessage>(message.GetEntryID()).GetLongString(PR_BODY_A), "kept");
}

} // namespace
} // namespace zeb::test
