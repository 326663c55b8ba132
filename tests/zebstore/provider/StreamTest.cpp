#include "tests/zebstore/provider/ProviderFixture.h"
#include "zebstore/objects/PropStream.h"

#include <cstring>
#include <fstream>

namespace zebstore
{
namespace
{

LARGE_INTEGER At(LONGLONG offset)
{
    LARGE_INTEGER result;
    result.QuadPart = offset;
    return result;
}

ULARGE_INTEGER SizeOf(ULONGLONG size)
{
    ULARGE_INTEGER result;
    result.QuadPart = size;
    return result;
}

class Streams : public Provider
{
protected:
    static Ref<IStream> OpenStream(IMAPIProp& object, ULONG tag, ULONG flags, HRESULT expected = S_OK)
    {
        IUnknown* stream = nullptr;
        EXPECT_EQ(
            object.OpenProperty(tag, &IID_IStream, flags & MAPI_MODIFY ? STGM_READWRITE : STGM_READ, flags, &stream),
            expected);
        return Ref<IStream>::Adopt(static_cast<IStream*>(stream));
    }

    static std::string ReadAll(IMAPIProp& object, ULONG tag)
    {
        const Ref<IStream> stream = OpenStream(object, tag, 0);
        STATSTG stat;
        EXPECT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
        std::string bytes(static_cast<size_t>(stat.cbSize.QuadPart), 0);
        ULONG read = 0;
        EXPECT_EQ(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read), S_OK);
        EXPECT_EQ(read, bytes.size());
        return bytes;
    }

    static void Write(IStream& stream, const std::string& bytes)
    {
        ULONG written = 0;
        EXPECT_EQ(stream.Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
        EXPECT_EQ(written, bytes.size());
    }
};

TEST_F(Streams, WriteValuesThatGetPropsRefuses)
{
    const std::string body(300000, 'x');
    const Ref<IMessage> message = NewMessage(*Inbox());
    {
        const Ref<IStream> stream = OpenStream(*message, PR_BODY_A, MAPI_CREATE | MAPI_MODIFY);
        for (size_t at = 0; at < body.size(); at += 1000)
        {
            Write(*stream, body.substr(at, 1000));
        }
        EXPECT_EQ(stream->Commit(0), S_OK);
    }
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Ref<IMessage> again = OpenMessage(GetBytes(message.Get(), PR_ENTRYID));
    HRESULT code = S_OK;
    Get(again.Get(), PR_BODY_A, &code);
    EXPECT_EQ(code, MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ReadAll(*again, PR_BODY_A), body);
    EXPECT_EQ(ReadAll(*again, PR_BODY_W).size(), 2 * body.size());
}

TEST_F(Streams, NeedNoCommitBeforeTheSave)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const Ref<IStream> open = OpenStream(*message, PR_BODY_A, MAPI_CREATE | MAPI_MODIFY);
    Write(*open, "still open");
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetText(message.Get(), PR_BODY_A), "still open");
    {
        const Ref<IStream> released = OpenStream(*message, PR_BODY_A, MAPI_CREATE | MAPI_MODIFY);
        Write(*released, "released");
    }
    EXPECT_EQ(GetText(message.Get(), PR_BODY_A), "released");
}

TEST_F(Streams, OutliveTheHandleOfTheirObject)
{
    Ref<IStream> stream;
    {
        const Ref<IMessage> message = NewMessage(*Inbox());
        stream = OpenStream(*message, PR_BODY_A, MAPI_CREATE | MAPI_MODIFY);
    }
    Write(*stream, "nobody sees it");
    EXPECT_EQ(stream->Commit(0), S_OK);
}

TEST_F(Streams, ReadSeekCutAndGrow)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const ULONG tag = PROP_TAG(PT_BINARY, 0x6601);
    const Ref<IStream> stream = OpenStream(*message, tag, MAPI_CREATE | MAPI_MODIFY);
    Write(*stream, "0123456789");
    ULARGE_INTEGER position;
    EXPECT_EQ(stream->Seek(At(-4), STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 6u);
    char buffer[8] = {};
    ULONG read = 0;
    EXPECT_EQ(stream->Read(buffer, 8, &read), S_FALSE);
    EXPECT_EQ(read, 4u);
    EXPECT_STREQ(buffer, "6789");
    EXPECT_EQ(stream->Seek(At(-1), STREAM_SEEK_SET, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->SetSize(SizeOf(3)), S_OK);
    EXPECT_EQ(stream->SetSize(SizeOf(5)), S_OK);
    EXPECT_EQ(stream->Commit(0), S_OK);
    EXPECT_EQ(GetBytes(message.Get(), tag), Bytes({'0', '1', '2', 0, 0}));
    EXPECT_EQ(stream->Seek(At(7), STREAM_SEEK_SET, nullptr), S_OK);
    Write(*stream, "x");
    EXPECT_EQ(stream->Commit(0), S_OK);
    EXPECT_EQ(GetBytes(message.Get(), tag), Bytes({'0', '1', '2', 0, 0, 0, 0, 'x'}));
    EXPECT_EQ(stream->Revert(), MAPI_E_NO_SUPPORT);
}

TEST_F(Streams, SeekRelativelyAndBeyondTheEnd)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "0123456789")), S_OK);
    const Ref<IStream> stream = OpenStream(*message, PR_BODY_A, 0);
    char byte = 0;
    ULONG read = 0;
    ULARGE_INTEGER position;
    EXPECT_EQ(stream->Read(&byte, 1, nullptr), S_OK);
    EXPECT_EQ(stream->Seek(At(3), STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 4u);
    EXPECT_EQ(stream->Read(&byte, 1, nullptr), S_OK);
    EXPECT_EQ(byte, '4');
    EXPECT_EQ(stream->Seek(At(-6), STREAM_SEEK_CUR, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->Seek(At(-2), STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 3u);
    EXPECT_EQ(stream->Seek(At(100), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(stream->Read(&byte, 1, &read), S_FALSE);
    EXPECT_EQ(read, 0u);
    for (const DWORD origin : {STREAM_SEEK_SET, STREAM_SEEK_CUR, STREAM_SEEK_END})
    {
        EXPECT_EQ(stream->Seek(At((LONGLONG(1) << 62) + 1), origin, nullptr), STG_E_INVALIDFUNCTION);
    }
    EXPECT_EQ(stream->Seek(At(0), STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 100u);
}

TEST_F(Streams, ThatAreUnwrittenMakeEmptyValues)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const ULONG tag = PROP_TAG(PT_BINARY, 0x6604);
    OpenStream(*message, tag, MAPI_CREATE | MAPI_MODIFY);
    HRESULT code = S_OK;
    const auto value = Get(message.Get(), tag, &code);
    ASSERT_EQ(code, S_OK);
    EXPECT_EQ(value->Value.bin.cb, 0u);
}

TEST_F(Streams, TakeTheStoredType)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "Hello")), S_OK);
    EXPECT_EQ(ReadAll(*message, PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_BODY))), "Hello");
}

TEST_F(Streams, OnAttachedObjectsShowTheirBytes)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    ULONG number = 0;
    IAttach* made = nullptr;
    ASSERT_EQ(message->CreateAttach(nullptr, 0, &number, &made), S_OK);
    const Ref<IAttach> attachment = Ref<IAttach>::Adopt(made);
    EXPECT_EQ(Set(attachment.Get(), LongValue(PR_ATTACH_METHOD, ATTACH_OLE)), S_OK);
    Write(*OpenStream(*attachment, PR_ATTACH_DATA_OBJ, MAPI_CREATE | MAPI_MODIFY), "object");
    EXPECT_EQ(ReadAll(*attachment, PR_ATTACH_DATA_OBJ), "object");
    EXPECT_EQ(ReadAll(*attachment, PR_ATTACH_DATA_BIN), "object");
}

TEST_F(Streams, SayWhetherTheyCanBeWritten)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "Hello")), S_OK);
    STATSTG stat;
    EXPECT_EQ(OpenStream(*message, PR_BODY_A, 0)->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.grfMode, DWORD(STGM_READ));
    EXPECT_EQ(stat.type, DWORD(STGTY_STREAM));
    EXPECT_EQ(OpenStream(*message, PR_BODY_A, MAPI_MODIFY)->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.grfMode, DWORD(STGM_READWRITE));
}

TEST_F(Streams, GrowToTwoGigabytesOnly)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const Ref<IStream> stream = OpenStream(*message, PROP_TAG(PT_BINARY, 0x6605), MAPI_CREATE | MAPI_MODIFY);
    EXPECT_EQ(stream->SetSize(SizeOf(0x80000000)), STG_E_MEDIUMFULL);
    EXPECT_EQ(stream->Seek(At(0x7FFFFFFF), STREAM_SEEK_SET, nullptr), S_OK);
    ULONG written = 1;
    EXPECT_EQ(stream->Write("x", 1, &written), STG_E_MEDIUMFULL);
    EXPECT_EQ(written, 0u);
    STATSTG stat;
    EXPECT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.cbSize.QuadPart, 0u);
}

TEST(StreamValues, ThatEndEarlyAreRefused)
{
    class Short : public LargeValue
    {
    public:
        std::uint64_t Size() const override { return 10; }
        size_t Read(std::uint64_t, void*, size_t) const override { return 0; }
    };
    PropertySet properties;
    HRESULT code = S_OK;
    try
    {
        SetFromBytes(properties, PR_BODY_A, Short());
    }
    catch (const Error& error)
    {
        code = error.Code();
    }
    EXPECT_EQ(code, MAPI_E_CORRUPT_DATA);
    EXPECT_TRUE(properties.IsEmpty());
}

TEST_F(Streams, ChangeAnExistingValueInPlace)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "Hello world")), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Ref<IStream> stream = OpenStream(*message, PR_BODY_A, MAPI_MODIFY);
    EXPECT_EQ(stream->Seek(At(6), STREAM_SEEK_SET, nullptr), S_OK);
    Write(*stream, "there");
    EXPECT_EQ(stream->Commit(0), S_OK);
    EXPECT_EQ(GetText(message.Get(), PR_BODY_A), "Hello there");
    OpenStream(*message, PROP_TAG(PT_BINARY, 0x1013), MAPI_MODIFY, MAPI_E_NOT_FOUND);
}

TEST_F(Streams, CopyToEachOther)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "Hello world")), S_OK);
    const Ref<IStream> source = OpenStream(*message, PR_BODY_A, 0);
    {
        const Ref<IStream> target = OpenStream(*message, PROP_TAG(PT_STRING8, 0x6602), MAPI_CREATE | MAPI_MODIFY);
        ULARGE_INTEGER read;
        ULARGE_INTEGER written;
        EXPECT_EQ(source->CopyTo(target.Get(), SizeOf(5), &read, &written), S_OK);
        EXPECT_EQ(read.QuadPart, 5u);
        EXPECT_EQ(written.QuadPart, 5u);
    }
    EXPECT_EQ(GetText(message.Get(), PROP_TAG(PT_STRING8, 0x6602)), "Hello");
    IStream* clone = nullptr;
    ASSERT_EQ(source->Clone(&clone), S_OK);
    char rest[16] = {};
    ULONG got = 0;
    EXPECT_EQ(clone->Read(rest, 16, &got), S_FALSE);
    clone->Release();
    EXPECT_STREQ(rest, " world");
    EXPECT_EQ(source->CopyTo(nullptr, SizeOf(5), nullptr, nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(Streams, CopySeveralPiecesToEachOther)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const ULONG from = PROP_TAG(PT_BINARY, 0x6606);
    const ULONG to = PROP_TAG(PT_BINARY, 0x6607);
    std::string bytes(200000, '\0');
    for (size_t i = 0; i < bytes.size(); ++i)
    {
        bytes[i] = static_cast<char>(i % 251);
    }
    Write(*OpenStream(*message, from, MAPI_CREATE | MAPI_MODIFY), bytes);
    const Ref<IStream> source = OpenStream(*message, from, 0);
    ULARGE_INTEGER read;
    ULARGE_INTEGER written;
    EXPECT_EQ(
        source->CopyTo(OpenStream(*message, to, MAPI_CREATE | MAPI_MODIFY).Get(), SizeOf(300000), &read, &written),
        S_OK);
    EXPECT_EQ(read.QuadPart, bytes.size());
    EXPECT_EQ(written.QuadPart, bytes.size());
    EXPECT_EQ(ReadAll(*message, to), bytes);
}

TEST_F(Streams, OpenedForReadingRefuseWrites)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "Hello")), S_OK);
    const Ref<IStream> stream = OpenStream(*message, PR_BODY_A, 0);
    EXPECT_EQ(stream->Write("x", 1, nullptr), STG_E_ACCESSDENIED);
    EXPECT_EQ(stream->SetSize(SizeOf(0)), STG_E_ACCESSDENIED);
    EXPECT_EQ(GetText(message.Get(), PR_BODY_A), "Hello");
}

TEST_F(Streams, NeedTheirPointers)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "Hello")), S_OK);
    const Ref<IStream> stream = OpenStream(*message, PR_BODY_A, MAPI_MODIFY);
    ULONG count = 7;
    EXPECT_EQ(stream->Read(nullptr, 1, &count), STG_E_INVALIDPOINTER);
    EXPECT_EQ(count, 0u);
    count = 7;
    EXPECT_EQ(stream->Write(nullptr, 1, &count), STG_E_INVALIDPOINTER);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(stream->Stat(nullptr, STATFLAG_NONAME), STG_E_INVALIDPOINTER);
    EXPECT_EQ(stream->Clone(nullptr), STG_E_INVALIDPOINTER);
    EXPECT_EQ(stream->CopyTo(nullptr, SizeOf(1), nullptr, nullptr), STG_E_INVALIDPOINTER);
    EXPECT_EQ(stream->Seek(At(0), 3, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->Seek(At(-(LONGLONG(1) << 62) - 1), STREAM_SEEK_END, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->LockRegion(SizeOf(0), SizeOf(1), 0), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->UnlockRegion(SizeOf(0), SizeOf(1), 0), STG_E_INVALIDFUNCTION);
}

TEST_F(Streams, OpenedForReadingHaveNothingToCommit)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_BODY_A, "Hello")), S_OK);
    const Ref<IStream> stream = OpenStream(*message, PR_BODY_A, 0);
    EXPECT_EQ(stream->Commit(0), S_OK);
    const Ref<IStream> target = OpenStream(*message, PROP_TAG(PT_STRING8, 0x6606), MAPI_CREATE | MAPI_MODIFY);
    EXPECT_EQ(stream->CopyTo(target.Get(), SizeOf(5), nullptr, nullptr), S_OK);
    EXPECT_EQ(target->Commit(0), S_OK);
    EXPECT_EQ(GetText(message.Get(), PROP_TAG(PT_STRING8, 0x6606)), "Hello");
}

TEST_F(Streams, NeedTextOrBinary)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    OpenStream(*message, PR_MESSAGE_FLAGS, 0, MAPI_E_INTERFACE_NOT_SUPPORTED);
    OpenStream(*message, PR_BODY_A, 0, MAPI_E_NOT_FOUND);
    OpenStream(*message, PR_ENTRYID, MAPI_CREATE | MAPI_MODIFY, MAPI_E_COMPUTED);
    IUnknown* stream = nullptr;
    EXPECT_EQ(message->OpenProperty(PR_BODY_A, nullptr, 0, 0, &stream), MAPI_E_INTERFACE_NOT_SUPPORTED);
}

TEST_F(Streams, OnAFolderSaveAtCommit)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const ULONG tag = PROP_TAG(PT_BINARY, 0x6603);
    const Ref<IStream> stream = OpenStream(*inbox, tag, MAPI_CREATE | MAPI_MODIFY);
    Write(*stream, "abc");
    EXPECT_EQ(stream->Commit(0), S_OK);
    EXPECT_EQ(GetBytes(Inbox().Get(), tag), Bytes({'a', 'b', 'c'}));
}

TEST_F(Streams, OnFilesReadAndWrite)
{
    const std::string path = m_folder.File("file.bin");
    IStream* opened = nullptr;
    EXPECT_EQ(OpenStreamOnFile(MAPIAllocateBuffer, MAPIFreeBuffer, STGM_READ, Text(path.c_str()), nullptr, &opened),
              MAPI_E_NOT_FOUND);
    ASSERT_EQ(OpenStreamOnFile(MAPIAllocateBuffer, MAPIFreeBuffer, STGM_CREATE | STGM_READWRITE, Text(path.c_str()),
                               nullptr, &opened),
              S_OK);
    Write(*opened, "0123456789");
    EXPECT_EQ(opened->Seek(At(2), STREAM_SEEK_SET, nullptr), S_OK);
    char read[4] = {};
    EXPECT_EQ(opened->Read(read, 3, nullptr), S_OK);
    EXPECT_STREQ(read, "234");
    EXPECT_EQ(opened->SetSize(SizeOf(4)), S_OK);
    opened->Release();
    std::ifstream file(path, std::ios::binary);
    std::string content;
    std::getline(file, content);
    EXPECT_EQ(content, "0123");
    EXPECT_EQ(OpenStreamOnFile(MAPIAllocateBuffer, MAPIFreeBuffer, STGM_CREATE | STGM_READWRITE,
                               Text((path + "/below").c_str()), nullptr, &opened),
              MAPI_E_NO_ACCESS);
}

TEST_F(Streams, OnFilesMayBeWrittenBeyondTheirEnd)
{
    const std::string path = m_folder.File("beyond.bin");
    IStream* opened = nullptr;
    ASSERT_EQ(OpenStreamOnFile(MAPIAllocateBuffer, MAPIFreeBuffer, STGM_CREATE | STGM_READWRITE, Text(path.c_str()),
                               nullptr, &opened),
              S_OK);
    EXPECT_EQ(opened->Seek(At(3), STREAM_SEEK_SET, nullptr), S_OK);
    Write(*opened, "x");
    opened->Release();
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), std::string("\0\0\0x", 4));
    EXPECT_EQ(OpenStreamOnFile(MAPIAllocateBuffer, MAPIFreeBuffer, STGM_READ, nullptr, nullptr, &opened),
              MAPI_E_INVALID_PARAMETER);
}

TEST_F(Streams, OnUniqueFilesMayRemoveThem)
{
    IStream* opened = nullptr;
    const std::string folder = m_folder.File("temp/x");
    const std::string inside = folder.substr(0, folder.size() - 2);
    ASSERT_EQ(OpenStreamOnFile(MAPIAllocateBuffer, MAPIFreeBuffer, SOF_UNIQUEFILENAME | STGM_DELETEONRELEASE,
                               Text(inside.c_str()), Text("ABC"), &opened),
              S_OK);
    Write(*opened, "x");
    EXPECT_FALSE(std::filesystem::is_empty(inside));
    opened->Release();
    EXPECT_TRUE(std::filesystem::is_empty(inside));
}

} // namespace
} // namespace zebstore
