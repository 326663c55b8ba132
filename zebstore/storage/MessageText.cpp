#include "zebstore/storage/MessageText.h"

#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/StoreFormat.h"

namespace zebstore
{

namespace
{

void Add(StoreConnection& connection, MessageId message, GramSet& to)
{
    Query query(connection.Db(), "SELECT props, parts FROM message WHERE id=?");
    if (!query.Bind(1, message).Step())
    {
        return;
    }
    to.Add(PropertyBlob(query.Bytes(0), connection, {"message", message}), false);
    if ((query.Number(1) & HasRecipients) == 0)
    {
        return;
    }
    Query recipients(connection.Db(), "SELECT props FROM recipient WHERE message=?");
    recipients.Bind(1, message);
    while (recipients.Step())
    {
        to.Add(PropertyBlob(recipients.Bytes(0), connection, {"a recipient of message", message}), true);
    }
}

} // namespace

bool AddTexts(StoreConnection& connection, MessageId message, GramSet& to)
{
    try
    {
        Add(connection, message, to);
        return true;
    }
    catch (const Error& error)
    {
        // A value that is deleted, within one transaction, is one with a missing piece.
        if (error.Code() != MAPI_E_CORRUPT_DATA && error.Code() != MAPI_E_OBJECT_DELETED)
        {
            throw;
        }
        return false;
    }
}

} // namespace zebstore
