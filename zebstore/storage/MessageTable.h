// The table `message`: messages with all that belongs to them.
#pragma once

#include "zebstore/storage/AttachmentTable.h"
#include "zebstore/storage/ContentsTable.h"
#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/MessageContent.h"
#include "zebstore/storage/RecipientTable.h"
#include "zebstore/storage/TextIndex.h"
#include "zebstore/storage/VerifiedRows.h"

#include <vector>

namespace zebstore
{

/// Sets, whenever a message is saved, PR_MESSAGE_SIZE, PR_HASATTACH and MSGFLAG_HASATTACH in PR_MESSAGE_FLAGS. Each
/// public call that writes is one transaction, or a part of the caller's. Threads: any; the connection's lock is taken
/// inside.
class MessageTable : private EmbeddedMessages
{
public:
    MessageTable(StoreConnection& connection, ContentsTable& contents, RecipientTable& recipients,
                 AttachmentTable& attachments, TextIndex& texts)
        : m_connection(connection)
        , m_contents(contents)
        , m_recipients(recipients)
        , m_attachments(attachments)
        , m_texts(texts)
    {
    }

    /// @throws Error MAPI_E_NOT_FOUND when the folder does not exist, MAPI_E_TOO_COMPLEX for messages nested in more
    ///   than 64 others
    /// REQUIRES: with large values of another store, that the locks of both are held, taken at once.
    MessageId Create(ContentsKey contents, const MessageContent& content);
    /// @param change the StoredMessage::change that the caller's content is based on; 0 overwrites whatever is stored
    /// @return the message's new change number
    /// @throws Error MAPI_E_OBJECT_CHANGED when it was saved since, MAPI_E_OBJECT_DELETED when it does not exist
    std::int64_t Save(MessageId message, const MessageContent& content, std::int64_t change);
    /// @throws Error MAPI_E_NOT_FOUND
    StoredMessage Load(MessageId message);
    bool Exists(MessageId message);
    /// The messages whose properties were compared with their checksum by a table. Load compares them each time.
    /// REQUIRES: the connection's lock is held while it is used.
    VerifiedRows& Verified() { return m_verified; }
    /// A message with all that belongs to it, fit for Create in this or another store. @throws Error MAPI_E_NOT_FOUND
    MessageContent LoadWhole(MessageId message);
    /// All messages of a folder in their natural order.
    std::vector<MessageId> In(ContentsKey contents);
    /// Skips messages that do not exist. @return how many were deleted
    size_t Delete(const std::vector<MessageId>& messages);
    /// Normal messages stay normal and associated ones associated.
    /// @return the new identifiers, 0 for a message that does not exist
    /// @throws Error MAPI_E_NOT_FOUND when the folder does not exist
    std::vector<MessageId> Move(const std::vector<MessageId>& messages, FolderId folder);
    std::vector<MessageId> Copy(const std::vector<MessageId>& messages, FolderId folder);
    /// Sets and clears bits of PR_MESSAGE_FLAGS and changes nothing else.
    void ChangeFlags(const std::vector<MessageId>& messages, ULONG set, ULONG clear);
    /// Deletes all messages of a folder; in the caller's transaction.
    void Clear(ContentsKey contents);

private:
    struct Old;
    struct Row;

    MessageId InsertEmbedded(const MessageContent& content, int depth) override;
    void DeleteEmbedded(MessageId message) override { DeleteRow(message); }

    MessageId Insert(ContentsKey contents, const MessageContent& content, int depth);
    bool ReadOld(MessageId message, Old& old);
    void WriteParts(MessageId message, const MessageContent& content, int depth);
    Row Encode(PropertySet properties, const PartsSize& recipients, const PartsSize& attachments,
               std::vector<LargeReference>& kept);
    void DeleteRow(MessageId message);
    MessageId MoveRow(MessageId message, const Old& old, ContentsKey to);

    StoreConnection& m_connection;
    ContentsTable& m_contents;
    RecipientTable& m_recipients;
    AttachmentTable& m_attachments;
    TextIndex& m_texts;
    VerifiedRows m_verified;
};

} // namespace zebstore
