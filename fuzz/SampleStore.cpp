#include "fuzz/SampleStore.h"

#include "fuzz/Require.h"
#include "tests/support/TempFolder.h"
#include "zebstore/addressbook/AddressId.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/DateRuns.h"
#include "zebstore/storage/Repair.h"
#include "zebstore/storage/StoreFile.h"

#include <fstream>
#include <iterator>

namespace
{

using namespace zebstore;

constexpr FolderId Inbox = IdOf(StandardFolder::Inbox);
// So that the first group of the Inbox has a run of dates, with a few messages that are left of it.
constexpr int Messages = DateRuns::RunLength + 4;
constexpr int DeletedEach = 32;

PropertySet Named(const std::string& name)
{
    PropertySet properties;
    properties.SetText(PR_DISPLAY_NAME_W, name);
    return properties;
}

MessageContent Mail(const std::string& subject)
{
    MessageContent content;
    content.properties.SetText(PR_SUBJECT_W, subject);
    content.properties.SetText(PR_MESSAGE_CLASS_W, "IPM.Note");
    content.properties.SetLong(PR_MESSAGE_FLAGS, MSGFLAG_READ);
    return content;
}

// Each message of a sample has another part of what a message can have.
MessageContent Sample(int number)
{
    MessageContent content = Mail("sample \xC3\xA4 " + std::to_string(number));
    if (number % 64 == 0)
    {
        content.properties.SetEncoded(PR_BODY_W, std::string(6000, 'b'));
        content.recipients = std::vector<PropertySet>{Named("Ann"), Named("Bob")};
    }
    if (number % 128 == 0)
    {
        AttachmentEdit file;
        file.properties = Named("file");
        file.properties.SetEncoded(PR_ATTACH_DATA_BIN, std::string(5000, 'd'));
        AttachmentEdit embedded;
        embedded.number = 1;
        embedded.properties = Named("message");
        embedded.embedded = std::make_shared<MessageContent>(Mail("inside"));
        content.attachments = {file, embedded};
    }
    return content;
}

void FillMessages(StoreFile& store)
{
    std::vector<MessageId> deleted;
    for (int i = 0; i < Messages; ++i)
    {
        const MessageId made = store.Messages().Create({Inbox, false}, Sample(i));
        if (i % DeletedEach != 0)
        {
            deleted.push_back(made);
        }
    }
    store.Messages().Delete(deleted);
    store.Messages().Create({Inbox, true}, Mail("associated"));
}

void FillAddresses(const std::shared_ptr<StoreFile>& store)
{
    const AddressStorage book(store);
    ListMember ann;
    ann.address = book.Create(MAPI_MAILUSER, Named("Ann"));
    ListMember foreign;
    AddressName carla;
    carla.kind = AddressKind::OneOff;
    carla.displayName = "Carla";
    carla.type = "SMTP";
    carla.address = "carla@example.com";
    const AddressEntryId id = MakeOneOffId(carla, true);
    foreign.entry.assign(id.begin(), id.end());
    const AddressId list = book.Create(MAPI_DISTLIST, Named("Friends"));
    book.AddMembers(list, {ann, foreign});
}

void Fill(const std::shared_ptr<StoreFile>& store)
{
    FillMessages(*store);
    const FolderId top = store->Folders().Create(IdOf(StandardFolder::IpmSubtree), Named("top"));
    store->Messages().Create({store->Folders().Create(top, Named("below")), false}, Sample(0));
    const GUID set = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
    MAPINAMEID name{const_cast<GUID*>(&set), MNID_ID, {4711}};
    const MAPINAMEID* names = &name;
    store->NamedProperties().Ids(&names, 1, true);
    store->ReceiveFolders().Set("IPM.Note", Inbox);
    FillAddresses(store);
    store->Texts().TurnOn();
    store->Texts().Complete({[](const std::string&) {}, [](std::uint64_t, std::uint64_t) {}});
}

} // namespace

std::string FuzzerFile(const std::string& name)
{
    static const zeb::test::TempFolder folder;
    return folder.File(name);
}

void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    ::Require(file.good(), "a file can be written");
}

const std::string& SampleStore()
{
    static const std::string bytes = []
    {
        const std::string path = FuzzerFile("sample.zeb");
        {
            const std::shared_ptr<StoreFile> store = StoreFile::Create(path, "sample", {});
            Fill(store);
            ::Require(store->CheckWhole().empty(), "the sample is sound");
            CompactStore(*store, {[](const std::string&) {}, [](std::uint64_t, std::uint64_t) {}});
        }
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }();
    return bytes;
}
