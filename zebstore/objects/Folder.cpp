#include "zebstore/objects/Folder.h"

#include "platform/datetime.h"
#include "platform/tags.h"
#include "zebstore/objects/Defaults.h"
#include "zebstore/objects/FolderCopy.h"
#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/Message.h"
#include "zebstore/objects/OpenFlags.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/HierarchyRows.h"
#include "zebstore/storage/MemoryRows.h"
#include "zebstore/storage/Text.h"
#include "zebstore/tables/Table.h"

namespace zebstore
{
namespace
{

/// The table of recoverable deleted items: deletions are permanent, so it has no rows.
std::shared_ptr<RowSource> NothingOf(const ComputedProperties& computed)
{
    return std::make_shared<MemoryRows>(std::vector<PropertySet>(), computed.MessageTags());
}

OwnFolder& RequireOwn(void* target)
{
    OwnFolder* folder = AsOwnFolder(target);
    if (folder == nullptr)
    {
        throw Error(MAPI_E_NO_SUPPORT, "the target is not a folder of this provider");
    }
    return *folder;
}

} // namespace

Ref<IMAPIFolder> OpenFolder(const StorePtr& store, FolderId folder, Access access)
{
    store->File().Folders().Info(folder);
    return Ref<IMAPIFolder>::Adopt(new Folder(store, folder, access));
}

IUnknown* OpenItem(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                   ULONG* objectType)
{
    RequireFlags(flags, OpenEntryFlags | ShowSoftDeletes);
    const ItemId item = store->Parse(id, size);
    const Access access = AccessFor(flags, most);
    IUnknown* answer = nullptr;
    if (item.objectType == MAPI_FOLDER)
    {
        answer = Answer(OpenFolder(store, item.key, access).Get(), iid);
    }
    else
    {
        answer = Answer(OpenMessage(store, item.key, access).Get(), iid);
    }
    if (objectType != nullptr)
    {
        *objectType = item.objectType;
    }
    return answer;
}

bool Folder::Answers(REFIID iid) const
{
    return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMAPIContainer, &IID_IMAPIFolder, &OwnFolderId});
}

const PropertySet& Folder::Stored()
{
    m_properties = File().Folders().Properties(m_folder);
    return m_properties;
}

const std::vector<ULONG>& Folder::ComputedTags()
{
    static const std::vector<ULONG> folders = {
        PR_ENTRYID,           PR_RECORD_KEY,       PR_PARENT_ENTRYID,   PR_OBJECT_TYPE,         PR_ACCESS,
        PR_STORE_ENTRYID,     PR_STORE_RECORD_KEY, PR_INSTANCE_KEY,     PR_ACCESS_LEVEL,        PR_STORE_SUPPORT_MASK,
        PR_MAPPING_SIGNATURE, PR_CONTENT_COUNT,    PR_CONTENT_UNREAD,   PR_ASSOC_CONTENT_COUNT, PR_SUBFOLDERS,
        PR_FOLDER_TYPE,       PR_SOURCE_KEY,       PR_PARENT_SOURCE_KEY};
    static const std::vector<ULONG> inbox = []
    {
        std::vector<ULONG> tags = folders;
        tags.push_back(PR_IPM_CONTACT_ENTRYID);
        return tags;
    }();
    return m_folder == IdOf(StandardFolder::Inbox) ? inbox : folders;
}

bool Folder::Compute(ULONG tag, PropertySet& out)
{
    if (PROP_ID(tag) == PROP_ID(PR_ACCESS_LEVEL))
    {
        out.SetLong(PR_ACCESS_LEVEL, AccessGiven() == Access::Write ? 1 : 0);
        return true;
    }
    if (!HasId(ComputedTags(), tag))
    {
        return false;
    }
    return Store()->Computed()->OfFolder(tag, File().Folders().Info(m_folder), out);
}

// Not listed: synchronizing clients ask for these by tag.
bool Folder::Lists(ULONG tag)
{
    return PROP_ID(tag) != PROP_ID(PR_SOURCE_KEY) && PROP_ID(tag) != PROP_ID(PR_PARENT_SOURCE_KEY);
}

bool Folder::Default(ULONG tag, PropertySet& out)
{
    const auto times = [this] { return File().Folders().Times(m_folder); };
    return Store()->Computed()->DefaultOfFolder(tag, times, out);
}

void Folder::Edit(const std::function<void(PropertySet&)>& change)
{
    const std::lock_guard hold(File().Lock());
    const PropertySet before = File().Folders().Properties(m_folder);
    PropertySet properties = before;
    change(properties);
    CompleteChangeKeys(Store()->Uid(), properties.Binary(PR_CHANGE_KEY) == before.Binary(PR_CHANGE_KEY), properties);
    // A time that a client wrote holds until the next change.
    if (before.Has(PR_LAST_MODIFICATION_TIME) &&
        properties.Find(PR_LAST_MODIFICATION_TIME).bytes == before.Find(PR_LAST_MODIFICATION_TIME).bytes)
    {
        properties.SetTime(PR_LAST_MODIFICATION_TIME, zeb::platform::CurrentFileTime());
    }
    File().Folders().SaveProperties(m_folder, properties);
}

IUnknown* Folder::OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags)
{
    const bool contents = PROP_ID(tag) == PROP_ID(PR_CONTAINER_CONTENTS);
    const bool associated = PROP_ID(tag) == PROP_ID(PR_FOLDER_ASSOCIATED_CONTENTS);
    if (!IsEqualGUID(iid, IID_IMAPITable) ||
        (!contents && !associated && PROP_ID(tag) != PROP_ID(PR_CONTAINER_HIERARCHY)))
    {
        return PropBase::OpenObject(tag, iid, options, flags);
    }
    if (contents || associated)
    {
        return Contents((options & MAPI_UNICODE) | (associated ? MAPI_ASSOCIATED : 0));
    }
    return Hierarchy(options & (MAPI_UNICODE | CONVENIENT_DEPTH));
}

IMAPITable* Folder::Contents(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_ASSOCIATED | MAPI_DEFERRED_ERRORS | ShowSoftDeletes);
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    if (flags & ShowSoftDeletes)
    {
        return CreateTable(NothingOf(*Store()->Computed()), options).Detach();
    }
    return CreateTable(
               MakeContentsRows(Store()->SharedFile(), {m_folder, (flags & MAPI_ASSOCIATED) != 0}, Store()->Computed()),
               options)
        .Detach();
}

IMAPITable* Folder::Hierarchy(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | CONVENIENT_DEPTH | MAPI_DEFERRED_ERRORS | ShowSoftDeletes);
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    if (flags & ShowSoftDeletes)
    {
        return CreateTable(NothingOf(*Store()->Computed()), options).Detach();
    }
    return CreateTable(
               MakeHierarchyRows(Store()->SharedFile(), m_folder, (flags & CONVENIENT_DEPTH) != 0, Store()->Computed()),
               options)
        .Detach();
}

HRESULT Folder::GetContentsTable(ULONG flags, LPMAPITABLE* table)
{
    return Guarded("IMAPIContainer::GetContentsTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = Contents(flags);
    });
}

HRESULT Folder::GetHierarchyTable(ULONG flags, LPMAPITABLE* table)
{
    return Guarded("IMAPIContainer::GetHierarchyTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = Hierarchy(flags);
    });
}

HRESULT Folder::OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType, LPUNKNOWN* object)
{
    return Guarded("IMAPIContainer::OpenEntry", [&]
    {
        Require(object != nullptr, "the output pointer is null");
        *object = nullptr;
        const Access most = File().IsReadOnly() ? Access::Read : Access::Write;
        *object = OpenItem(Store(), size, id, iid, flags, most, objectType);
    });
}

HRESULT Folder::SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG)
{
    return Guarded("IMAPIContainer::SetSearchCriteria",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "the store has no search folders"); });
}

HRESULT Folder::GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*)
{
    return Guarded("IMAPIContainer::GetSearchCriteria",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "the store has no search folders"); });
}

std::vector<MessageId> Folder::MessagesHere(const ENTRYLIST* list, size_t& others) const
{
    std::vector<MessageId> here;
    others = 0;
    for (MessageId message : Store()->ParseMessages(list))
    {
        if (ContentsKey::Of(message).Folder() == m_folder && File().Messages().Exists(message))
        {
            here.push_back(message);
        }
        else
        {
            ++others;
        }
    }
    return here;
}

MessageId Folder::MessageHere(ULONG size, const ENTRYID* id) const
{
    const SBinary binary = {size, reinterpret_cast<BYTE*>(const_cast<ENTRYID*>(id))};
    const MessageId message = Store()->ParseMessage(binary);
    if (ContentsKey::Of(message).Folder() != m_folder)
    {
        throw Error(MAPI_E_NOT_FOUND, "the message is not in this folder");
    }
    return message;
}

HRESULT Folder::CreateMessage(LPCIID iid, ULONG flags, LPMESSAGE* message)
{
    return Guarded("IMAPIFolder::CreateMessage", [&]
    {
        Require(message != nullptr, "the output pointer is null");
        *message = nullptr;
        RequireFlags(flags, MAPI_ASSOCIATED | MAPI_DEFERRED_ERRORS | ArrivalFlags);
        RequireWrite();
        if (iid != nullptr && !IsEqualGUID(*iid, IID_IMessage) && !IsEqualGUID(*iid, IID_IMAPIProp))
        {
            throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "a message does not support the requested interface");
        }
        *message = NewMessage(Store(), m_folder, (flags & MAPI_ASSOCIATED) != 0).Detach();
    });
}

HRESULT Folder::CopyMessages(LPENTRYLIST list, LPCIID, LPVOID target, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Guarded("IMAPIFolder::CopyMessages", [&]() -> HRESULT
    {
        RequireFlags(flags, MESSAGE_MOVE | MESSAGE_DIALOG | MAPI_DIALOG | MAPI_DECLINE_OK);
        Require(target != nullptr, "the target folder is null");
        const bool move = (flags & MESSAGE_MOVE) != 0;
        if (move)
        {
            RequireWrite();
        }
        OwnFolder& to = RequireOwn(target);
        to.RequireChanges();
        size_t others = 0;
        const std::vector<MessageId> messages = MessagesHere(list, others);
        StoreFile& file = to.StoreOfFolder()->File();
        if (&file != &File())
        {
            others += CopyMessagesBetween(File(), messages, file, to.Id(), move);
        }
        else if (move && to.Id() != m_folder)
        {
            File().Messages().Move(messages, to.Id());
        }
        else if (!move)
        {
            File().Messages().Copy(messages, to.Id());
        }
        return others ? MAPI_W_PARTIAL_COMPLETION : S_OK;
    });
}

HRESULT Folder::DeleteMessages(LPENTRYLIST list, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Guarded("IMAPIFolder::DeleteMessages", [&]() -> HRESULT
    {
        RequireFlags(flags, MESSAGE_DIALOG | MAPI_DIALOG | DeleteHardDelete);
        RequireWrite();
        size_t others = 0;
        const std::vector<MessageId> messages = MessagesHere(list, others);
        File().Messages().Delete(messages);
        return others ? MAPI_W_PARTIAL_COMPLETION : S_OK;
    });
}

HRESULT Folder::CreateFolder(ULONG type, LPTSTR name, LPTSTR comment, LPCIID iid, ULONG flags, LPMAPIFOLDER* folder)
{
    return Guarded("IMAPIFolder::CreateFolder", [&]
    {
        Require(folder != nullptr, "the output pointer is null");
        *folder = nullptr;
        RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS | OPEN_IF_EXISTS);
        RequireWrite();
        if (iid != nullptr && !IsEqualGUID(*iid, IID_IMAPIFolder) && !IsEqualGUID(*iid, IID_IMAPIContainer) &&
            !IsEqualGUID(*iid, IID_IMAPIProp))
        {
            throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "a folder does not support the requested interface");
        }
        if (type == FOLDER_SEARCH)
        {
            throw Error(MAPI_E_NO_SUPPORT, "the store has no search folders");
        }
        Require(type == FOLDER_GENERIC, "this type of folder cannot be created");
        const std::string text = TextArgument(name, flags);
        Require(!text.empty(), "a folder needs a name");
        const std::lock_guard hold(File().Lock());
        FolderId made = flags & OPEN_IF_EXISTS ? File().Folders().Find(m_folder, text) : 0;
        if (!made)
        {
            PropertySet properties;
            properties.SetText(PR_DISPLAY_NAME_W, text);
            if (comment != nullptr)
            {
                properties.SetText(PR_COMMENT_W, TextArgument(comment, flags));
            }
            made = File().Folders().Create(m_folder, properties, type);
        }
        *folder = OpenFolder(Store(), made, Access::Write).Detach();
    });
}

HRESULT Folder::CopyFolder(ULONG size, LPENTRYID id, LPCIID, LPVOID target, LPTSTR name, ULONG_PTR, LPMAPIPROGRESS,
                           ULONG flags)
{
    return Guarded("IMAPIFolder::CopyFolder", [&]
    {
        RequireFlags(flags,
                     COPY_SUBFOLDERS | FOLDER_MOVE | FOLDER_DIALOG | MAPI_UNICODE | MAPI_DIALOG | MAPI_DECLINE_OK);
        Require(target != nullptr && size > 0, "the source identifier is empty or the target folder is null");
        OwnFolder& to = RequireOwn(target);
        to.RequireChanges();
        const FolderId folder = Store()->ParseFolder(id, size);
        if (File().Folders().Info(folder).parent != m_folder)
        {
            throw Error(MAPI_E_NOT_FOUND, "the folder is not a subfolder of this folder");
        }
        if (flags & FOLDER_MOVE)
        {
            RequireWrite();
        }
        FolderCopy copy{Store(), folder, to.StoreOfFolder(), to.Id(), TextArgument(name, flags), false, false};
        copy.move = (flags & FOLDER_MOVE) != 0;
        copy.subfolders = copy.move || (flags & COPY_SUBFOLDERS) != 0;
        CopyFolderTree(copy);
    });
}

HRESULT Folder::DeleteFolder(ULONG size, LPENTRYID id, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Guarded("IMAPIFolder::DeleteFolder", [&]
    {
        RequireFlags(flags, DEL_MESSAGES | DEL_FOLDERS | FOLDER_DIALOG | MAPI_DIALOG | DeleteHardDelete);
        RequireWrite();
        Require(size > 0 && id != nullptr, "the entry identifier of the folder is empty");
        const FolderId folder = Store()->ParseFolder(id, size);
        if (File().Folders().Info(folder).parent != m_folder)
        {
            throw Error(MAPI_E_NOT_FOUND, "the folder is not a subfolder of this folder");
        }
        File().Folders().Delete(folder, (flags & DEL_MESSAGES) != 0, (flags & DEL_FOLDERS) != 0);
    });
}

HRESULT Folder::EmptyFolder(ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Guarded("IMAPIFolder::EmptyFolder", [&]
    {
        RequireFlags(flags, DEL_ASSOCIATED | FOLDER_DIALOG | MAPI_DIALOG | DeleteHardDelete);
        RequireWrite();
        File().Folders().Empty(m_folder, (flags & DEL_ASSOCIATED) != 0);
    });
}

HRESULT Folder::SetReadFlags(LPENTRYLIST list, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Guarded("IMAPIFolder::SetReadFlags", [&]() -> HRESULT
    {
        RequireFlags(flags, SUPPRESS_RECEIPT | CLEAR_READ_FLAG | GENERATE_RECEIPT_ONLY | MAPI_DEFERRED_ERRORS |
                                MAPI_DIALOG | MESSAGE_DIALOG | ULONG(0x20) | ULONG(0x40));
        RequireWrite();
        size_t others = 0;
        const std::vector<MessageId> messages =
            list != nullptr ? MessagesHere(list, others) : File().Messages().In({m_folder, false});
        if (!(flags & GENERATE_RECEIPT_ONLY))
        {
            File().Messages().ChangeFlags(messages, flags & CLEAR_READ_FLAG ? 0 : MSGFLAG_READ,
                                          flags & CLEAR_READ_FLAG ? MSGFLAG_READ : 0);
        }
        return others ? MAPI_W_PARTIAL_COMPLETION : S_OK;
    });
}

HRESULT Folder::GetMessageStatus(ULONG size, LPENTRYID id, ULONG flags, ULONG* status)
{
    return Guarded("IMAPIFolder::GetMessageStatus", [&]
    {
        Require(status != nullptr, "the output pointer is null");
        RequireFlags(flags, 0);
        *status = static_cast<ULONG>(File().Messages().Load(MessageHere(size, id)).properties.Long(PR_MSG_STATUS));
    });
}

HRESULT Folder::SetMessageStatus(ULONG size, LPENTRYID id, ULONG status, ULONG mask, ULONG* old)
{
    return Guarded("IMAPIFolder::SetMessageStatus", [&]
    {
        RequireWrite();
        const MessageId message = MessageHere(size, id);
        const std::lock_guard hold(File().Lock());
        StoredMessage stored = File().Messages().Load(message);
        const ULONG before = static_cast<ULONG>(stored.properties.Long(PR_MSG_STATUS));
        MessageContent content;
        content.properties = std::move(stored.properties);
        content.properties.SetLong(PR_MSG_STATUS, static_cast<LONG>((before & ~mask) | (status & mask)));
        File().Messages().Save(message, content, stored.change);
        if (old != nullptr)
        {
            *old = before;
        }
    });
}

HRESULT Folder::SaveContentsSort(LPSSortOrderSet, ULONG)
{
    return Guarded("IMAPIFolder::SaveContentsSort",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "folders do not store a sort order"); });
}

} // namespace zebstore
