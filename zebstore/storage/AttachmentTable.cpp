// Recipients and attachments of StoreFile's messages.
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/storage/StoreParts.h"

namespace zebstore
{

namespace
{

// What a stored part adds to the size of its message.
std::uint64_t BytesOf(std::string_view blob)
{
    std::uint64_t bytes = PropertyBlob::SizeOf(blob);
    for (const LargeReference& reference : ReferencesIn(blob))
    {
        bytes += reference.size;
    }
    return bytes;
}

// One stored attachment as it was before an edit.
struct OldAttachment
{
    bool exists = false;
    MessageId embedded = 0;
    std::vector<LargeReference> large;
};

OldAttachment ReadOldAttachment(StoreFile& store, MessageId message, ULONG number)
{
    OldAttachment old;
    Query query(store.Connection(), "SELECT embedded, props FROM attachment WHERE message=? AND number=?");
    query.Bind(1, message).Bind(2, number);
    if (query.Step())
    {
        old.exists = true;
        old.embedded = query.Number(0);
        old.large = ReferencesIn(query.Bytes(1));
    }
    return old;
}

MessageId EmbeddedAfter(StoreFile& store, const AttachmentEdit& edit, const OldAttachment& old, int depth)
{
    if (!edit.embedded && !edit.dropEmbedded)
    {
        return old.embedded;
    }
    // The old one goes last: the new one may hold large values that are still the old one's.
    const MessageId made = edit.embedded ? InsertMessage(store, 0, *edit.embedded, depth + 1) : 0;
    if (old.embedded != 0)
    {
        DeleteMessageRow(store, old.embedded);
    }
    return made;
}

void RemoveAttachment(StoreFile& store, MessageId message, ULONG number, const OldAttachment& old)
{
    if (old.embedded != 0)
    {
        DeleteMessageRow(store, old.embedded);
    }
    DeleteReferences(store.Connection(), old.large);
    Query(store.Connection(), "DELETE FROM attachment WHERE message=? AND number=?")
        .Bind(1, message)
        .Bind(2, number)
        .Run();
}

void WriteAttachment(StoreFile& store, MessageId message, const AttachmentEdit& edit, int depth)
{
    OldAttachment old = ReadOldAttachment(store, message, edit.number);
    if (edit.removed)
    {
        return RemoveAttachment(store, message, edit.number, old);
    }
    const MessageId embedded = EmbeddedAfter(store, edit, old, depth);
    PropertySet properties = edit.properties;
    properties.SetLong(PR_ATTACH_NUM, static_cast<LONG>(edit.number));
    bool large = false;
    const std::string blob = WriteBlob(store, properties, old.large, large);
    Query query(store.Connection(),
                "INSERT OR REPLACE INTO attachment(message, number, embedded, props) VALUES(?, ?, ?, ?)");
    query.Bind(1, message).Bind(2, edit.number).BindBlob(4, blob);
    if (embedded == 0)
    {
        query.BindNull(3);
    }
    else
    {
        query.Bind(3, embedded);
    }
    query.Run();
    DeleteReferences(store.Connection(), old.large);
}

[[noreturn]] void ThrowNoAttachment(const StoreFile& store)
{
    throw Error(MAPI_E_NOT_FOUND, "The attachment is not in the store file '" + store.Path() + "' any more.");
}

std::vector<ULONG> NumbersOf(StoreFile& store, MessageId message)
{
    std::vector<ULONG> numbers;
    Query query(store.Connection(), "SELECT number FROM attachment WHERE message=? ORDER BY number");
    query.Bind(1, message);
    while (query.Step())
    {
        numbers.push_back(static_cast<ULONG>(query.Number(0)));
    }
    return numbers;
}

// A message whose row tells of parts of this kind has some; where none are found they are lost.
void RequireNone(StoreFile& store, MessageId message, MessageParts kind)
{
    Query query(store.Connection(), "SELECT 1 FROM message WHERE id=? AND (parts & ?) != 0");
    if (query.Bind(1, message).Bind(2, kind).Step())
    {
        throw Error(MAPI_E_CORRUPT_STORE, "The store file '" + store.Path() + "' is damaged: " +
                                              (kind == HasRecipients ? "the recipients" : "the attachments") +
                                              " of message " + std::to_string(message) + " are missing.");
    }
}

} // namespace

void DeleteReferences(Database& database, const std::vector<LargeReference>& references)
{
    for (const LargeReference& reference : references)
    {
        for (const std::int64_t id : reference.Ids())
        {
            DeleteLarge(database, id);
        }
    }
}

void WriteRecipients(StoreFile& store, MessageId message, const std::vector<PropertySet>& recipients)
{
    Database& database = store.Connection();
    std::vector<LargeReference> kept;
    {
        Query query(database, "SELECT props FROM recipient WHERE message=?");
        query.Bind(1, message);
        while (query.Step())
        {
            for (const LargeReference& reference : ReferencesIn(query.Bytes(0)))
            {
                kept.push_back(reference);
            }
        }
    }
    Query(database, "DELETE FROM recipient WHERE message=?").Bind(1, message).Run();
    Query query(database, "INSERT INTO recipient(message, number, props) VALUES(?, ?, ?)");
    std::int64_t number = 0;
    for (const PropertySet& recipient : recipients)
    {
        bool large = false;
        const std::string blob = WriteBlob(store, recipient, kept, large);
        query.Bind(1, message).Bind(2, number++).BindBlob(3, blob).Run();
        query.Reset();
    }
    DeleteReferences(database, kept);
}

void WriteAttachments(StoreFile& store, MessageId message, const std::vector<AttachmentEdit>& edits, int depth)
{
    for (const AttachmentEdit& edit : edits)
    {
        WriteAttachment(store, message, edit, depth);
    }
}

PartsSummary SummarizeParts(StoreFile& store, MessageId message)
{
    PartsSummary summary;
    {
        Query query(store.Connection(), "SELECT props FROM recipient WHERE message=?");
        query.Bind(1, message);
        while (query.Step())
        {
            summary.recipients = true;
            summary.bytes += BytesOf(query.Bytes(0));
        }
    }
    Query query(store.Connection(), "SELECT a.props, m.size FROM attachment a LEFT JOIN message m ON m.id=a.embedded "
                                    "WHERE a.message=?");
    query.Bind(1, message);
    while (query.Step())
    {
        summary.attachments = true;
        summary.bytes += BytesOf(query.Bytes(0)) + static_cast<std::uint64_t>(query.Number(1));
    }
    return summary;
}

void ReleaseParts(StoreFile& store, MessageId message)
{
    WriteRecipients(store, message, {});
    for (const ULONG number : NumbersOf(store, message))
    {
        RemoveAttachment(store, message, number, ReadOldAttachment(store, message, number));
    }
}

std::vector<PropertySet> StoreFile::Recipients(MessageId message)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    std::vector<PropertySet> recipients;
    Query query(*m_database, "SELECT props FROM recipient WHERE message=? ORDER BY number");
    query.Bind(1, message);
    while (query.Step())
    {
        recipients.push_back(PropertyBlob(query.Bytes(0), *this, {"a recipient of message", message}).Decode());
    }
    if (recipients.empty())
    {
        RequireNone(*this, message, HasRecipients);
    }
    return recipients;
}

std::vector<ULONG> StoreFile::AttachmentNumbers(MessageId message)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    std::vector<ULONG> numbers = NumbersOf(*this, message);
    if (numbers.empty())
    {
        RequireNone(*this, message, HasAttachments);
    }
    return numbers;
}

PropertySet StoreFile::Attachment(MessageId message, ULONG number)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT props FROM attachment WHERE message=? AND number=?");
    query.Bind(1, message).Bind(2, number);
    if (!query.Step())
    {
        ThrowNoAttachment(*this);
    }
    return PropertyBlob(query.Bytes(0), *this, {"an attachment of message", message}).Decode();
}

std::optional<MessageId> StoreFile::EmbeddedMessage(MessageId message, ULONG number)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT embedded FROM attachment WHERE message=? AND number=?");
    query.Bind(1, message).Bind(2, number);
    if (!query.Step())
    {
        ThrowNoAttachment(*this);
    }
    if (query.IsNull(0))
    {
        return std::nullopt;
    }
    return query.Number(0);
}

} // namespace zebstore
