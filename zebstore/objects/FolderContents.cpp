#include "zebstore/objects/FolderContents.h"

#include "zebstore/objects/FolderCopy.h"
#include "zebstore/objects/Progress.h"

#include <algorithm>

namespace zebstore
{
namespace
{

// Messages per step; each step is a transaction of its own, and progress is reported between steps.
constexpr size_t MessagesInStep = 64;

bool IsStandardFolder(FolderId folder)
{
    return folder <= IdOf(StandardFolder::CommonViews);
}

std::uint64_t MessagesBelow(StoreFile& file, FolderId folder)
{
    const FolderInfo info = file.Folders().Info(folder);
    std::uint64_t count = std::uint64_t{info.messages} + info.associated;
    for (const FolderInfo& each : file.Folders().Under(folder, true))
    {
        count += std::uint64_t{1} + each.messages + each.associated;
    }
    return count;
}

std::uint64_t StepsOf(const FolderContents& contents)
{
    StoreFile& file = contents.source->File();
    const FolderInfo info = file.Folders().Info(contents.folder);
    std::uint64_t steps = 0;
    if (contents.messages)
    {
        steps += info.messages;
    }
    if (contents.associated)
    {
        steps += info.associated;
    }
    if (contents.subfolders)
    {
        for (const FolderInfo& each : file.Folders().Under(contents.folder, false))
        {
            steps += 1 + MessagesBelow(file, each.id);
        }
    }
    return steps;
}

void CopySome(const FolderContents& contents, const std::vector<MessageId>& messages)
{
    StoreFile& from = contents.source->File();
    StoreFile& to = contents.target->File();
    if (&from != &to)
    {
        CopyMessagesBetween(from, messages, to, contents.into, contents.move);
    }
    else if (contents.move)
    {
        to.Messages().Move(messages, contents.into);
    }
    else
    {
        to.Messages().Copy(messages, contents.into);
    }
}

void CopyMessagesOf(const FolderContents& contents, bool associated, Progress& progress)
{
    const std::vector<MessageId> all = contents.source->File().Messages().In({contents.folder, associated});
    for (size_t done = 0; done < all.size();)
    {
        const size_t step = std::min(MessagesInStep, all.size() - done);
        const auto first = all.begin() + static_cast<std::ptrdiff_t>(done);
        CopySome(contents, {first, first + static_cast<std::ptrdiff_t>(step)});
        done += step;
        progress.Advance(step);
    }
}

} // namespace

void RequireContentsFit(const FolderContents& contents)
{
    if (!contents.subfolders)
    {
        return;
    }
    StoreFile& from = contents.source->File();
    StoreFile& to = contents.target->File();
    if (contents.source->IsSameStore(*contents.target) && to.Folders().IsWithin(contents.into, contents.folder))
    {
        throw Error(MAPI_E_FOLDER_CYCLE, "a folder cannot be copied into itself");
    }
    for (const FolderInfo& each : from.Folders().Under(contents.folder, false))
    {
        const std::string name = from.Folders().Properties(each.id).Text(PR_DISPLAY_NAME_W);
        if (contents.move && IsStandardFolder(each.id))
        {
            throw Error(MAPI_E_NO_ACCESS, "the standard folder '" + name + "' cannot be moved");
        }
        if (to.Folders().Find(contents.into, name))
        {
            throw Error(MAPI_E_COLLISION, "the target has a folder '" + name + "' already");
        }
    }
}

void CopyFolderContents(const FolderContents& contents, IMAPIProgress* sink)
{
    StoreFile& from = contents.source->File();
    Progress progress(sink, StepsOf(contents));
    if (contents.messages)
    {
        CopyMessagesOf(contents, false, progress);
    }
    if (contents.associated)
    {
        CopyMessagesOf(contents, true, progress);
    }
    if (!contents.subfolders)
    {
        return;
    }
    for (const FolderInfo& each : from.Folders().Under(contents.folder, false))
    {
        const std::uint64_t steps = 1 + MessagesBelow(from, each.id);
        CopyFolderTree({contents.source, each.id, contents.target, contents.into, std::string(), contents.move, true});
        progress.Advance(steps);
    }
}

} // namespace zebstore
