// The messages of StoreFile.
#include "zebstore/storage/StoreFile.h"

#include "zebstore/storage/MessageRow.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/storage/StoreParts.h"

#include <algorithm>
#include <limits>

namespace zebstore
{

namespace
{

constexpr int MostNested = 64;

// A message's row as it is written.
struct Row
{
    MessageCopies copies;
    std::int64_t parts = 0;
    std::string blob;
};

std::uint64_t BytesOf(const PropertySet& properties)
{
    std::uint64_t bytes = 0;
    for (const PropertySet::Item& item : properties.Items())
    {
        bytes += StoredSize(item);
    }
    return bytes;
}

LONG AsLong(std::uint64_t size)
{
    return static_cast<LONG>(std::min<std::uint64_t>(size, std::numeric_limits<LONG>::max()));
}

// Settles the properties that the store sets itself, and the row's copies. `properties` is completed.
Row MakeRow(StoreFile& store, PropertySet& properties, const PartsSummary& summary, std::vector<LargeReference>& kept)
{
    LONG flags = properties.Long(PR_MESSAGE_FLAGS) & ~MSGFLAG_HASATTACH;
    if (summary.attachments)
    {
        flags |= MSGFLAG_HASATTACH;
    }
    properties.SetLong(PR_MESSAGE_FLAGS, flags);
    properties.SetBool(PR_HASATTACH, summary.attachments);
    properties.SetLong(PR_MESSAGE_SIZE, 0);
    properties.SetLong(PR_MESSAGE_SIZE, AsLong(BytesOf(properties) + summary.bytes));
    Row row;
    if (summary.recipients)
    {
        row.parts |= HasRecipients;
    }
    if (summary.attachments)
    {
        row.parts |= HasAttachments;
    }
    bool large = false;
    row.blob = WriteBlob(store, properties, kept, large);
    if (large)
    {
        row.parts |= HasLargeValues;
    }
    row.copies = CopiesOf(properties);
    return row;
}

// Parameters: the identifier, the change number, the properties, the copies.
void RunWithRow(Query& query, MessageId message, std::int64_t change, const Row& row)
{
    query.Bind(1, message).Bind(2, change).BindBlob(3, row.blob);
    BindCopies(query, 4, row.copies, row.parts);
    query.Run();
}

void UpdateRow(Database& database, MessageId message, std::int64_t change, const Row& row)
{
    Query query(database,
                "UPDATE message SET change=?2, props=?3, (" ZEB_MESSAGE_COPIES ")=(?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, "
                "?12) WHERE id=?1");
    RunWithRow(query, message, change, row);
}

std::int64_t UnreadOf(std::int64_t container, LONG flags)
{
    const bool counts = container != 0 && (container & 1) == 0;
    return counts && !(flags & MSGFLAG_READ) ? 1 : 0;
}

[[noreturn]] void ThrowGone(const StoreFile& store, HRESULT code)
{
    throw Error(code, "The message is not in the store file '" + store.Path() + "' any more.");
}

void WriteParts(StoreFile& store, MessageId message, const MessageContent& content, int depth)
{
    if (content.recipients)
    {
        WriteRecipients(store, message, *content.recipients);
    }
    if (!content.attachments.empty())
    {
        WriteAttachments(store, message, content.attachments, depth);
    }
}

bool HasParts(const MessageContent& content)
{
    return (content.recipients && !content.recipients->empty()) || !content.attachments.empty();
}

// What a stored row says of itself before it is changed or deleted.
struct OldRow
{
    std::int64_t change = 0;
    LONG flags = 0;
    std::int64_t parts = 0;
    std::vector<LargeReference> large;
};

bool ReadOldRow(StoreFile& store, MessageId message, OldRow& old)
{
    Query query(store.Connection(), "SELECT change, flags, parts, props FROM message WHERE id=?");
    query.Bind(1, message);
    if (!query.Step())
    {
        return false;
    }
    old.change = query.Number(0);
    old.flags = static_cast<LONG>(query.Number(1));
    old.parts = query.Number(2);
    if (old.parts & HasLargeValues)
    {
        old.large = ReferencesIn(query.Bytes(3));
    }
    return true;
}

} // namespace

MessageId InsertMessage(StoreFile& store, std::int64_t container, const MessageContent& content, int depth)
{
    if (depth > MostNested)
    {
        throw Error(MAPI_E_TOO_COMPLEX, "Messages can be nested " + std::to_string(MostNested) + " deep.");
    }
    Database& database = store.Connection();
    PropertySet properties = content.properties;
    MessageId message = 0;
    const std::int64_t unread = UnreadOf(container, properties.Long(PR_MESSAGE_FLAGS));
    const std::int64_t change = AddToContents(database, container, unread, message);
    PartsSummary summary;
    if (HasParts(content))
    {
        // The row tells of its parts, so it is written once, after them; until the commit they may lack it.
        database.Execute("PRAGMA defer_foreign_keys=ON");
        WriteParts(store, message, content, depth);
        summary = SummarizeParts(store, message);
    }
    std::vector<LargeReference> none;
    const Row row = MakeRow(store, properties, summary, none);
    Query query(database, "INSERT INTO message(id, change, props, " ZEB_MESSAGE_COPIES
                          ") VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    RunWithRow(query, message, change, row);
    return message;
}

MessageId StoreFile::CreateMessage(FolderId folder, bool associated, const MessageContent& content)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    const MessageId message = InsertMessage(*this, ContainerOf(folder, associated), content, 0);
    transaction.Commit();
    return message;
}

std::int64_t StoreFile::SaveMessage(MessageId message, const MessageContent& content, std::int64_t change)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    OldRow old;
    if (!ReadOldRow(*this, message, old))
    {
        ThrowGone(*this, MAPI_E_OBJECT_DELETED);
    }
    if (change != 0 && change != old.change)
    {
        throw Error(MAPI_E_OBJECT_CHANGED, "The message has been saved by somebody else since it was opened.");
    }
    WriteParts(*this, message, content, 0);
    PartsSummary summary;
    if ((old.parts & (HasRecipients | HasAttachments)) || HasParts(content))
    {
        summary = SummarizeParts(*this, message);
    }
    PropertySet properties = content.properties;
    const Row row = MakeRow(*this, properties, summary, old.large);
    const std::int64_t container = ContainerOf(message);
    const std::int64_t next = TouchContents(*m_database, message, RowEvent::Modified,
                                            UnreadOf(container, row.copies.flags) - UnreadOf(container, old.flags));
    UpdateRow(*m_database, message, next, row);
    DeleteReferences(*m_database, old.large);
    transaction.Commit();
    return next;
}

StoredMessage StoreFile::LoadMessage(MessageId message)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT change, props FROM message WHERE id=?");
    query.Bind(1, message);
    if (!query.Step())
    {
        ThrowGone(*this, MAPI_E_NOT_FOUND);
    }
    return {message, query.Number(0), PropertyBlob(query.Bytes(1), *this, {"message", message}).Decode()};
}

bool StoreFile::MessageExists(MessageId message)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT 1 FROM message WHERE id=?");
    return query.Bind(1, message).Step();
}

MessageContent StoreFile::LoadWhole(MessageId message)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const ReadScope moment(*m_database);
    MessageContent content;
    content.properties = LoadMessage(message).properties;
    content.recipients = Recipients(message);
    for (const ULONG number : AttachmentNumbers(message))
    {
        AttachmentEdit edit;
        edit.number = number;
        edit.properties = Attachment(message, number);
        if (const std::optional<MessageId> embedded = EmbeddedMessage(message, number))
        {
            edit.embedded = std::make_shared<MessageContent>(LoadWhole(*embedded));
        }
        content.attachments.push_back(std::move(edit));
    }
    return content;
}

void DeleteMessageRow(StoreFile& store, MessageId message)
{
    OldRow old;
    if (!ReadOldRow(store, message, old))
    {
        return;
    }
    if (old.parts & HasAttachments || old.parts & HasRecipients)
    {
        ReleaseParts(store, message);
    }
    DeleteReferences(store.Connection(), old.large);
    Query(store.Connection(), "DELETE FROM message WHERE id=?").Bind(1, message).Run();
    const std::int64_t container = ContainerOf(message);
    TouchContents(store.Connection(), message, RowEvent::Deleted, -UnreadOf(container, old.flags));
}

void ClearContents(StoreFile& store, std::int64_t container)
{
    Database& database = store.Connection();
    const std::vector<MessageId> withParts =
        Query(database, "SELECT id FROM message WHERE id BETWEEN ? AND ? AND parts & 7")
            .Bind(1, FirstOf(container))
            .Bind(2, LastOf(container))
            .Numbers();
    for (const MessageId message : withParts)
    {
        DeleteMessageRow(store, message);
    }
    Query(database, "DELETE FROM message WHERE id BETWEEN ? AND ?")
        .Bind(1, FirstOf(container))
        .Bind(2, LastOf(container))
        .Run();
    TouchWholeContents(database, container);
}

size_t StoreFile::DeleteMessages(const std::vector<MessageId>& messages)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    size_t deleted = 0;
    for (const MessageId message : messages)
    {
        if (!MessageExists(message))
        {
            continue;
        }
        DeleteMessageRow(*this, message);
        ++deleted;
    }
    transaction.Commit();
    return deleted;
}

std::vector<MessageId> StoreFile::MoveMessages(const std::vector<MessageId>& messages, FolderId folder)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    RequireFolder(*this, folder);
    std::vector<MessageId> moved;
    for (const MessageId message : messages)
    {
        OldRow old;
        if (!ReadOldRow(*this, message, old))
        {
            moved.push_back(0);
            continue;
        }
        const std::int64_t from = ContainerOf(message);
        const std::int64_t to = ContainerOf(folder, IsAssociated(message));
        MessageId placed = message;
        if (from != to)
        {
            const std::int64_t unread = UnreadOf(from, old.flags);
            const std::int64_t change = AddToContents(*m_database, to, unread, placed);
            Query(*m_database, "UPDATE message SET id=?, change=? WHERE id=?")
                .Bind(1, placed)
                .Bind(2, change)
                .Bind(3, message)
                .Run();
            TouchContents(*m_database, message, RowEvent::Deleted, -unread);
        }
        moved.push_back(placed);
    }
    transaction.Commit();
    return moved;
}

std::vector<MessageId> StoreFile::CopyMessages(const std::vector<MessageId>& messages, FolderId folder)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    RequireFolder(*this, folder);
    std::vector<MessageId> copies;
    for (const MessageId message : messages)
    {
        copies.push_back(MessageExists(message) ? CreateMessage(folder, IsAssociated(message), LoadWhole(message)) : 0);
    }
    transaction.Commit();
    return copies;
}

void StoreFile::ChangeMessageFlags(const std::vector<MessageId>& messages, ULONG set, ULONG clear)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    for (const MessageId message : messages)
    {
        if (!MessageExists(message))
        {
            continue;
        }
        MessageContent content;
        content.properties = LoadMessage(message).properties;
        const LONG before = content.properties.Long(PR_MESSAGE_FLAGS);
        const LONG after = static_cast<LONG>((static_cast<ULONG>(before) | set) & ~clear);
        if (after == before)
        {
            continue;
        }
        content.properties.SetLong(PR_MESSAGE_FLAGS, after);
        SaveMessage(message, content, 0);
    }
    transaction.Commit();
}

std::vector<MessageId> StoreFile::MessagesOf(FolderId folder, bool associated)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const std::int64_t container = ContainerOf(folder, associated);
    Query query(*m_database, "SELECT id FROM message WHERE id BETWEEN ? AND ? ORDER BY id");
    std::vector<MessageId> messages = query.Bind(1, FirstOf(container)).Bind(2, LastOf(container)).Numbers();
    if (messages.size() != Rows(folder, associated))
    {
        RequireAllRows(folder, associated);
    }
    return messages;
}

} // namespace zebstore
