#include "tests/zebstore/disk/MixedLoad.h"

#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Checksum.h"

#include <algorithm>

namespace zebstore::test
{

namespace
{

constexpr FolderId First = IdOf(StandardFolder::Inbox);
constexpr FolderId Second = IdOf(StandardFolder::SentItems);
constexpr FolderId Above = IdOf(StandardFolder::Outbox); // of the folders that are made
constexpr size_t MostMessages = 40;
constexpr size_t MostFolders = 5;

PropertySet NamedAs(const std::string& name)
{
    PropertySet properties;
    properties.SetText(PR_DISPLAY_NAME_W, name);
    return properties;
}

// What a caller gave, not what the store computes.
std::string Described(const MessageContent& content)
{
    const std::string body = content.properties.Text(PR_BODY_W);
    std::string line = content.properties.Text(PR_SUBJECT_W) + " " + std::to_string(body.size()) + " " +
                       std::to_string(Checksum(body));
    for (const PropertySet& recipient : content.recipients.value_or(std::vector<PropertySet>()))
    {
        line += " to " + recipient.Text(PR_DISPLAY_NAME_W);
    }
    for (const AttachmentEdit& attachment : content.attachments)
    {
        line += " with " + std::to_string(Checksum(attachment.properties.Binary(PR_ATTACH_DATA_BIN)));
        line += attachment.embedded ? " [" + Described(*attachment.embedded) + "]" : "";
    }
    return line;
}

std::string LineOf(FolderId folder, const MessageContent& content)
{
    return "message " + std::to_string(folder) + " " + Described(content);
}

std::vector<FolderInfo> MadeFolders(StoreFile& store)
{
    return store.Folders().Under(Above, false);
}

std::string LineOf(StoreFile& store, const FolderInfo& folder)
{
    return "folder " + store.Folders().Properties(folder.id).Text(PR_DISPLAY_NAME_W);
}

} // namespace

Content ContentOf(const std::shared_ptr<StoreFile>& store)
{
    Content content;
    for (const FolderId folder : {First, Second})
    {
        for (const MessageId message : store->Messages().In({folder, false}))
        {
            content.insert(LineOf(folder, store->Messages().LoadWhole(message)));
        }
    }
    for (const FolderInfo& folder : MadeFolders(*store))
    {
        content.insert(LineOf(*store, folder));
    }
    for (const PropertyName& name : store->NamedProperties().All())
    {
        content.insert("name " + std::to_string(name.number.value_or(-1)));
    }
    const AddressStorage book(store);
    Query query(store->Connection().Db(), "SELECT id FROM address");
    for (const AddressId address : query.Numbers())
    {
        content.insert("entry " + book.Load(address).properties.Text(PR_DISPLAY_NAME_W));
    }
    return content;
}

MixedLoad::MixedLoad(std::shared_ptr<StoreFile> store, unsigned seed)
    : m_store(std::move(store))
    , m_random(seed)
{
}

void MixedLoad::Step(const Announce& announce)
{
    const size_t messages =
        m_store->Messages().In({First, false}).size() + m_store->Messages().In({Second, false}).size();
    const unsigned kind = m_random() % 16;
    if (messages > MostMessages || (kind == 0 && messages > 0))
    {
        return Remove(announce);
    }
    if (messages == 0 || kind < 6)
    {
        return Create(announce);
    }
    if (kind < 12)
    {
        return kind < 8 ? Change(announce) : Pass(announce, kind < 10);
    }
    if (kind < 14)
    {
        return MadeFolders(*m_store).size() < MostFolders ? MakeFolder(announce) : DropFolder(announce);
    }
    kind == 14 ? AddEntry(announce) : AddName(announce);
}

MessageContent MixedLoad::NewContent()
{
    MessageContent content;
    content.properties.SetText(PR_SUBJECT_W, std::to_string(m_random()));
    content.properties.SetLong(PR_MESSAGE_FLAGS, 0);
    content.recipients.emplace();
    constexpr size_t Sizes[] = {100, 3000, 6000, 150000};
    const std::string body(Sizes[m_random() % std::size(Sizes)], static_cast<char>('a' + m_random() % 26));
    const std::shared_ptr<StagedValue> staged = m_store->Stage();
    staged->Write(0, body.data(), body.size());
    content.properties.SetLarge(PR_BODY_A, staged);
    for (unsigned i = m_random() % 3; i > 0; --i)
    {
        content.recipients->push_back(NamedAs(std::to_string(m_random())));
    }
    for (unsigned i = 0, count = m_random() % 3; i < count; ++i)
    {
        AttachmentEdit attachment;
        attachment.number = i;
        attachment.properties.SetEncoded(PR_ATTACH_DATA_BIN, std::string(m_random() % 20000, 'd'));
        if (m_random() % 4 == 0)
        {
            attachment.embedded = std::make_shared<MessageContent>();
            attachment.embedded->properties.SetText(PR_SUBJECT_W, "inner");
            attachment.embedded->recipients.emplace();
        }
        content.attachments.push_back(attachment);
    }
    return content;
}

MessageId MixedLoad::Any(FolderId& folder)
{
    folder = m_random() % 2 != 0 ? First : Second;
    std::vector<MessageId> messages = m_store->Messages().In({folder, false});
    if (messages.empty())
    {
        folder = folder == Second ? First : Second;
        messages = m_store->Messages().In({folder, false});
    }
    return messages[m_random() % messages.size()];
}

void MixedLoad::Create(const Announce& announce)
{
    const MessageContent content = NewContent();
    announce({{}, {LineOf(First, content)}});
    m_store->Messages().Create({First, false}, content);
}

void MixedLoad::Change(const Announce& announce)
{
    FolderId folder = 0;
    const MessageId message = Any(folder);
    const MessageContent before = m_store->Messages().LoadWhole(message);
    MessageContent content = NewContent();
    MessageContent after = content;
    after.attachments = before.attachments;
    content.attachments.clear(); // what is not given stays
    announce({{LineOf(folder, before)}, {LineOf(folder, after)}});
    m_store->Messages().Save(message, content, 0);
}

void MixedLoad::Pass(const Announce& announce, bool move)
{
    FolderId from = 0;
    const MessageId message = Any(from);
    const FolderId to = from == First ? Second : First;
    const MessageContent content = m_store->Messages().LoadWhole(message);
    announce({move ? Content{LineOf(from, content)} : Content(), {LineOf(to, content)}});
    move ? m_store->Messages().Move({message}, to) : m_store->Messages().Copy({message}, to);
}

void MixedLoad::Remove(const Announce& announce)
{
    FolderId folder = 0;
    const MessageId message = Any(folder);
    announce({{LineOf(folder, m_store->Messages().LoadWhole(message))}, {}});
    m_store->Messages().Delete({message});
}

void MixedLoad::MakeFolder(const Announce& announce)
{
    const std::string name = std::to_string(m_random());
    announce({{}, {"folder " + name}});
    m_store->Folders().Create(Above, NamedAs(name));
}

void MixedLoad::DropFolder(const Announce& announce)
{
    const FolderInfo folder = MadeFolders(*m_store).front();
    announce({{LineOf(*m_store, folder)}, {}});
    m_store->Folders().Delete(folder.id, true, true);
}

void MixedLoad::AddEntry(const Announce& announce)
{
    const std::string name = std::to_string(m_random());
    announce({{}, {"entry " + name}});
    AddressStorage(m_store).Create(MAPI_MAILUSER, NamedAs(name));
}

void MixedLoad::AddName(const Announce& announce)
{
    GUID set{};
    MAPINAMEID name{};
    name.lpguid = &set;
    name.ulKind = MNID_ID;
    name.Kind.lID = static_cast<LONG>(m_random() >> 1);
    const MAPINAMEID* const names = &name;
    announce({{}, {"name " + std::to_string(name.Kind.lID)}});
    m_store->NamedProperties().Ids(&names, 1, true);
}

} // namespace zebstore::test
