// Properties of messages and folders that are computed when they are read.
#pragma once

#include "zebstore/storage/FolderTable.h"

#include <functional>
#include <vector>

namespace zebstore
{

/// Which message a default is asked for.
struct MessageOrigin
{
    MessageId id = 0; ///< 0: not stored, or in an attachment
    /// StoredMessage::change; asked only where it matters
    std::function<std::int64_t()> change;
};

/// Reads the times of the folder that a default is asked for; called only where they matter.
using FolderTimesReader = std::function<FolderTimes()>;

/// What a message or a folder has beyond its stored properties: entry identifiers, record keys, object type ... A
/// computed property hides a stored one of the same identifier. Threads: any.
class ComputedProperties
{
public:
    virtual ~ComputedProperties() = default;
    /// Adds the property with the identifier of `tag` to `out`. @return false when it is not computed
    virtual bool OfMessage(ULONG tag, MessageId message, PropertySet& out) const = 0;
    virtual bool OfFolder(ULONG tag, const FolderInfo& folder, PropertySet& out) const = 0;
    /// True for a property that a message has although it was never written.
    virtual bool IsDefault(ULONG) const { return false; }
    /// Adds it to `out`. A stored one hides it. @return false when it is none
    virtual bool DefaultOfMessage(ULONG, const MessageOrigin&, PropertySet&) const { return false; }
    /// The same for a folder.
    virtual bool DefaultOfFolder(ULONG, const FolderTimesReader&, PropertySet&) const { return false; }
    /// The tags of all that is computed.
    virtual std::vector<ULONG> MessageTags() const = 0;
    virtual std::vector<ULONG> FolderTags() const = 0;
};

} // namespace zebstore
