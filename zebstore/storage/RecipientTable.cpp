#include "zebstore/storage/RecipientTable.h"

#include "zebstore/storage/PropertyBlob.h"

namespace zebstore
{

std::vector<PropertySet> RecipientTable::Load(MessageId message)
{
    const std::lock_guard hold(m_connection.Lock());
    std::vector<PropertySet> recipients;
    Query query(m_connection.Db(), "SELECT props FROM recipient WHERE message=? ORDER BY number");
    query.Bind(1, message);
    while (query.Step())
    {
        recipients.push_back(PropertyBlob(query.Bytes(0), m_connection, {"a recipient of message", message}).Decode());
    }
    if (recipients.empty())
    {
        RequireNoParts(m_connection.Db(), message, HasRecipients);
    }
    return recipients;
}

std::vector<std::string> RecipientTable::Encode(const std::vector<PropertySet>& recipients)
{
    std::vector<std::string> blobs;
    for (const PropertySet& recipient : recipients)
    {
        blobs.push_back(WriteBlob(m_connection, recipient));
    }
    return blobs;
}

void RecipientTable::Insert(MessageId message, const std::vector<std::string>& blobs)
{
    Query query(m_connection.Db(), "INSERT INTO recipient(message, number, props) VALUES(?, ?, ?)");
    std::int64_t number = 0;
    for (const std::string& blob : blobs)
    {
        query.Bind(1, message).Bind(2, number++).BindBlob(3, blob).Run();
        query.Reset();
    }
}

void RecipientTable::Write(MessageId message, const std::vector<PropertySet>& recipients)
{
    Database& database = m_connection.Db();
    std::vector<LargeReference> kept;
    {
        Query query(database, "SELECT props FROM recipient WHERE message=?");
        query.Bind(1, message);
        while (query.Step())
        {
            const std::vector<LargeReference> references = ReferencesIn(query.Bytes(0));
            kept.insert(kept.end(), references.begin(), references.end());
        }
    }
    Query(database, "DELETE FROM recipient WHERE message=?").Bind(1, message).Run();
    std::vector<std::string> blobs;
    for (const PropertySet& recipient : recipients)
    {
        blobs.push_back(WriteBlob(m_connection, recipient, kept));
    }
    Insert(message, blobs);
    DeleteReferences(database, kept);
}

PartsSize RecipientTable::SizeOf(MessageId message)
{
    PartsSize size;
    Query query(m_connection.Db(), "SELECT props FROM recipient WHERE message=?");
    query.Bind(1, message);
    while (query.Step())
    {
        ++size.count;
        size.bytes += PropertyBlob::SizeOf(query.Bytes(0));
    }
    return size;
}

} // namespace zebstore
