#include "zebstore/objects/StoreContext.h"

#include "platform/tags.h"
#include "zebstore/objects/Defaults.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/Text.h"

#include <algorithm>
#include <cstring>

namespace zebstore
{
namespace
{

constexpr LONG FolderAccess = MAPI_ACCESS_MODIFY | MAPI_ACCESS_READ | MAPI_ACCESS_DELETE |
                              MAPI_ACCESS_CREATE_HIERARCHY | MAPI_ACCESS_CREATE_CONTENTS |
                              MAPI_ACCESS_CREATE_ASSOCIATED;
constexpr LONG MessageAccess = MAPI_ACCESS_MODIFY | MAPI_ACCESS_READ | MAPI_ACCESS_DELETE;

template <class Id>
void SetId(PropertySet& out, ULONG tag, const Id& id)
{
    out.SetBinary(tag, id.data(), id.size());
}

/// Cells of folder and message rows share the store's properties and differ in their identifiers.
class StoreComputed final : public ComputedProperties
{
public:
    StoreComputed(const MAPIUID& uid, const std::vector<BYTE>& storeId, bool readOnly)
        : m_uid(uid)
        , m_storeId(storeId)
        , m_readOnly(readOnly)
    {
    }

    bool OfMessage(ULONG tag, MessageId message, PropertySet& out) const override
    {
        switch (PROP_ID(tag))
        {
        case PROP_ID(PR_ENTRYID):
        case PROP_ID(PR_RECORD_KEY):
            SetId(out, CHANGE_PROP_TYPE(tag, PT_BINARY), MakeMessageEntryId(m_uid, message));
            return true;
        case PROP_ID(PR_PARENT_ENTRYID):
            SetId(out, PR_PARENT_ENTRYID, MakeFolderEntryId(m_uid, ContentsKey::Of(message).Folder()));
            return true;
        case PROP_ID(PR_OBJECT_TYPE):
            out.SetLong(PR_OBJECT_TYPE, MAPI_MESSAGE);
            return true;
        case PROP_ID(PR_ACCESS):
            out.SetLong(PR_ACCESS, m_readOnly ? LONG(MAPI_ACCESS_READ) : MessageAccess);
            return true;
        default:
            return OfAny(tag, message, out);
        }
    }

    bool OfFolder(ULONG tag, const FolderInfo& folder, PropertySet& out) const override
    {
        switch (PROP_ID(tag))
        {
        case PROP_ID(PR_ENTRYID):
        case PROP_ID(PR_RECORD_KEY):
            SetId(out, CHANGE_PROP_TYPE(tag, PT_BINARY), MakeFolderEntryId(m_uid, folder.id));
            return true;
        case PROP_ID(PR_PARENT_ENTRYID):
            SetId(out, PR_PARENT_ENTRYID, MakeFolderEntryId(m_uid, folder.parent ? folder.parent : folder.id));
            return true;
        case PROP_ID(PR_OBJECT_TYPE):
            out.SetLong(PR_OBJECT_TYPE, MAPI_FOLDER);
            return true;
        case PROP_ID(PR_ACCESS):
            out.SetLong(PR_ACCESS, m_readOnly ? LONG(MAPI_ACCESS_READ) : FolderAccess);
            return true;
        case PROP_ID(PR_SOURCE_KEY):
            SetId(out, PR_SOURCE_KEY, SyncKey(m_uid, folder.id));
            return true;
        case PROP_ID(PR_PARENT_SOURCE_KEY):
            SetId(out, PR_PARENT_SOURCE_KEY, folder.parent ? SyncKey(m_uid, folder.parent) : std::string());
            return true;
        case PROP_ID(PR_IPM_CONTACT_ENTRYID):
            if (folder.id != IdOf(StandardFolder::Inbox))
            {
                return false;
            }
            SetId(out, PR_IPM_CONTACT_ENTRYID, MakeFolderEntryId(m_uid, IdOf(StandardFolder::Contacts)));
            return true;
        default:
            return OfFolderCounts(tag, folder, out) || OfAny(tag, folder.id, out);
        }
    }

    bool IsDefault(ULONG tag) const override { return IsMessageDefault(tag); }
    bool DefaultOfMessage(ULONG tag, const MessageOrigin& origin, PropertySet& out) const override
    {
        return AddMessageDefault(m_uid, tag, origin, out);
    }

    bool DefaultOfFolder(ULONG tag, const FolderTimesReader& times, PropertySet& out) const override
    {
        return AddFolderDefault(m_uid, tag, times, out);
    }

    std::vector<ULONG> MessageTags() const override
    {
        return {PR_ENTRYID,      PR_RECORD_KEY,         PR_PARENT_ENTRYID,   PR_OBJECT_TYPE,
                PR_ACCESS,       PR_STORE_ENTRYID,      PR_STORE_RECORD_KEY, PR_INSTANCE_KEY,
                PR_ACCESS_LEVEL, PR_STORE_SUPPORT_MASK, PR_MAPPING_SIGNATURE};
    }

    std::vector<ULONG> FolderTags() const override
    {
        std::vector<ULONG> tags = MessageTags();
        for (ULONG tag : {PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_ASSOC_CONTENT_COUNT, PR_SUBFOLDERS, PR_FOLDER_TYPE})
        {
            tags.push_back(tag);
        }
        return tags;
    }

private:
    static bool OfFolderCounts(ULONG tag, const FolderInfo& folder, PropertySet& out)
    {
        switch (PROP_ID(tag))
        {
        case PROP_ID(PR_CONTENT_COUNT):
            out.SetLong(PR_CONTENT_COUNT, static_cast<LONG>(folder.messages));
            return true;
        case PROP_ID(PR_CONTENT_UNREAD):
            out.SetLong(PR_CONTENT_UNREAD, static_cast<LONG>(folder.unread));
            return true;
        case PROP_ID(PR_ASSOC_CONTENT_COUNT):
            out.SetLong(PR_ASSOC_CONTENT_COUNT, static_cast<LONG>(folder.associated));
            return true;
        case PROP_ID(PR_SUBFOLDERS):
            out.SetBool(PR_SUBFOLDERS, folder.subfolders > 0);
            return true;
        case PROP_ID(PR_FOLDER_TYPE):
            out.SetLong(PR_FOLDER_TYPE, static_cast<LONG>(folder.type));
            return true;
        default:
            return false;
        }
    }

    bool OfAny(ULONG tag, std::int64_t key, PropertySet& out) const
    {
        switch (PROP_ID(tag))
        {
        case PROP_ID(PR_STORE_ENTRYID):
            SetId(out, PR_STORE_ENTRYID, m_storeId);
            return true;
        case PROP_ID(PR_STORE_RECORD_KEY):
        case PROP_ID(PR_MAPPING_SIGNATURE):
            out.SetBinary(CHANGE_PROP_TYPE(tag, PT_BINARY), m_uid.ab, sizeof(m_uid.ab));
            return true;
        case PROP_ID(PR_INSTANCE_KEY):
        {
            const std::string bytes = InstanceKeyOf(key);
            out.SetBinary(PR_INSTANCE_KEY, bytes.data(), bytes.size());
            return true;
        }
        case PROP_ID(PR_ACCESS_LEVEL):
            out.SetLong(PR_ACCESS_LEVEL, m_readOnly ? 0 : 1);
            return true;
        case PROP_ID(PR_STORE_SUPPORT_MASK):
            out.SetLong(PR_STORE_SUPPORT_MASK, StoreSupportMask);
            return true;
        default:
            return false;
        }
    }

    const MAPIUID m_uid;
    const std::vector<BYTE> m_storeId;
    const bool m_readOnly;
};

} // namespace

StoreContext::StoreContext(std::shared_ptr<StoreFile> file)
    : m_file(std::move(file))
{
    std::memcpy(m_uid.ab, &m_file->Uid(), sizeof(m_uid.ab));
    m_entryId = MakeStoreEntryId(m_uid, m_file->Path());
    m_computed = std::make_shared<StoreComputed>(m_uid, m_entryId, m_file->IsReadOnly());
}

bool StoreContext::IsSameStore(const StoreContext& other) const
{
    return std::memcmp(m_uid.ab, other.m_uid.ab, sizeof(m_uid.ab)) == 0;
}

ItemId StoreContext::Parse(const void* bytes, size_t size) const
{
    if (size == 0)
    {
        return {MAPI_FOLDER, IdOf(StandardFolder::Root)};
    }
    return ParseItemId(m_uid, bytes, size);
}

FolderId StoreContext::ParseFolder(const void* bytes, size_t size) const
{
    const ItemId item = Parse(bytes, size);
    if (item.objectType != MAPI_FOLDER)
    {
        throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier names a message, not a folder");
    }
    return item.key;
}

MessageId StoreContext::ParseMessage(const SBinary& id) const
{
    const ItemId item = ParseItemId(m_uid, id.lpb, id.cb);
    if (item.objectType != MAPI_MESSAGE)
    {
        throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier names a folder, not a message");
    }
    return item.key;
}

std::vector<MessageId> StoreContext::ParseMessages(const ENTRYLIST* list) const
{
    Require(list != nullptr && (list->lpbin != nullptr || list->cValues == 0), "the list of messages is null");
    std::vector<MessageId> messages;
    messages.reserve(list->cValues);
    for (ULONG i = 0; i < list->cValues; ++i)
    {
        messages.push_back(ParseMessage(list->lpbin[i]));
    }
    return messages;
}

bool HasId(const std::vector<ULONG>& tags, ULONG tag)
{
    return std::any_of(tags.begin(), tags.end(), [&](ULONG each) { return PROP_ID(each) == PROP_ID(tag); });
}

std::string TextArgument(const void* text, ULONG flags)
{
    if (text == nullptr)
    {
        return {};
    }
    if (flags & MAPI_UNICODE)
    {
        const auto* wide = static_cast<const WCHAR*>(text);
        return StoredFromWide(wide, zeb::platform::WideLength(wide));
    }
    return StoredFromNarrow(static_cast<const char*>(text));
}

} // namespace zebstore
