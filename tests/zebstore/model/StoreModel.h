// A store as it must be: folders and messages in memory.
#pragma once

#include "tests/zebstore/model/Condition.h"

#include <memory>

namespace zebstore::model
{

/// Names an object for people; 0 for one that has none yet.
using ObjectNumber = int;

struct Mail
{
    ObjectNumber number = 0;
    unsigned version = 0; ///< another one after each change
    bool isAssociated = false;
    Item item; ///< as it was written; PR_MESSAGE_FLAGS without what the store adds
    std::vector<BYTE> id;
    std::string key;

    bool IsRead() const;
    void SetRead(bool isRead);
};
using MailPtr = std::shared_ptr<Mail>;

struct Folder;
using FolderPtr = std::shared_ptr<Folder>;

struct Folder
{
    ObjectNumber number = 0;
    unsigned version = 0;
    Properties own;
    Folder* parent = nullptr; ///< null: the root of the model
    std::vector<FolderPtr> children;
    std::vector<MailPtr> normal, associated; ///< in the order of their arrival
    std::vector<BYTE> id;
    std::string key;

    std::vector<MailPtr>& Mails(bool ofAssociated) { return ofAssociated ? associated : normal; }
    const Wide& Name() const;
    void SetName(const Wide& name);
    size_t Unread() const;
    /// Null: no folder of this name, whatever its case.
    Folder* Find(const Wide& name) const;
    bool IsWithin(const Folder& ancestor) const;
    /// Puts the subfolders into the order in which tables show them.
    void SortChildren();
};

/// All properties that a client sees of a message, those that the store adds too.
Item ShownOf(const Mail& mail);
/// The same of a folder in a hierarchy table.
Item ShownOf(const Folder& folder, int depth);

/// The properties that folders have in hierarchy tables.
const std::vector<Kind>& FolderKinds();
/// Columns of a contents table.
const std::vector<Kind>& MailColumnKinds();

/// Random content for a message. @param isNew also the flags, which only a new message can have written
void ChangeMail(Random& random, Mail& mail, bool isNew);
Properties RandomRecipient(Random& random);
Properties RandomAttachment(Random& random);
/// As the store numbers it and completes it.
void AddRecipient(Mail& mail, Properties recipient);

/// A new folder tree like another one. @param next gives numbers
FolderPtr CopyOf(const Folder& folder, bool withSubfolders, int& next);
MailPtr CopyOf(const Mail& mail, int& next);

} // namespace zebstore::model
