// The table `recipient`: the recipients of messages.
#pragma once

#include "zebstore/storage/MessageRow.h"
#include "zebstore/storage/StoreConnection.h"
#include "zebstore/storage/StoreIds.h"

#include <vector>

namespace zebstore
{

/// Threads: any; the connection's lock is taken inside. What writes is called in the caller's transaction.
class RecipientTable
{
public:
    explicit RecipientTable(StoreConnection& connection)
        : m_connection(connection)
    {
    }

    /// @throws Error MAPI_E_CORRUPT_STORE when the message should have some and has none
    std::vector<PropertySet> Load(MessageId message);

    /// The rows of a new message, for Insert; writes only their large values.
    std::vector<std::string> Encode(const std::vector<PropertySet>& recipients);
    /// REQUIRES: the message has none.
    void Insert(MessageId message, const std::vector<std::string>& blobs);
    /// Replaces the recipients of a message.
    void Write(MessageId message, const std::vector<PropertySet>& recipients);
    PartsSize SizeOf(MessageId message);

private:
    StoreConnection& m_connection;
};

} // namespace zebstore
