// Reads the properties of folders, messages, recipients and attachments; the inverse of PropertyWriter.
#pragma once

#include "tools/common/PropertyWriter.h"

#include <map>
#include <utility>

namespace zeb::tools
{

/// The names of a store's named properties, by identifier, remembered once they were asked for.
class NameReader
{
public:
    /// Learns those of `tags` that are not known yet, in one call on an object of the store.
    /// @throws CZebException*
    void Learn(IMAPIProp* object, const std::vector<ULONG>& tags);
    /// The name of an identifier that was learned; null when the store has none for it.
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

/// How much of an object is read at once.
enum class ReadWhat
{
    Beginnings, ///< every value that GetProps does not give is left to be read from its source
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

    /// All properties of an object but those that are objects themselves. Text comes as PT_UNICODE, but as
    /// PT_STRING8 where it was written in 8 bits that no text can say.
    /// @throws CZebException*
    Properties ReadObject(CZebIProp& object);

    /// A message with its recipients and attachments, embedded messages included.
    /// @throws CZebException*, ToolError
    MessageContent ReadMessage(CZebIProp& message);

    const NameReader& Names() const { return m_names; }
    /// What could not be read since the last call.
    std::vector<Unread> TakeUnread() { return std::exchange(m_unread, {}); }

private:
    MessageContent ReadMessage(CZebIProp& message, int depth);
    void ReadValue(CZebIProp& object, ULONG tag, const SPropValue& value, Properties& properties);
    void ReadLarge(CZebIProp& object, Property& property);
    std::vector<Properties> ReadRecipients(IMessage* message);
    /// @param lost set when a text may have been written in 8 bits that no text can say
    Properties ReadRecipient(const CZebRow& row, const std::vector<ULONG>& columns, bool& lost);
    AttachmentContent ReadAttachment(IMessage* message, ULONG number, int depth);
    bool ReadEmbedded(IAttach* attachment, AttachmentContent& content, int depth);
    void Name(Property& property) const;

    const ReadWhat m_what;
    NameReader m_names;
    std::vector<Unread> m_unread;
};

/// Reads a source to its end.
std::string ReadAll(ByteSource& source);

enum class ObjectKind
{
    Folder,
    Message, ///< embedded ones too
    Recipient,
    Attachment,
};

/// Whether a property says what the store knows by itself of an object: its identifiers, counts, sizes. Such
/// ones can not be written, or mean nothing in another store.
bool IsStoresOwn(ObjectKind kind, ULONG tag);

} // namespace zeb::tools
