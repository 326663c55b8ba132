// A message with its recipients and attachments, as it is saved and loaded.
#pragma once

#include "zebstore/storage/PropertySet.h"
#include "zebstore/storage/StoreIds.h"

#include <memory>
#include <optional>
#include <vector>

namespace zebstore
{

struct MessageContent;

/// What happens to one attachment when its message is saved.
struct AttachmentEdit
{
    ULONG number = 0; ///< PR_ATTACH_NUM
    bool removed = false;
    PropertySet properties;
    /// The new embedded message; null leaves the stored one (if any) as it is.
    std::shared_ptr<MessageContent> embedded;
    bool dropEmbedded = false; ///< removes the stored embedded message
};

/// A message as it is saved. Whatever is not given stays as it is stored.
struct MessageContent
{
    PropertySet properties; ///< all of them: what is not in here is removed
    std::optional<std::vector<PropertySet>> recipients;
    std::vector<AttachmentEdit> attachments; ///< new, changed and removed ones
};

struct StoredMessage
{
    MessageId id = 0;
    std::int64_t change = 0; ///< rises with each save of this message
    PropertySet properties;
};

} // namespace zebstore
