#include "zebstore/storage/MessageTable.h"

#include "zebstore/storage/PropertyBlob.h"

#include <algorithm>
#include <limits>

namespace zebstore
{

namespace
{

constexpr int MostNested = 64;

LONG AsLong(std::uint64_t size)
{
    return static_cast<LONG>(std::min<std::uint64_t>(size, std::numeric_limits<LONG>::max()));
}

std::int64_t UnreadOf(ContentsKey contents, LONG flags)
{
    return contents.CountsUnread() && !(flags & MSGFLAG_READ) ? 1 : 0;
}

[[noreturn]] void ThrowGone(const StoreConnection& connection, MessageId message, HRESULT code)
{
    throw Error(code,
                "message " + std::to_string(message) + " does not exist in the store file '" + connection.Path() + "'");
}

PartsSize SizeOf(const std::vector<std::string>& recipients)
{
    PartsSize size{recipients.size(), 0};
    for (const std::string& blob : recipients)
    {
        size.bytes += PropertyBlob::SizeOf(blob);
    }
    return size;
}

PartsSize SizeOf(const std::vector<AttachmentRow>& attachments)
{
    PartsSize size{attachments.size(), 0};
    for (const AttachmentRow& row : attachments)
    {
        size.bytes += row.bytes;
    }
    return size;
}

bool HasParts(const MessageContent& content)
{
    return (content.recipients && !content.recipients->empty()) || !content.attachments.empty();
}

} // namespace

// A stored row before it is changed or deleted.
struct MessageTable::Old
{
    std::int64_t change = 0;
    LONG flags = 0;
    std::int64_t parts = 0;
    std::optional<std::int64_t> submitted;
    std::vector<LargeReference> large;
};

// A row as it is written.
struct MessageTable::Row
{
    MessageCopies copies;
    std::int64_t parts = 0;
    std::string blob;

    // Parameters: the identifier, the change number, the properties, the copies.
    void Run(Query& query, MessageId message, std::int64_t change) const
    {
        query.Bind(1, message).Bind(2, change).BindBlob(3, blob);
        BindCopies(query, 4, copies, parts);
        query.Run();
    }
};

bool MessageTable::ReadOld(MessageId message, Old& old)
{
    Query query(m_connection.Db(), "SELECT change, flags, parts, submitted, props FROM message WHERE id=?");
    if (!query.Bind(1, message).Step())
    {
        return false;
    }
    old.change = query.Number(0);
    old.flags = static_cast<LONG>(query.Number(1));
    old.parts = query.Number(2);
    old.submitted = query.IsNull(3) ? std::nullopt : std::optional(query.Number(3));
    if (old.parts & HasLargeValues)
    {
        old.large = ReferencesIn(query.Bytes(4));
    }
    return true;
}

void MessageTable::WriteParts(MessageId message, const MessageContent& content, int depth)
{
    if (content.recipients)
    {
        m_recipients.Write(message, *content.recipients);
    }
    if (!content.attachments.empty())
    {
        m_attachments.Write(message, content.attachments, depth, *this);
    }
}

// Sets the properties that the store sets itself. The size is known only when all is encoded, so it is put in then.
MessageTable::Row MessageTable::Encode(PropertySet properties, const PartsSize& recipients,
                                       const PartsSize& attachments, std::vector<LargeReference>& kept)
{
    LONG flags = properties.Long(PR_MESSAGE_FLAGS) & ~MSGFLAG_HASATTACH;
    if (attachments.count != 0)
    {
        flags |= MSGFLAG_HASATTACH;
    }
    properties.SetLong(PR_MESSAGE_FLAGS, flags);
    properties.SetBool(PR_HASATTACH, attachments.count != 0);
    properties.SetLong(PR_MESSAGE_SIZE, 0);
    BlobWriter writer(m_connection, properties, kept);
    const LONG size = AsLong(writer.ValueBytes() + recipients.bytes + attachments.bytes);
    writer.ReplaceLong(PR_MESSAGE_SIZE, size);
    properties.SetLong(PR_MESSAGE_SIZE, size);
    Row row;
    const auto mark = [&](bool has, MessageParts bit)
    {
        if (has)
        {
            row.parts |= bit;
        }
    };
    mark(writer.HasLarge(), HasLargeValues);
    mark(recipients.count != 0, HasRecipients);
    mark(attachments.count != 0, HasAttachments);
    row.blob = writer.Take();
    row.copies = CopiesOf(properties);
    return row;
}

MessageId MessageTable::Insert(ContentsKey contents, const MessageContent& content, int depth)
{
    if (depth > MostNested)
    {
        throw Error(MAPI_E_TOO_COMPLEX,
                    "messages are nested too deep: at most " + std::to_string(MostNested) + " levels are stored");
    }
    MessageId message = 0;
    const std::int64_t unread = UnreadOf(contents, content.properties.Long(PR_MESSAGE_FLAGS));
    const std::int64_t change = m_contents.Add(contents, unread, message);
    // The row depends on its parts, and they refer to it: they are encoded before it and written after it.
    const std::vector<std::string> recipients =
        content.recipients ? m_recipients.Encode(*content.recipients) : std::vector<std::string>();
    const std::vector<AttachmentRow> attachments = m_attachments.Encode(content.attachments, depth, *this);
    std::vector<LargeReference> none;
    const Row row = Encode(content.properties, SizeOf(recipients), SizeOf(attachments), none);
    {
        Query query(m_connection.Db(), "INSERT INTO message(id, change, props, " ZEB_MESSAGE_COPIES
                                       ") VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        row.Run(query, message, change);
    }
    m_recipients.Insert(message, recipients);
    m_attachments.Insert(message, attachments);
    return message;
}

MessageId MessageTable::InsertEmbedded(const MessageContent& content, int depth)
{
    return Insert(ContentsKey::Embedded(), content, depth);
}

MessageId MessageTable::Create(ContentsKey contents, const MessageContent& content)
{
    StoreTransaction transaction(m_connection);
    const MessageId message = Insert(contents, content, 0);
    m_texts.Noted();
    transaction.Commit();
    return message;
}

std::int64_t MessageTable::Save(MessageId message, const MessageContent& content, std::int64_t change)
{
    StoreTransaction transaction(m_connection);
    Old old;
    if (!ReadOld(message, old))
    {
        ThrowGone(m_connection, message, MAPI_E_OBJECT_DELETED);
    }
    if (change != 0 && change != old.change)
    {
        throw Error(MAPI_E_OBJECT_CHANGED, "message " + std::to_string(message) + " in the store file '" +
                                               m_connection.Path() + "' was saved elsewhere since it was opened");
    }
    WriteParts(message, content, 0);
    const bool hasParts = ((old.parts & (HasRecipients | HasAttachments)) != 0) || HasParts(content);
    const Row row = Encode(content.properties, hasParts ? m_recipients.SizeOf(message) : PartsSize(),
                           hasParts ? m_attachments.SizeOf(message) : PartsSize(), old.large);
    const ContentsKey contents = ContentsKey::Of(message);
    const std::int64_t unread = UnreadOf(contents, row.copies.flags) - UnreadOf(contents, old.flags);
    const std::int64_t next = m_contents.Touch(message, RowChange::Kind::Modified, unread);
    {
        Query query(m_connection.Db(),
                    "UPDATE message SET change=?2, props=?3, (" ZEB_MESSAGE_COPIES ")=(?4, ?5, ?6, ?7, ?8, ?9, ?10, "
                    "?11, ?12) WHERE id=?1");
        row.Run(query, message, next);
    }
    if (row.copies.submitted != old.submitted)
    {
        m_contents.TouchDate(message);
    }
    DeleteReferences(m_connection.Db(), old.large);
    m_texts.Noted();
    transaction.Commit();
    return next;
}

StoredMessage MessageTable::Load(MessageId message)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT change, props FROM message WHERE id=?");
    if (!query.Bind(1, message).Step())
    {
        ThrowGone(m_connection, message, MAPI_E_NOT_FOUND);
    }
    return {message, query.Number(0), PropertyBlob(query.Bytes(1), m_connection, {"message", message}).Decode()};
}

bool MessageTable::Exists(MessageId message)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT 1 FROM message WHERE id=?");
    return query.Bind(1, message).Step();
}

MessageContent MessageTable::LoadWhole(MessageId message)
{
    const StoreSnapshot snapshot(m_connection);
    MessageContent content;
    content.properties = Load(message).properties;
    content.recipients = m_recipients.Load(message);
    for (const ULONG number : m_attachments.Numbers(message))
    {
        AttachmentEdit edit;
        edit.number = number;
        edit.properties = m_attachments.Load(message, number);
        if (const std::optional<MessageId> embedded = m_attachments.Embedded(message, number))
        {
            edit.embedded = std::make_shared<MessageContent>(LoadWhole(*embedded));
        }
        content.attachments.push_back(std::move(edit));
    }
    return content;
}

std::vector<MessageId> MessageTable::In(ContentsKey contents)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT id FROM message WHERE id BETWEEN ? AND ? ORDER BY id");
    std::vector<MessageId> messages = query.Bind(1, contents.FirstMessage()).Bind(2, contents.LastMessage()).Numbers();
    if (messages.size() != m_contents.Rows(contents))
    {
        m_contents.RequireAllRows(contents);
    }
    return messages;
}

void MessageTable::DeleteRow(MessageId message)
{
    Old old;
    if (!ReadOld(message, old))
    {
        return;
    }
    // The rows of recipients and attachments are deleted with the message; what they refer to is not.
    if (old.parts & (HasRecipients | HasAttachments))
    {
        m_recipients.Write(message, {});
        m_attachments.DeleteAll(message, *this);
    }
    DeleteReferences(m_connection.Db(), old.large);
    Query(m_connection.Db(), "DELETE FROM message WHERE id=?").Bind(1, message).Run();
    m_contents.Touch(message, RowChange::Kind::Deleted, -UnreadOf(ContentsKey::Of(message), old.flags));
}

size_t MessageTable::Delete(const std::vector<MessageId>& messages)
{
    StoreTransaction transaction(m_connection);
    size_t deleted = 0;
    for (const MessageId message : messages)
    {
        if (Exists(message))
        {
            DeleteRow(message);
            ++deleted;
        }
    }
    transaction.Commit();
    return deleted;
}

void MessageTable::Clear(ContentsKey contents)
{
    Database& database = m_connection.Db();
    const std::vector<MessageId> withParts =
        Query(database, "SELECT id FROM message WHERE id BETWEEN ? AND ? AND parts & ?")
            .Bind(1, contents.FirstMessage())
            .Bind(2, contents.LastMessage())
            .Bind(3, AllParts)
            .Numbers();
    for (const MessageId message : withParts)
    {
        DeleteRow(message);
    }
    Query(database, "DELETE FROM message WHERE id BETWEEN ? AND ?")
        .Bind(1, contents.FirstMessage())
        .Bind(2, contents.LastMessage())
        .Run();
    m_contents.Clear(contents);
}

MessageId MessageTable::MoveRow(MessageId message, const Old& old, ContentsKey to)
{
    const ContentsKey from = ContentsKey::Of(message);
    if (from == to)
    {
        return message;
    }
    MessageId moved = 0;
    const std::int64_t unread = UnreadOf(from, old.flags);
    const std::int64_t change = m_contents.Add(to, unread, moved);
    Query(m_connection.Db(), "UPDATE message SET id=?, change=? WHERE id=?")
        .Bind(1, moved)
        .Bind(2, change)
        .Bind(3, message)
        .Run();
    m_contents.Touch(message, RowChange::Kind::Deleted, -unread);
    return moved;
}

std::vector<MessageId> MessageTable::Move(const std::vector<MessageId>& messages, FolderId folder)
{
    StoreTransaction transaction(m_connection);
    m_contents.RequireExists({folder, false});
    std::vector<MessageId> moved;
    for (const MessageId message : messages)
    {
        Old old;
        const ContentsKey to(folder, ContentsKey::Of(message).IsAssociated());
        moved.push_back(ReadOld(message, old) ? MoveRow(message, old, to) : 0);
    }
    transaction.Commit();
    return moved;
}

std::vector<MessageId> MessageTable::Copy(const std::vector<MessageId>& messages, FolderId folder)
{
    StoreTransaction transaction(m_connection);
    m_contents.RequireExists({folder, false});
    std::vector<MessageId> copies;
    for (const MessageId message : messages)
    {
        const ContentsKey to(folder, ContentsKey::Of(message).IsAssociated());
        copies.push_back(Exists(message) ? Create(to, LoadWhole(message)) : 0);
    }
    transaction.Commit();
    return copies;
}

void MessageTable::ChangeFlags(const std::vector<MessageId>& messages, ULONG set, ULONG clear)
{
    StoreTransaction transaction(m_connection);
    for (const MessageId message : messages)
    {
        if (!Exists(message))
        {
            continue;
        }
        MessageContent content;
        content.properties = Load(message).properties;
        const LONG before = content.properties.Long(PR_MESSAGE_FLAGS);
        const LONG after = static_cast<LONG>((static_cast<ULONG>(before) | set) & ~clear);
        if (after == before)
        {
            continue;
        }
        content.properties.SetLong(PR_MESSAGE_FLAGS, after);
        Save(message, content, 0);
    }
    transaction.Commit();
}

} // namespace zebstore
