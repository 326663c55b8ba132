#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/Database.h"
#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/Text.h"
#include "zebstore/storage/ValueBuilder.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace zebstore::test
{
namespace
{

class LargeValueTest : public StorageTest
{
protected:
    static std::string Bytes(size_t size)
    {
        std::string bytes(size, '\0');
        std::mt19937 random(static_cast<unsigned>(size));
        for (char& byte : bytes)
        {
            byte = static_cast<char>(random());
        }
        return bytes;
    }
    static std::string ReadAll(const LargeValue& value)
    {
        std::string bytes(static_cast<size_t>(value.Size()), '\0');
        EXPECT_EQ(value.Read(0, &bytes[0], bytes.size()), bytes.size());
        return bytes;
    }
    std::int64_t Chunks()
    {
        Query query(Store().Connection().Db(), "SELECT count(*) FROM chunk");
        query.Step();
        return query.Number(0);
    }
    MessageId Save(ULONG tag, const LargeValuePtr& value)
    {
        MessageContent content = Mail("large");
        content.properties.SetLarge(tag, value);
        return Store().Messages().Create({Inbox, false}, content);
    }
};

TEST_F(LargeValueTest, StagedValuesOfEverySizeReturn)
{
    for (const size_t size : {size_t(0), size_t(1), size_t(4096), size_t(4097), size_t(65535), size_t(65536),
                              size_t(65537), size_t(1000000)})
    {
        const std::string bytes = Bytes(size);
        const auto staged = Store().Stage();
        staged->Write(0, bytes.data(), bytes.size());
        const MessageId message = Save(PR_RTF_COMPRESSED, staged);
        EXPECT_EQ(Store().Messages().Load(message).properties.Binary(PR_RTF_COMPRESSED), bytes) << size;
    }
}

TEST_F(LargeValueTest, StagedBytesBehaveLikeAStream)
{
    std::string expected;
    const auto staged = Store().Stage();
    std::mt19937 random(7);
    for (int i = 0; i < 60; ++i)
    {
        const size_t offset = random() % 300000;
        const std::string piece = Bytes(random() % 100000);
        if (expected.size() < offset + piece.size())
        {
            expected.resize(offset + piece.size());
        }
        expected.replace(offset, piece.size(), piece);
        staged->Write(offset, piece.data(), piece.size());
        if (i % 10 == 9)
        {
            const size_t cut = random() % 400000;
            expected.resize(cut);
            staged->SetSize(cut);
        }
        ASSERT_EQ(staged->Size(), expected.size());
        ASSERT_EQ(ReadAll(*staged), expected);
    }
    char byte = 0;
    EXPECT_EQ(staged->Read(expected.size(), &byte, 1), 0u);
    EXPECT_EQ(staged->Read(expected.size() + 100000, &byte, 1), 0u);
    const auto shorter = Store().Stage();
    shorter->Write(0, "x", 1);
    EXPECT_EQ(shorter->Read(2, &byte, 1), 0u);
}

TEST_F(LargeValueTest, ACutThatFailsLosesNothing)
{
    const auto staged = Store().Stage();
    const std::string bytes = Bytes(200000);
    staged->Write(0, bytes.data(), bytes.size());
    Database& database = Store().Connection().Db();
    for (const char* event : {"DELETE", "INSERT"})
    {
        const std::string trigger = std::string("CREATE TEMP TRIGGER refuse BEFORE ") + event +
                                    " ON temp.staged BEGIN SELECT RAISE(ABORT, 'refused'); END";
        database.Execute(trigger.c_str());
        EXPECT_NE(CodeOf([&] { staged->SetSize(100000); }), S_OK) << event;
        database.Execute("DROP TRIGGER temp.refuse");
        const std::string left = ReadAll(*staged);
        EXPECT_GE(left.size(), 100000u) << event;
        EXPECT_TRUE(left == bytes.substr(0, left.size())) << event;
    }
    staged->SetSize(100000);
    EXPECT_TRUE(ReadAll(*staged) == bytes.substr(0, 100000));
}

TEST_F(LargeValueTest, NothingIsWrittenBeforeTheSave)
{
    const auto staged = Store().Stage();
    const std::string bytes = Bytes(500000);
    staged->Write(0, bytes.data(), bytes.size());
    EXPECT_EQ(Chunks(), 0);
    Save(PR_RTF_COMPRESSED, staged);
    EXPECT_EQ(Chunks(), 8);
}

TEST_F(LargeValueTest, TextIsWhatItsStreamShows)
{
    MessageContent content = Mail("text");
    const std::string ascii(20000, 'a');
    content.properties.SetEncoded(PR_BODY_A, std::string(1, '\0') + ascii);
    content.properties.SetText(PR_TRANSPORT_MESSAGE_HEADERS_W, std::string(9000, 'h'));
    const MessageId message = Store().Messages().Create({Inbox, false}, content);
    const PropertySet back = Store().Messages().Load(message).properties;
    ASSERT_TRUE(back.Large(PR_BODY_A));
    EXPECT_EQ(ReadAll(*back.Large(PR_BODY_A)), ascii);
    EXPECT_EQ(back.Find(PR_BODY_A).tag, ULONG(PR_BODY_A));
    EXPECT_EQ(back.Large(PR_TRANSPORT_MESSAGE_HEADERS_W)->Size(), 18000u);
    EXPECT_EQ(back.Text(PR_TRANSPORT_MESSAGE_HEADERS_W), std::string(9000, 'h'));
}

TEST_F(LargeValueTest, NarrowTextKeepsTextAndBytes)
{
    std::string narrow;
    const WCHAR letter[] = {0xE4};
    for (int i = 0; i < 5000; ++i)
    {
        narrow += zeb::platform::NarrowFromWide(letter, 1) + "x";
    }
    const auto staged = Store().Stage();
    staged->Write(0, narrow.data(), narrow.size());
    const MessageId message = Save(PR_BODY_A, staged);
    const PropertySet back = Store().Messages().Load(message).properties;
    EXPECT_EQ(ReadAll(*back.Large(PR_BODY_A)), narrow);
    std::string text;
    for (int i = 0; i < 5000; ++i)
    {
        text += "\xC3\xA4x";
    }
    EXPECT_EQ(back.Text(PR_BODY_A), text);
}

TEST_F(LargeValueTest, InvalidTextComesBackUnchanged)
{
    const std::string odd = std::string(6000, 'a') + "\xFF\xC3";
    const auto staged = Store().Stage();
    staged->Write(0, odd.data(), odd.size());
    const MessageId message = Save(PR_BODY_A, staged);
    EXPECT_EQ(ReadAll(*Store().Messages().Load(message).properties.Large(PR_BODY_A)), odd);
    Store().Messages().Delete({message});
    EXPECT_EQ(Chunks(), 0);
}

TEST_F(LargeValueTest, LateInvalidTextIsRecognized)
{
    const std::string odd = std::string(70000, 'a') + "\xFF\xC3";
    const auto staged = Store().Stage();
    staged->Write(0, odd.data(), odd.size());
    const LargeReference reference = WriteLarge(Store().Connection().Db(), PT_STRING8, *staged);
    EXPECT_EQ(reference.form, LargeReference::OwnBytes);
    EXPECT_EQ(reference.ownSize, odd.size());
    for (const std::int64_t id : reference.Ids())
    {
        DeleteLarge(Store().Connection().Db(), id);
    }
    EXPECT_EQ(Chunks(), 0);
}

// The store may have been written on a system that reads narrow text otherwise.
TEST_F(LargeValueTest, AnotherCodePagesBytesAreRebuilt)
{
    const auto write = [&](const std::string& bytes, std::int64_t& id, std::uint64_t& size)
    {
        const auto staged = Store().Stage();
        staged->Write(0, bytes.data(), bytes.size());
        const LargeReference written = WriteLarge(Store().Connection().Db(), PT_BINARY, *staged);
        id = written.id;
        size = written.size;
    };
    LargeReference reference;
    reference.form = LargeReference::OwnBytes;
    write("a \xC3\xA4 of the text", reference.id, reference.size);
    write("a \x84 of another code page", reference.ownId, reference.ownSize);
    const StoredLargeValue value(Store().Connection().shared_from_this(), reference);
    EXPECT_EQ(ReadAll(value), NarrowFromStored("a \xC3\xA4 of the text"));
    for (const std::int64_t id : reference.Ids())
    {
        DeleteLarge(Store().Connection().Db(), id);
    }
}

TEST_F(LargeValueTest, ValuesThatEndEarlyAreRefused)
{
    class Short : public LargeValue
    {
    public:
        std::uint64_t Size() const override { return 100000; }
        size_t Read(std::uint64_t offset, void* to, size_t count) const override
        {
            const size_t left = offset < 70000 ? static_cast<size_t>(70000 - offset) : 0;
            std::memset(to, 'x', std::min(count, left));
            return std::min(count, left);
        }
    };
    EXPECT_EQ(CodeOf([&] { Save(PR_RTF_COMPRESSED, std::make_shared<Short>()); }), MAPI_E_CORRUPT_DATA);
    EXPECT_EQ(Chunks(), 0);
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 0u);
}

TEST_F(LargeValueTest, ATruncatedPieceIsDamage)
{
    const auto staged = Store().Stage();
    const std::string bytes = Bytes(100000);
    staged->Write(0, bytes.data(), bytes.size());
    const MessageId message = Save(PR_RTF_COMPRESSED, staged);
    const LargeValuePtr value = Store().Messages().Load(message).properties.Large(PR_RTF_COMPRESSED);
    Store().Connection().Db().Execute("UPDATE chunk SET bytes=substr(bytes, 1, 1000)");
    std::string piece(1000, '\0');
    EXPECT_EQ(CodeOf([&] { value->Read(0, &piece[0], 1000); }), MAPI_E_CORRUPT_DATA);
    std::string text;
    EXPECT_EQ(CodeOf([&] { value->Read(1, &piece[0], 1000); }, &text), MAPI_E_CORRUPT_DATA);
    EXPECT_NE(text.find("test.zeb"), std::string::npos);
    Store().Messages().Delete({message});
}

TEST_F(LargeValueTest, StagedValuesStayWithinTheLimit)
{
    const std::uint64_t most = std::uint64_t{1} << 40;
    const auto staged = Store().Stage();
    EXPECT_EQ(CodeOf([&] { staged->Write(most, "x", 1); }), MAPI_E_TOO_BIG);
    EXPECT_EQ(CodeOf([&] { staged->Write(most + 1, "x", 0); }), MAPI_E_TOO_BIG);
    EXPECT_EQ(CodeOf([&] { staged->SetSize(most + 1); }), MAPI_E_TOO_BIG);
    EXPECT_EQ(staged->Size(), 0u);
    staged->Write(most - 1, "x", 1);
    EXPECT_EQ(staged->Size(), most);
    char byte = 0;
    EXPECT_EQ(staged->Read(most - 1, &byte, 1), 1u);
    EXPECT_EQ(byte, 'x');
}

TEST_F(LargeValueTest, AbandonedStagedValuesRemoveTheirPieces)
{
    const auto left = [&]
    {
        Query query(Store().Connection().Db(), "SELECT count(*) FROM temp.staged");
        query.Step();
        return query.Number(0);
    };
    auto first = Store().Stage();
    const auto second = Store().Stage();
    const std::string bytes = Bytes(200000);
    first->Write(0, bytes.data(), bytes.size());
    second->Write(0, bytes.data(), bytes.size());
    EXPECT_EQ(left(), 8);
    first.reset();
    EXPECT_EQ(left(), 4);
    EXPECT_EQ(ReadAll(*second), bytes);
}

TEST_F(LargeValueTest, SavingAgainKeepsUnchangedValues)
{
    const auto staged = Store().Stage();
    const std::string bytes = Bytes(300000);
    staged->Write(0, bytes.data(), bytes.size());
    const MessageId message = Save(PR_RTF_COMPRESSED, staged);
    Query last(Store().Connection().Db(), "SELECT max(id) FROM large");
    last.Step();
    const std::int64_t before = last.Number(0);
    StoredMessage stored = Store().Messages().Load(message);
    MessageContent content;
    content.properties = stored.properties;
    content.properties.SetText(PR_SUBJECT_W, "changed");
    Store().Messages().Save(message, content, stored.change);
    last.Reset();
    last.Step();
    EXPECT_EQ(last.Number(0), before);
    EXPECT_EQ(ReadAll(*Store().Messages().Load(message).properties.Large(PR_RTF_COMPRESSED)), bytes);
}

TEST_F(LargeValueTest, ReplacingAndDeletingFreeThePieces)
{
    const auto staged = Store().Stage();
    const std::string bytes = Bytes(300000);
    staged->Write(0, bytes.data(), bytes.size());
    const MessageId first = Save(PR_RTF_COMPRESSED, staged);
    const MessageId second = Save(PR_RTF_COMPRESSED, staged);
    EXPECT_EQ(Chunks(), 10);
    MessageContent content = Mail("without");
    const LargeValuePtr old = Store().Messages().Load(first).properties.Large(PR_RTF_COMPRESSED);
    Store().Messages().Save(first, content, 0);
    EXPECT_EQ(Chunks(), 5);
    char byte = 0;
    EXPECT_EQ(CodeOf([&] { old->Read(0, &byte, 1); }), MAPI_E_OBJECT_DELETED);
    Store().Messages().Delete({second});
    EXPECT_EQ(Chunks(), 0);
}

TEST_F(LargeValueTest, AnotherStoresValueIsCopied)
{
    const auto staged = Store().Stage();
    const std::string bytes = Bytes(200000);
    staged->Write(0, bytes.data(), bytes.size());
    const MessageId message = Save(PR_RTF_COMPRESSED, staged);
    const auto other = StoreFile::Create(Path("other.zeb"), "Other", {});
    const auto create = [&]
    {
        const std::scoped_lock both(Store().Lock(), other->Lock());
        return other->Messages().Create({Inbox, false}, Store().Messages().LoadWhole(message));
    };
    const MessageId copy = create();
    Store().Messages().Delete({message});
    EXPECT_EQ(other->Messages().Load(copy).properties.Binary(PR_RTF_COMPRESSED), bytes);
    EXPECT_TRUE(other->CheckWhole().empty());
}

TEST_F(LargeValueTest, ADamagedSizeTakesNoMemory)
{
    LargeReference reference;
    reference.form = LargeReference::OwnBytes;
    reference.id = 999;
    reference.size = reference.ownSize = std::uint64_t{9} << 56;
    const StoredLargeValue value(Store().Connection().shared_from_this(), reference);
    EXPECT_EQ(CodeOf([&] { value.Size(); }), MAPI_E_OBJECT_DELETED);
}

TEST_F(LargeValueTest, APieceOutsideValuesIsDamage)
{
    LargeReference reference;
    reference.id = 1;
    reference.size = std::uint64_t{9} << 56;
    const StoredLargeValue value(Store().Connection().shared_from_this(), reference);
    char byte = 0;
    EXPECT_EQ(CodeOf([&] { value.Read(std::uint64_t{1} << 40, &byte, 1); }), MAPI_E_CORRUPT_DATA);
}

TEST_F(LargeValueTest, ADamagedMessageCanBeDeleted)
{
    const auto staged = Store().Stage();
    const std::string bytes = Bytes(200000);
    staged->Write(0, bytes.data(), bytes.size());
    const MessageId message = Save(PR_BODY_W, staged);
    const std::string damage =
        "DELETE FROM chunk; DELETE FROM large; UPDATE message SET props=" + std::string(DamagedReference) +
        " WHERE id=" + std::to_string(message);
    Store().Connection().Db().Execute(damage.c_str());
    const LargeValuePtr damaged = Store().Messages().Load(message).properties.Large(PR_BODY_W);
    ASSERT_NE(damaged, nullptr);
    char byte = 0;
    EXPECT_EQ(CodeOf([&] { damaged->Read(0, &byte, 1); }), MAPI_E_CORRUPT_DATA);
    Store().Messages().Delete({message});
    EXPECT_EQ(CodeOf([&] { Store().Messages().Load(message); }), MAPI_E_NOT_FOUND);
}

TEST_F(LargeValueTest, LargeValuesAreErrorsInCells)
{
    const MessageId message = Save(PR_BODY_W, Store().Stage(*[&]
    {
        const auto staged = Store().Stage();
        const std::string bytes = Bytes(10000);
        staged->Write(0, bytes.data(), bytes.size());
        return staged;
    }()));
    const PropertySet back = Store().Messages().Load(message).properties;
    const ULONG tag = PR_BODY_W;
    const Buffer<SPropValue> cell(BuildValues(&tag, 1, back, {}));
    EXPECT_EQ(cell->ulPropTag, PROP_TAG(PT_ERROR, PROP_ID(PR_BODY_W)));
    EXPECT_EQ(cell->Value.err, MAPI_E_NOT_ENOUGH_MEMORY);
    const Buffer<char> root(Allocate(1));
    SPropValue whole{};
    EXPECT_TRUE(BuildValue(PR_BODY_W, back, {}, whole, root.Get()));
    EXPECT_EQ(zeb::platform::WideLength(whole.Value.lpszW) > 0, true);
}

TEST_F(LargeValueTest, AHundredMegabytesPassInPieces)
{
    const auto staged = Store().Stage();
    const std::string piece = Bytes(1 << 20);
    for (std::uint64_t i = 0; i < 100; ++i)
    {
        staged->Write(i << 20, piece.data(), piece.size());
    }
    const MessageId message = Save(PR_ATTACH_DATA_BIN, staged);
    const LargeValuePtr back = Store().Messages().Load(message).properties.Large(PR_ATTACH_DATA_BIN);
    ASSERT_EQ(back->Size(), 100ull << 20);
    std::string read(1 << 20, '\0');
    EXPECT_EQ(back->Read(99ull << 20, &read[0], read.size()), read.size());
    EXPECT_EQ(read, piece);
    EXPECT_EQ(Store().Messages().Load(message).properties.Long(PR_MESSAGE_SIZE) >> 20, 100);
}

} // namespace
} // namespace zebstore::test
