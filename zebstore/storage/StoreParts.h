// What the parts of StoreFile's implementation share.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/StoreFile.h"

namespace zebstore
{

/// While it lives the store is not written through this connection, and what is read is of one moment.
class StoreMoment
{
public:
    explicit StoreMoment(StoreFile& store)
        : m_hold(store.Lock())
        , m_read(store.Connection())
    {
    }

private:
    std::lock_guard<std::recursive_mutex> m_hold;
    ReadScope m_read;
};

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

/// What happened to one row of a place of messages.
enum class RowEvent
{
    Added,
    Deleted,
    Modified,
};

/// The row of a place of messages. Folder 0: the messages inside attachments.
void InsertContents(Database& database, std::int64_t container, FolderId folder);
/// Notes that a message was changed or deleted: moves the counters and the change number of its place.
/// @param unread by how many the unread messages become more
/// @return the place's new change number
std::int64_t TouchContents(Database& database, MessageId message, RowEvent event, std::int64_t unread);
/// The same for a new message, with the number that it gets in `message`.
std::int64_t AddToContents(Database& database, std::int64_t container, std::int64_t unread, MessageId& message);
/// Notes that a place has lost all its messages at once.
void TouchWholeContents(Database& database, std::int64_t container);
/// The folder tree has changed.
void TouchTree(Database& database);

/// In the caller's transaction; id 0 takes the next one. @return the folder's number
FolderId InsertFolder(StoreFile& store, FolderId id, FolderId parent, const PropertySet& properties, ULONG type);
/// @throws Error MAPI_E_NOT_FOUND
void RequireFolder(StoreFile& store, FolderId folder);

/// Deletes all messages of a place with all that belongs to them.
void ClearContents(StoreFile& store, std::int64_t container);

/// Deletes the chunks of references that are no longer used.
void DeleteReferences(Database& database, const std::vector<LargeReference>& references);

/// Writes, in the caller's transaction, what belongs to a message beside its row.
void WriteRecipients(StoreFile& store, MessageId message, const std::vector<PropertySet>& recipients);
void WriteAttachments(StoreFile& store, MessageId message, const std::vector<AttachmentEdit>& edits, int depth);
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
