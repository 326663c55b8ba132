#include "tests/zebstore/disk/StoreDump.h"

#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Checksum.h"
#include "zebstore/storage/StoreFile.h"

#include <algorithm>

namespace zebstore::test
{

namespace
{

bool DependsOnTime(ULONG tag)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_CREATION_TIME):
    case PROP_ID(PR_LAST_MODIFICATION_TIME):
    case PROP_ID(PR_SEARCH_KEY):
        return true;
    default:
        return false;
    }
}

std::string WholeOf(const LargeValue& value)
{
    std::string bytes(static_cast<size_t>(value.Size()), '\0');
    bytes.resize(value.Read(0, &bytes[0], bytes.size()));
    return bytes;
}

std::string Line(const PropertySet& properties)
{
    std::string all;
    for (const PropertySet::Item& item : properties.Items())
    {
        if (!DependsOnTime(item.tag))
        {
            const std::string bytes = item.large ? WholeOf(*item.large) : item.bytes;
            all += std::to_string(item.tag) + ":" + std::to_string(bytes.size()) + ":" + bytes + ";";
        }
    }
    return std::to_string(Checksum(all, 0));
}

std::string Line(const MessageContent& content)
{
    std::string line = content.properties.Text(PR_SUBJECT_W) + " " + Line(content.properties);
    for (const PropertySet& recipient : content.recipients.value_or(std::vector<PropertySet>()))
    {
        line += " to " + Line(recipient);
    }
    for (const AttachmentEdit& attachment : content.attachments)
    {
        line += " with " + std::to_string(attachment.number) + " " + Line(attachment.properties);
        line += attachment.embedded ? " [" + Line(*attachment.embedded) + "]" : "";
    }
    return line;
}

class Dump
{
public:
    explicit Dump(const std::shared_ptr<StoreFile>& store)
        : m_store(store)
    {
    }
    std::vector<std::string> Lines()
    {
        Folder(IdOf(StandardFolder::Root), "");
        for (const PropertyName& name : m_store->NamedProperties().All())
        {
            Add("named " + std::to_string(name.number.value_or(-1)));
        }
        Addresses();
        std::sort(m_lines.begin(), m_lines.end());
        return std::move(m_lines);
    }

private:
    void Add(const std::string& line) { m_lines.push_back(line); }

    void Folder(FolderId folder, const std::string& above)
    {
        const PropertySet properties = m_store->Folders().Properties(folder);
        const std::string path = above + "/" + properties.Text(PR_DISPLAY_NAME_W);
        Add("folder " + path + " " + Line(properties));
        for (const bool associated : {false, true})
        {
            for (const MessageId message : m_store->Messages().In({folder, associated}))
            {
                Add("message " + path + " " + Line(m_store->Messages().LoadWhole(message)));
            }
        }
        for (const FolderInfo& below : m_store->Folders().Under(folder, false))
        {
            Folder(below.id, path);
        }
    }

    void Addresses()
    {
        const AddressStorage book(m_store);
        Query query(m_store->Connection().Db(), "SELECT id FROM address");
        for (const AddressId address : query.Numbers())
        {
            const StoredAddress entry = book.Load(address);
            const std::string name = "entry " + entry.properties.Text(PR_DISPLAY_NAME_W);
            Add(name + " " + Line(entry.properties));
            if (entry.type != MAPI_DISTLIST)
            {
                continue;
            }
            for (const ListMember& member : book.Members(address))
            {
                Add(name + " has " + std::to_string(member.address));
            }
        }
    }

    std::shared_ptr<StoreFile> m_store;
    std::vector<std::string> m_lines;
};

} // namespace

std::vector<std::string> DumpStore(const std::string& path, std::vector<std::string>& problems)
{
    const std::shared_ptr<StoreFile> store = StoreFile::Open(path, {});
    problems = store->CheckWhole();
    return Dump(store).Lines();
}

} // namespace zebstore::test
