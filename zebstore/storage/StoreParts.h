// What the parts of StoreFile's implementation share.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/StoreFile.h"

namespace zebstore
{

constexpr std::int64_t ContainerOf(FolderId folder, bool associated)
{
    return folder * 2 + (associated ? 1 : 0);
}
constexpr std::int64_t ContainerOf(MessageId message)
{
    return message >> 32;
}
constexpr MessageId FirstOf(std::int64_t container)
{
    return container << 32;
}
constexpr MessageId LastOf(std::int64_t container)
{
    return FirstOf(container) | 0xFFFFFFFF;
}

/// The row of a place of messages. Folder 0: the messages inside attachments.
void InsertContents(Database& database, std::int64_t container, FolderId folder);
/// Adds to a place's counters and moves its change number. @return the change number
std::int64_t TouchContents(Database& database, std::int64_t container, std::int64_t rows,
                           std::int64_t unread);
/// The same for one more message, with the number it gets in `message`.
std::int64_t AddToContents(Database& database, std::int64_t container, std::int64_t unread,
                           MessageId& message);
/// The folder tree has changed.
void TouchTree(Database& database);

/// In the caller's transaction; id 0 takes the next one. @return the folder's number
FolderId InsertFolder(StoreFile& store, FolderId id, FolderId parent, const PropertySet& properties,
                      ULONG type);
/// @throws Error MAPI_E_NOT_FOUND
void RequireFolder(StoreFile& store, FolderId folder);

/// Deletes all messages of a place with all that belongs to them.
void ClearContents(StoreFile& store, std::int64_t container);

/// Deletes the chunks of references that are no longer used.
void DeleteReferences(Database& database, const std::vector<LargeReference>& references);

/// Writes, in the caller's transaction, what belongs to a message beside its row.
void WriteRecipients(StoreFile& store, MessageId message, const std::vector<PropertySet>& recipients);
void WriteAttachments(StoreFile& store, MessageId message, const std::vector<AttachmentEdit>& edits,
                      int depth);
/// What lies beside a message's row: which parts there are, and their bytes.
struct PartsSummary
{
    bool recipients = false;
    bool attachments = false;
    std::uint64_t bytes = 0;
};
PartsSummary SummarizeParts(StoreFile& store, MessageId message);
/// Deletes large values and embedded messages of a message's parts; the rows go with the message.
void ReleaseParts(StoreFile& store, MessageId message);

/// A message inside an attachment. @throws Error MAPI_E_TOO_COMPLEX below 64 levels
MessageId InsertMessage(StoreFile& store, std::int64_t container, const MessageContent& content, int depth);
void DeleteMessageRow(StoreFile& store, MessageId message);

} // namespace zebstore
