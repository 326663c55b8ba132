// The folders that every store has, as they are created.
#pragma once

#include "zebstore/storage/StoreIds.h"

namespace zebstore
{

struct StandardName
{
    StandardFolder folder;
    StandardFolder parent; ///< of the root: itself
    ULONG type;
    const char* name;

    /// 0 for the root.
    constexpr FolderId Parent() const { return folder == StandardFolder::Root ? 0 : IdOf(parent); }
};

constexpr StandardName StandardNames[] = {
    {StandardFolder::Root, StandardFolder::Root, FOLDER_ROOT, ""},
    {StandardFolder::IpmSubtree, StandardFolder::Root, FOLDER_GENERIC, "Top of Personal Folders"},
    {StandardFolder::Inbox, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Inbox"},
    {StandardFolder::Outbox, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Outbox"},
    {StandardFolder::DeletedItems, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Deleted Items"},
    {StandardFolder::SentItems, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Sent Items"},
    {StandardFolder::Contacts, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Contacts"},
    {StandardFolder::Finder, StandardFolder::Root, FOLDER_GENERIC, "Search Root"},
    {StandardFolder::Views, StandardFolder::Root, FOLDER_GENERIC, "Personal Views"},
    {StandardFolder::CommonViews, StandardFolder::Root, FOLDER_GENERIC, "Common Views"},
};

} // namespace zebstore
