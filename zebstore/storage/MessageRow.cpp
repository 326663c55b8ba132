#include "zebstore/storage/MessageRow.h"

#include "zebstore/storage/Encoding.h"

#include <tuple>

namespace zebstore
{

namespace
{

// The sort key of a text property; `isCut` is set when the text is longer.
std::optional<std::string> KeyOf(const PropertySet& properties, ULONG tag, bool& isCut)
{
    const EncodedValue value = properties.Find(tag);
    if (!IsText(value.Type()))
    {
        return std::nullopt;
    }
    const std::string whole = value.large != nullptr ? EncodedFromLarge(value.Type(), *value.large) : std::string();
    const std::string_view text =
        StoredTextOf(value.Type(), value.large != nullptr ? std::string_view(whole) : value.bytes);
    std::string key = SortKey(text);
    if (text.size() > SortKeyCharacters && Folded(text, TextFold::IgnoreCase).size() > key.size())
    {
        isCut = true;
    }
    return key;
}

std::optional<std::int64_t> TimeOf(const PropertySet& properties, ULONG tag)
{
    const EncodedValue value = properties.Find(tag);
    return value.Type() == PT_SYSTIME ? std::optional(ReadNumber<std::int64_t>(value.bytes)) : std::nullopt;
}

void BindNumber(Query& query, int index, const std::optional<std::int64_t>& number)
{
    if (number)
    {
        query.Bind(index, *number);
    }
    else
    {
        query.BindNull(index);
    }
}

void BindKey(Query& query, int index, const std::optional<std::string>& key)
{
    if (key)
    {
        query.BindText(index, *key);
    }
    else
    {
        query.BindNull(index);
    }
}

std::optional<std::int64_t> NumberIn(const Query& query, int column)
{
    return query.IsNull(column) ? std::nullopt : std::optional(query.Number(column));
}

std::optional<std::string> KeyIn(const Query& query, int column)
{
    return query.IsNull(column) ? std::nullopt : std::optional(std::string(query.Bytes(column)));
}

auto AsTuple(const MessageCopies& copies)
{
    return std::tie(copies.flags, copies.size, copies.hasCutKeys, copies.delivered, copies.submitted, copies.modified,
                    copies.messageClass, copies.subject, copies.sender);
}

} // namespace

bool MessageCopies::operator==(const MessageCopies& other) const
{
    return AsTuple(*this) == AsTuple(other);
}

MessageCopies CopiesOf(const PropertySet& properties)
{
    MessageCopies copies;
    copies.flags = properties.Long(PR_MESSAGE_FLAGS);
    copies.size = properties.Long(PR_MESSAGE_SIZE);
    copies.delivered = TimeOf(properties, PR_MESSAGE_DELIVERY_TIME);
    copies.submitted = TimeOf(properties, PR_CLIENT_SUBMIT_TIME);
    copies.modified = TimeOf(properties, PR_LAST_MODIFICATION_TIME);
    copies.messageClass = KeyOf(properties, PR_MESSAGE_CLASS_W, copies.hasCutKeys);
    copies.subject = KeyOf(properties, PR_SUBJECT_W, copies.hasCutKeys);
    copies.sender = KeyOf(properties, PR_SENDER_NAME_W, copies.hasCutKeys);
    return copies;
}

void AddCopies(PropertySet& properties, const MessageCopies& copies)
{
    const auto addTime = [&](ULONG tag, const std::optional<std::int64_t>& time)
    {
        if (time)
        {
            properties.SetEncoded(tag, {reinterpret_cast<const char*>(&*time), sizeof(*time)});
        }
    };
    const auto addText = [&](ULONG tag, const std::optional<std::string>& text)
    {
        if (text)
        {
            properties.SetText(tag, *text);
        }
    };
    properties.SetLong(PR_MESSAGE_FLAGS, copies.flags);
    addTime(PR_MESSAGE_DELIVERY_TIME, copies.delivered);
    addTime(PR_CLIENT_SUBMIT_TIME, copies.submitted);
    addTime(PR_LAST_MODIFICATION_TIME, copies.modified);
    addText(PR_MESSAGE_CLASS_W, copies.messageClass);
    addText(PR_SUBJECT_W, copies.subject);
    addText(PR_SENDER_NAME_W, copies.sender);
}

void BindCopies(Query& query, int first, const MessageCopies& copies, std::int64_t parts)
{
    query.Bind(first, copies.flags).Bind(first + 1, copies.size);
    query.Bind(first + 2, copies.hasCutKeys ? parts | HasCutKeys : parts);
    BindNumber(query, first + 3, copies.delivered);
    BindNumber(query, first + 4, copies.submitted);
    BindNumber(query, first + 5, copies.modified);
    BindKey(query, first + 6, copies.messageClass);
    BindKey(query, first + 7, copies.subject);
    BindKey(query, first + 8, copies.sender);
}

MessageCopies ReadCopies(const Query& query, int first)
{
    MessageCopies copies;
    copies.flags = static_cast<LONG>(query.Number(first));
    copies.size = static_cast<LONG>(query.Number(first + 1));
    copies.hasCutKeys = (query.Number(first + 2) & HasCutKeys) != 0;
    copies.delivered = NumberIn(query, first + 3);
    copies.submitted = NumberIn(query, first + 4);
    copies.modified = NumberIn(query, first + 5);
    copies.messageClass = KeyIn(query, first + 6);
    copies.subject = KeyIn(query, first + 7);
    copies.sender = KeyIn(query, first + 8);
    return copies;
}

void RequireNoParts(Database& database, MessageId message, MessageParts kind)
{
    Query query(database, "SELECT 1 FROM message WHERE id=? AND (parts & ?) != 0");
    if (query.Bind(1, message).Bind(2, kind).Step())
    {
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + database.Path() + "' is damaged: " +
                                              (kind == HasRecipients ? "the recipients" : "the attachments") +
                                              " of message " + std::to_string(message) + " are missing");
    }
}

} // namespace zebstore
