// The table `attachment`: the attachments of messages.
#pragma once

#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/MessageContent.h"
#include "zebstore/storage/MessageRow.h"
#include "zebstore/storage/StoreConnection.h"

#include <optional>
#include <vector>

namespace zebstore
{

/// Stores the messages inside attachments. In the caller's transaction.
class EmbeddedMessages
{
public:
    /// @param depth how many messages it is nested in
    /// @throws Error MAPI_E_TOO_COMPLEX
    virtual MessageId InsertEmbedded(const MessageContent& content, int depth) = 0;
    virtual void DeleteEmbedded(MessageId message) = 0;

protected:
    ~EmbeddedMessages() = default;
};

/// An attachment as its row holds it.
struct AttachmentRow
{
    ULONG number = 0;
    MessageId embedded = 0; ///< 0: none
    std::string blob;
    std::uint64_t bytes = 0; ///< what it adds to PR_MESSAGE_SIZE
};

/// Threads: any; the connection's lock is taken inside. What writes is called in the caller's transaction.
class AttachmentTable
{
public:
    explicit AttachmentTable(StoreConnection& connection)
        : m_connection(connection)
    {
    }

    /// In ascending order. @throws Error MAPI_E_CORRUPT_STORE when the message should have some and has none
    std::vector<ULONG> Numbers(MessageId message);
    /// Reads one row, however many attachments there are.
    /// @throws Error MAPI_E_CORRUPT_STORE when the message should have attachments and has none
    bool Has(MessageId message, ULONG number);
    /// @throws Error MAPI_E_NOT_FOUND
    PropertySet Load(MessageId message, ULONG number);
    /// The message inside an attachment. @throws Error MAPI_E_NOT_FOUND
    std::optional<MessageId> Embedded(MessageId message, ULONG number);

    /// The rows of a new message, for Insert; writes only what they refer to: large values, and messages inside them.
    std::vector<AttachmentRow> Encode(const std::vector<AttachmentEdit>& edits, int depth, EmbeddedMessages& messages);
    void Insert(MessageId message, const std::vector<AttachmentRow>& rows);
    /// Applies edits to the attachments of a message.
    /// @param depth how many messages the message is nested in
    void Write(MessageId message, const std::vector<AttachmentEdit>& edits, int depth, EmbeddedMessages& messages);
    void DeleteAll(MessageId message, EmbeddedMessages& messages);
    PartsSize SizeOf(MessageId message);

private:
    struct Old;

    Old Read(MessageId message, ULONG number);
    std::string EncodeOne(const AttachmentEdit& edit, std::vector<LargeReference>& kept);
    std::uint64_t SizeOfEmbedded(MessageId message);
    std::vector<ULONG> ReadNumbers(MessageId message);
    void Write(MessageId message, const AttachmentEdit& edit, int depth, EmbeddedMessages& messages);
    void Delete(MessageId message, ULONG number, EmbeddedMessages& messages);

    StoreConnection& m_connection;
};

} // namespace zebstore
