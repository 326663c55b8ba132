// Reads the properties of folders, messages, recipients and attachments; the inverse of PropertyWriter.
#pragma once

#include "tools/common/PropertyWriter.h"

#include <map>
#include <utility>

namespace zeb::tools
{

/// A cache of the names of a store's named properties, by identifier.
class NameReader
{
public:
    /// Queries the names of all unknown tags of `tags` in one call on an object of the store.
    /// @throws CZebException*
    void Learn(CZebIProp& object, const std::vector<ULONG>& tags);
    /// The name of a queried identifier; null when the store has none.
    const PropertyName* Find(ULONG id) const;

private:
    std::map<ULONG, std::optional<PropertyName>> m_names;
};

/// A property that could not be read.
struct Unread
{
    ULONG tag = 0;
    std::string reason;
};

/// How much of an object is read in one call.
enum class ReadWhat
{
    Beginnings, ///< all values that GetProps does not return are left to their source
    Values,     ///< only binaries above 256 KiB are left to their source
};

/// Reads properties of one store.
class PropertyReader
{
public:
    explicit PropertyReader(ReadWhat what)
        : m_what(what)
    {
    }

    /// All properties of an object except PT_OBJECT ones. Text is returned as PT_UNICODE, or as PT_STRING8 when it was
    /// written in 8 bits that cannot be converted.
    /// @throws CZebException*
    Properties ReadObject(CZebIProp& object);

    /// A message with its recipients and attachments, including embedded messages.
    /// @throws CZebException*, ToolError
    MessageContent ReadMessage(CZebMessage& message);

    const NameReader& Names() const { return m_names; }
    /// The properties that could not be read since the last call.
    std::vector<Unread> TakeUnread() { return std::exchange(m_unread, {}); }

private:
    MessageContent ReadMessage(CZebMessage& message, int depth);
    void ReadValue(CZebIProp& object, ULONG tag, const SPropValue& value, Properties& properties);
    void ReadLarge(CZebIProp& object, Property& property);
    std::vector<Properties> ReadRecipients(CZebMessage& message);
    /// @param lost set when a text may have been written in 8 bits that cannot be converted
    Properties ReadRecipient(const CZebRow& row, const std::vector<ULONG>& columns, bool& lost);
    AttachmentContent ReadAttachment(CZebMessage& message, ULONG number, int depth);
    bool ReadEmbedded(CZebAttachment& attachment, AttachmentContent& content, int depth);
    void Name(Property& property) const;

    const ReadWhat m_what;
    NameReader m_names;
    std::vector<Unread> m_unread;
};

/// Reads a source completely.
std::string ReadAll(ByteSource& source);

enum class ObjectKind
{
    Folder,
    Message, ///< including embedded ones
    Recipient,
    Attachment,
};

/// Whether a property is maintained by the store itself: identifiers, counts, sizes. These cannot be written, or have
/// no meaning in another store.
bool IsStoresOwn(ObjectKind kind, ULONG tag);

} // namespace zeb::tools
