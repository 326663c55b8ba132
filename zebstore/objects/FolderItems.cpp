// IMAPIFolder: operations on messages and subfolders.
#include "zebstore/objects/Folder.h"
#include "zebstore/objects/Message.h"
#include "zebstore/objects/OpenFlags.h"
#include "zebstore/storage/Text.h"

namespace zebstore
{
namespace
{

void RequireOwn(const Folder* folder)
{
    if (!folder)
    {
        throw Error(MAPI_E_NO_SUPPORT, "the target is not a folder of this provider");
    }
}

} // namespace

std::vector<MessageId> Folder::MessagesHere(const ENTRYLIST* list, size_t& strangers) const
{
    std::vector<MessageId> here;
    strangers = 0;
    for (MessageId message : Store()->ParseMessages(list))
    {
        if (ContentsKey::Of(message).Folder() == m_folder && File().Messages().Exists(message))
        {
            here.push_back(message);
        }
        else
        {
            ++strangers;
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
        if (iid && !IsEqualGUID(*iid, IID_IMessage) && !IsEqualGUID(*iid, IID_IMAPIProp))
        {
            throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "a message does not support the requested interface");
        }
        *message = NewMessage(Store(), m_folder, (flags & MAPI_ASSOCIATED) != 0).Detach();
    });
}

size_t CopyMessagesBetween(StoreFile& source, const std::vector<MessageId>& messages, StoreFile& target,
                           FolderId folder, bool move)
{
    size_t missing = 0;
    std::vector<MessageId> done;
    for (MessageId message : messages)
    {
        if (!source.Messages().Exists(message))
        {
            ++missing;
            continue;
        }
        target.Messages().Create({folder, ContentsKey::Of(message).IsAssociated()},
                                 source.Messages().LoadWhole(message));
        done.push_back(message);
    }
    if (move)
    {
        source.Messages().Delete(done);
    }
    return missing;
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
        Folder* to = OwnFolder(target);
        RequireOwn(to);
        to->RequireWrite();
        size_t strangers = 0;
        const std::vector<MessageId> messages = MessagesHere(list, strangers);
        if (&to->File() != &File())
        {
            strangers += CopyMessagesBetween(File(), messages, to->File(), to->Id(), move);
        }
        else if (move && to->Id() != m_folder)
        {
            File().Messages().Move(messages, to->Id());
        }
        else if (!move)
        {
            File().Messages().Copy(messages, to->Id());
        }
        return strangers ? MAPI_W_PARTIAL_COMPLETION : S_OK;
    });
}

HRESULT Folder::DeleteMessages(LPENTRYLIST list, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Guarded("IMAPIFolder::DeleteMessages", [&]() -> HRESULT
    {
        RequireFlags(flags, MESSAGE_DIALOG | MAPI_DIALOG | DeleteHardDelete);
        RequireWrite();
        size_t strangers = 0;
        const std::vector<MessageId> messages = MessagesHere(list, strangers);
        File().Messages().Delete(messages);
        return strangers ? MAPI_W_PARTIAL_COMPLETION : S_OK;
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
        if (iid && !IsEqualGUID(*iid, IID_IMAPIFolder) && !IsEqualGUID(*iid, IID_IMAPIContainer) &&
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
        const std::lock_guard<std::recursive_mutex> hold(File().Lock());
        FolderId made = flags & OPEN_IF_EXISTS ? File().Folders().Find(m_folder, text) : 0;
        if (!made)
        {
            PropertySet properties;
            properties.SetText(PR_DISPLAY_NAME_W, text);
            if (comment)
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
        Folder* to = OwnFolder(target);
        RequireOwn(to);
        to->RequireWrite();
        const FolderId folder = Store()->ParseFolder(id, size);
        if (File().Folders().Info(folder).parent != m_folder)
        {
            throw Error(MAPI_E_NOT_FOUND, "the folder is not a subfolder of this folder");
        }
        if (flags & FOLDER_MOVE)
        {
            RequireWrite();
        }
        FolderCopy copy{Store(), folder, to->Store(), to->Id(), TextArgument(name, flags), false, false};
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
        Require(size > 0 && id, "the entry identifier of the folder is empty");
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
        size_t strangers = 0;
        const std::vector<MessageId> messages =
            list ? MessagesHere(list, strangers) : File().Messages().In({m_folder, false});
        if (!(flags & GENERATE_RECEIPT_ONLY))
        {
            File().Messages().ChangeFlags(messages, flags & CLEAR_READ_FLAG ? 0 : MSGFLAG_READ,
                                          flags & CLEAR_READ_FLAG ? MSGFLAG_READ : 0);
        }
        return strangers ? MAPI_W_PARTIAL_COMPLETION : S_OK;
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
        const std::lock_guard<std::recursive_mutex> hold(File().Lock());
        StoredMessage stored = File().Messages().Load(message);
        const ULONG before = static_cast<ULONG>(stored.properties.Long(PR_MSG_STATUS));
        MessageContent content;
        content.properties = std::move(stored.properties);
        content.properties.SetLong(PR_MSG_STATUS, static_cast<LONG>((before & ~mask) | (status & mask)));
        File().Messages().Save(message, content, stored.change);
        if (old)
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

void CopyFolderTree(const FolderCopy& copy)
{
    StoreFile& from = copy.source->File();
    StoreFile& to = copy.target->File();
    PropertySet properties = from.Folders().Properties(copy.folder);
    const std::string name = copy.newName.empty() ? properties.Text(PR_DISPLAY_NAME_W) : copy.newName;
    if (copy.move && &from == &to)
    {
        from.Folders().Move(copy.folder, copy.targetParent, name);
        return;
    }
    if (copy.source->IsSameStore(*copy.target) && copy.subfolders &&
        to.Folders().IsWithin(copy.targetParent, copy.folder))
    {
        throw Error(MAPI_E_FOLDER_CYCLE, "a folder cannot be copied into itself");
    }
    properties.SetText(PR_DISPLAY_NAME_W, name);
    const FolderId made = to.Folders().Create(copy.targetParent, properties);
    for (bool associated : {false, true})
    {
        const std::vector<MessageId> messages = from.Messages().In({copy.folder, associated});
        if (&from == &to)
        {
            to.Messages().Copy(messages, made);
        }
        else
        {
            CopyMessagesBetween(from, messages, to, made, false);
        }
    }
    if (copy.subfolders)
    {
        for (const FolderInfo& each : from.Folders().Under(copy.folder, false))
        {
            CopyFolderTree({copy.source, each.id, copy.target, made, std::string(), false, true});
        }
    }
    if (copy.move)
    {
        from.Folders().Delete(copy.folder, true, true);
    }
}

} // namespace zebstore
