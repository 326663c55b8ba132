#include "zebstore/storage/AttachmentTable.h"

#include "zebstore/storage/PropertyBlob.h"

namespace zebstore
{

namespace
{

[[noreturn]] void ThrowGone(const StoreConnection& connection, MessageId message, ULONG number)
{
    throw Error(MAPI_E_NOT_FOUND, "attachment " + std::to_string(number) + " of message " + std::to_string(message) +
                                      " does not exist in the store file '" + connection.Path() + "'");
}

MessageId EmbeddedAfter(const AttachmentEdit& edit, MessageId before, int depth, EmbeddedMessages& messages)
{
    if (!edit.embedded && !edit.dropEmbedded)
    {
        return before;
    }
    // The old one is deleted last: the new one may hold large values that still belong to the old one.
    const MessageId made = edit.embedded ? messages.InsertEmbedded(*edit.embedded, depth + 1) : 0;
    if (before != 0)
    {
        messages.DeleteEmbedded(before);
    }
    return made;
}

} // namespace

// A stored attachment before an edit.
struct AttachmentTable::Old
{
    MessageId embedded = 0;
    std::vector<LargeReference> large;
};

AttachmentTable::Old AttachmentTable::Read(MessageId message, ULONG number)
{
    Query query(m_connection.Db(), "SELECT embedded, props FROM attachment WHERE message=? AND number=?");
    if (!query.Bind(1, message).Bind(2, number).Step())
    {
        return {};
    }
    return {query.Number(0), ReferencesIn(query.Bytes(1))};
}

std::vector<ULONG> AttachmentTable::ReadNumbers(MessageId message)
{
    std::vector<ULONG> numbers;
    Query query(m_connection.Db(), "SELECT number FROM attachment WHERE message=? ORDER BY number");
    query.Bind(1, message);
    while (query.Step())
    {
        numbers.push_back(static_cast<ULONG>(query.Number(0)));
    }
    return numbers;
}

void AttachmentTable::Delete(MessageId message, ULONG number, EmbeddedMessages& messages)
{
    const Old old = Read(message, number);
    if (old.embedded != 0)
    {
        messages.DeleteEmbedded(old.embedded);
    }
    DeleteReferences(m_connection.Db(), old.large);
    Query(m_connection.Db(), "DELETE FROM attachment WHERE message=? AND number=?")
        .Bind(1, message)
        .Bind(2, number)
        .Run();
}

void AttachmentTable::DeleteAll(MessageId message, EmbeddedMessages& messages)
{
    for (const ULONG number : ReadNumbers(message))
    {
        Delete(message, number, messages);
    }
}

std::string AttachmentTable::EncodeOne(const AttachmentEdit& edit, std::vector<LargeReference>& kept)
{
    PropertySet properties = edit.properties;
    properties.SetLong(PR_ATTACH_NUM, static_cast<LONG>(edit.number));
    return WriteBlob(m_connection, properties, kept);
}

std::uint64_t AttachmentTable::SizeOfEmbedded(MessageId message)
{
    Query query(m_connection.Db(), "SELECT size FROM message WHERE id=?");
    return query.Bind(1, message).Step() ? static_cast<std::uint64_t>(query.Number(0)) : 0;
}

std::vector<AttachmentRow> AttachmentTable::Encode(const std::vector<AttachmentEdit>& edits, int depth,
                                                   EmbeddedMessages& messages)
{
    std::vector<AttachmentRow> rows;
    for (const AttachmentEdit& edit : edits)
    {
        if (edit.removed)
        {
            continue;
        }
        std::vector<LargeReference> none;
        AttachmentRow row{edit.number, EmbeddedAfter(edit, 0, depth, messages), EncodeOne(edit, none), 0};
        row.bytes = PropertyBlob::SizeOf(row.blob) + (row.embedded != 0 ? SizeOfEmbedded(row.embedded) : 0);
        rows.push_back(std::move(row));
    }
    return rows;
}

void AttachmentTable::Insert(MessageId message, const std::vector<AttachmentRow>& rows)
{
    for (const AttachmentRow& row : rows)
    {
        Query query(m_connection.Db(),
                    "INSERT OR REPLACE INTO attachment(message, number, embedded, props) VALUES(?, ?, ?, ?)");
        query.Bind(1, message).Bind(2, row.number).BindBlob(4, row.blob);
        if (row.embedded == 0)
        {
            query.BindNull(3);
        }
        else
        {
            query.Bind(3, row.embedded);
        }
        query.Run();
    }
}

void AttachmentTable::Write(MessageId message, const AttachmentEdit& edit, int depth, EmbeddedMessages& messages)
{
    if (edit.removed)
    {
        return Delete(message, edit.number, messages);
    }
    Old old = Read(message, edit.number);
    const MessageId embedded = EmbeddedAfter(edit, old.embedded, depth, messages);
    const std::string blob = EncodeOne(edit, old.large);
    Insert(message, {{edit.number, embedded, blob, 0}});
    DeleteReferences(m_connection.Db(), old.large);
}

void AttachmentTable::Write(MessageId message, const std::vector<AttachmentEdit>& edits, int depth,
                            EmbeddedMessages& messages)
{
    for (const AttachmentEdit& edit : edits)
    {
        Write(message, edit, depth, messages);
    }
}

PartsSize AttachmentTable::SizeOf(MessageId message)
{
    PartsSize size;
    Query query(m_connection.Db(), "SELECT a.props, m.size FROM attachment a LEFT JOIN message m ON m.id=a.embedded "
                                   "WHERE a.message=?");
    query.Bind(1, message);
    while (query.Step())
    {
        ++size.count;
        size.bytes += PropertyBlob::SizeOf(query.Bytes(0)) + static_cast<std::uint64_t>(query.Number(1));
    }
    return size;
}

std::vector<ULONG> AttachmentTable::Numbers(MessageId message)
{
    const std::lock_guard hold(m_connection.Lock());
    std::vector<ULONG> numbers = ReadNumbers(message);
    if (numbers.empty())
    {
        RequireNoParts(m_connection.Db(), message, HasAttachments);
    }
    return numbers;
}

bool AttachmentTable::Has(MessageId message, ULONG number)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT 1 FROM attachment WHERE message=? AND number=?");
    if (query.Bind(1, message).Bind(2, number).Step())
    {
        return true;
    }
    Query any(m_connection.Db(), "SELECT 1 FROM attachment WHERE message=? LIMIT 1");
    if (!any.Bind(1, message).Step())
    {
        RequireNoParts(m_connection.Db(), message, HasAttachments);
    }
    return false;
}

PropertySet AttachmentTable::Load(MessageId message, ULONG number)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT props FROM attachment WHERE message=? AND number=?");
    if (!query.Bind(1, message).Bind(2, number).Step())
    {
        ThrowGone(m_connection, message, number);
    }
    return PropertyBlob(query.Bytes(0), m_connection, {"an attachment of message", message}).Decode();
}

std::optional<MessageId> AttachmentTable::Embedded(MessageId message, ULONG number)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT embedded FROM attachment WHERE message=? AND number=?");
    if (!query.Bind(1, message).Bind(2, number).Step())
    {
        ThrowGone(m_connection, message, number);
    }
    return query.IsNull(0) ? std::nullopt : std::optional<MessageId>(query.Number(0));
}

} // namespace zebstore
