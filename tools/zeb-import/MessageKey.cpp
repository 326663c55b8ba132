#define XXH_INLINE_ALL
#include "tools/zeb-import/MessageKey.h"

#include "platform/tags.h"
#include "tools/common/MailProperties.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyReader.h"

#include <xxhash.h>

#include <algorithm>

namespace zeb::tools
{
namespace
{

/// Larger values (bytes) count by their size, because sources can be read only once.
constexpr uint64_t LargestHashed = 256 * 1024;
/// Names and addresses of contacts.
constexpr ULONG FirstOfContacts = 0x3A00, LastOfContacts = 0x3AFF;

/// A hash of fields, each with its length.
class Hash
{
public:
    Hash()
        : m_state(XXH3_createState())
    {
        XXH3_128bits_reset(m_state);
    }
    ~Hash() { XXH3_freeState(m_state); }
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;

    void Add(const std::string& field)
    {
        Add(static_cast<uint64_t>(field.size()));
        XXH3_128bits_update(m_state, field.data(), field.size());
    }

    void Add(uint64_t number) { XXH3_128bits_update(m_state, &number, sizeof number); }

    std::string Result() const
    {
        XXH128_canonical_t bytes;
        XXH128_canonicalFromHash(&bytes, XXH3_128bits_digest(m_state));
        return {reinterpret_cast<const char*>(bytes.digest), sizeof bytes.digest};
    }

private:
    XXH3_state_t* const m_state;
};

/// A text in one form, whatever the width in which it is stored.
std::string TextOfValue(const Property& property)
{
    return property.Type() == PT_UNICODE ? Utf8Of(property) : Utf8FromNarrow(property.values.front());
}

std::string PlainText(const Properties& properties, ULONG tag)
{
    const Property* property = FindProperty(properties, tag);
    return property == nullptr || property->source ? std::string() : TextOfValue(*property);
}

void AddValue(Hash& hash, const Property* property)
{
    if (property == nullptr)
    {
        return hash.Add(uint64_t{0});
    }
    if (property->source)
    {
        return hash.Add(property->source->Size());
    }
    const bool isText = property->Type() == PT_UNICODE || property->Type() == PT_STRING8;
    for (const std::string& value : property->values)
    {
        if (isText)
        {
            hash.Add(TextOfValue(*property));
        }
        else if (value.size() > LargestHashed)
        {
            hash.Add(static_cast<uint64_t>(value.size()));
        }
        else
        {
            hash.Add(value);
        }
    }
}

/// The text in the first form that the message has.
void AddTextOf(Hash& hash, const Properties& properties)
{
    for (const ULONG tag : {PR_BODY_W, PR_HTML, PR_RTF_COMPRESSED})
    {
        if (const Property* text = FindProperty(properties, tag))
        {
            hash.Add(uint64_t{PROP_ID(tag)});
            return AddValue(hash, text);
        }
    }
    hash.Add(uint64_t{0});
}

std::string NameKeyOf(const PropertyName& name)
{
    std::string key(reinterpret_cast<const char*>(&name.set), sizeof name.set);
    key += name.isText ? 't' : 'n';
    return name.isText ? key.append(reinterpret_cast<const char*>(name.text.data()), name.text.size() * sizeof(WCHAR))
                       : key.append(reinterpret_cast<const char*>(&name.id), sizeof name.id);
}

/// Named properties and those of contacts, in one order, whatever the order in the source.
void AddItemProperties(Hash& hash, const Properties& properties)
{
    std::map<std::string, const Property*> inOrder;
    for (const Property& property : properties)
    {
        const ULONG id = PROP_ID(property.tag);
        if (property.name)
        {
            inOrder[NameKeyOf(*property.name)] = &property;
        }
        else if ((id >= FirstOfContacts && id <= LastOfContacts) || id == PROP_ID(PR_START_DATE) ||
                 id == PROP_ID(PR_END_DATE))
        {
            inOrder[std::to_string(id)] = &property;
        }
    }
    for (const auto& [name, property] : inOrder)
    {
        hash.Add(name);
        AddValue(hash, property);
    }
}

void AddRest(Hash& hash, const MessageContent& content)
{
    hash.Add(PlainText(content.properties, PR_MESSAGE_CLASS_W));
    AddItemProperties(hash, content.properties);
    for (const Properties& recipient : content.recipients)
    {
        hash.Add(PlainText(recipient, PR_DISPLAY_NAME_W));
        hash.Add(PlainText(recipient, PR_EMAIL_ADDRESS_W));
        AddValue(hash, FindProperty(recipient, PR_RECIPIENT_TYPE));
    }
    for (const AttachmentContent& attachment : content.attachments)
    {
        hash.Add(PlainText(attachment.properties, PR_ATTACH_LONG_FILENAME_W));
        hash.Add(attachment.message ? KeyOf(*attachment.message) : std::string());
        AddValue(hash, FindProperty(attachment.properties, PR_ATTACH_DATA_BIN));
    }
}

void AddHead(Hash& hash, const Properties& properties)
{
    hash.Add(PlainText(properties, PR_INTERNET_MESSAGE_ID_W));
    const FILETIME date = DateOf(properties).value_or(FILETIME{});
    hash.Add(static_cast<uint64_t>(date.dwHighDateTime) << 32 | date.dwLowDateTime);
}

} // namespace

std::optional<FILETIME> DateOf(const Properties& properties)
{
    for (const ULONG tag : {PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME})
    {
        if (const Property* date = FindProperty(properties, tag))
        {
            return NumberFromBytes<FILETIME>(date->values.front());
        }
    }
    return std::nullopt;
}

std::string KeyOf(const MessageContent& content)
{
    Hash hash;
    AddHead(hash, content.properties);
    hash.Add(PlainText(content.properties, PR_SUBJECT_W));
    AddTextOf(hash, content.properties);
    if (PlainText(content.properties, PR_INTERNET_MESSAGE_ID_W).empty())
    {
        AddRest(hash, content);
    }
    return hash.Result();
}

std::string ShortKeyOf(const Properties& properties)
{
    Hash hash;
    AddHead(hash, properties);
    return hash.Result();
}

} // namespace zeb::tools
