// What a message's row holds next to its properties: copies of those by which tables sort and restrict.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/PropertySet.h"
#include "zebstore/storage/StoreFormat.h"
#include "zebstore/storage/StoreIds.h"

#include <cstdint>
#include <optional>
#include <string>

namespace zebstore
{

/// The copies; a time or text that the message does not have is NULL. They follow from the properties alone.
struct MessageCopies
{
    LONG flags = 0; ///< PR_MESSAGE_FLAGS
    LONG size = 0;  ///< PR_MESSAGE_SIZE
    bool hasCutKeys = false;
    std::optional<std::int64_t> delivered;
    std::optional<std::int64_t> submitted;
    std::optional<std::int64_t> modified;
    std::optional<std::string> messageClass; ///< this and the next two: sort keys
    std::optional<std::string> subject;
    std::optional<std::string> sender;

    bool operator==(const MessageCopies& other) const;
};

/// The recipients or the attachments of a message, without its own row.
struct PartsSize
{
    size_t count = 0;
    std::uint64_t bytes = 0; ///< what they add to PR_MESSAGE_SIZE
};

/// The columns of the copies, in the order in which Bind and Read take them; `parts` (see StoreFormat.h) among them.
#define ZEB_MESSAGE_COPIES "flags, size, parts, delivered, submitted, modified, class, subject, sender"

/// Sets the properties that the copies are of; texts come without their case.
void AddCopies(PropertySet& properties, const MessageCopies& copies);
MessageCopies CopiesOf(const PropertySet& properties);
/// Binds the copies from parameter `first` on; they must outlive the query's run.
/// @param parts the bits of message.parts besides HasCutKeys
void BindCopies(Query& query, int first, const MessageCopies& copies, std::int64_t parts);
/// Reads the copies from column `first` on.
MessageCopies ReadCopies(const Query& query, int first);

/// For a message of which no recipients or no attachments were found.
/// @throws Error MAPI_E_CORRUPT_STORE when its row has the bit `kind`: then they are lost
void RequireNoParts(Database& database, MessageId message, MessageParts kind);

} // namespace zebstore
