#include "zebstore/objects/FolderCopy.h"

#include "zebstore/base/Error.h"

namespace zebstore
{
namespace
{

// Large values are read from the source while they are written to the target. Another thread may copy the other way, so both
// are locked at once.
using LockBoth = std::scoped_lock<StoreLock, StoreLock>;

/// @param properties of a folder of `from`
FolderId CreateLike(StoreFile& from, StoreFile& to, FolderId parent, const PropertySet& properties)
{
    const LockBoth both(from.Lock(), to.Lock());
    return to.Folders().Create(parent, properties);
}

} // namespace

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
        const LockBoth both(source.Lock(), target.Lock());
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
    const FolderId made = CreateLike(from, to, copy.targetParent, properties);
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
