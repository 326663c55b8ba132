#include "tools/common/PropertyReader.h"

#include "tools/common/Failure.h"
#include "tools/common/PropertyValues.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace zeb::tools
{
namespace
{

constexpr ULONG FirstNamedId = 0x8000;
/// Larger binaries (bytes) stay in their stream.
constexpr uint64_t LargestInMemory = 256 * 1024;

/// A property's stream.
class StreamBytes : public ByteSource
{
public:
    explicit StreamBytes(CComPtr<IStream> stream)
        : m_stream(std::move(stream))
    {
    }

    uint64_t Size() override
    {
        STATSTG state{};
        ThrowIfFailed(m_stream->Stat(&state, STATFLAG_NONAME));
        return state.cbSize.QuadPart;
    }

    size_t Read(char* buffer, size_t size) override
    {
        ULONG read = 0;
        const ULONG piece = static_cast<ULONG>(std::min<size_t>(size, 0x10000000));
        ThrowIfFailed(m_stream->Read(buffer, piece, &read));
        return read;
    }

private:
    CComPtr<IStream> m_stream;
};

std::string CodeName(long code)
{
    char text[16];
    const char* name = Zeb_NameFromValue("MAPIErrors", static_cast<ULONG>(code), nullptr);
    return name != nullptr ? name : (std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(code)), text);
}

bool IsTooLarge(const SPropValue& value)
{
    return PROP_TYPE(value.ulPropTag) == PT_ERROR && value.Value.err == MAPI_E_NOT_ENOUGH_MEMORY;
}

PropertyName NameOf(const MAPINAMEID& raw)
{
    PropertyName name;
    name.set = *raw.lpguid;
    name.isText = raw.ulKind == MNID_STRING;
    if (name.isText)
    {
        name.text = raw.Kind.lpwstrName;
    }
    else
    {
        name.id = raw.Kind.lID;
    }
    return name;
}

/// One text property in its 8-bit form; empty when it cannot be read.
std::vector<std::string> NarrowForm(CZebIProp& object, ULONG tag)
{
    CZebPropValArray values;
    object.GetProps(values, 1, Narrowed(tag));
    if (values.GetCount() != 1)
    {
        return {};
    }
    const SPropValue& value = *static_cast<SPropValue*>(values);
    if (value.ulPropTag == Narrowed(tag))
    {
        return ValueBytes(value);
    }
    if (!IsTooLarge(value))
    {
        return {};
    }
    StreamBytes stream(object.OpenProperty(Narrowed(tag), 0));
    return {ReadAll(stream)};
}

} // namespace

std::string ReadAll(ByteSource& source)
{
    std::string bytes(static_cast<size_t>(source.Size()), '\0');
    size_t done = 0;
    while (done < bytes.size())
    {
        const size_t got = source.Read(bytes.data() + done, bytes.size() - done);
        if (got == 0)
        {
            break;
        }
        done += got;
    }
    bytes.resize(done);
    return bytes;
}

bool IsStoresOwn(ObjectKind kind, ULONG tag)
{
    static const std::set<ULONG> place = {PROP_ID(PR_RECORD_KEY),         PROP_ID(PR_OBJECT_TYPE),
                                          PROP_ID(PR_ACCESS_LEVEL),       PROP_ID(PR_STORE_ENTRYID),
                                          PROP_ID(PR_INSTANCE_KEY),       PROP_ID(PR_STORE_RECORD_KEY),
                                          PROP_ID(PR_STORE_SUPPORT_MASK), PROP_ID(PR_MAPPING_SIGNATURE)};
    static const std::set<ULONG> entry = {PROP_ID(PR_ENTRYID), PROP_ID(PR_PARENT_ENTRYID), PROP_ID(PR_ACCESS)};
    static const std::set<ULONG> message = {PROP_ID(PR_MESSAGE_SIZE), PROP_ID(PR_HASATTACH)};
    static const std::set<ULONG> folder = {PROP_ID(PR_CONTENT_COUNT), PROP_ID(PR_CONTENT_UNREAD),
                                           PROP_ID(PR_SUBFOLDERS), PROP_ID(PR_FOLDER_TYPE),
                                           PROP_ID(PR_ASSOC_CONTENT_COUNT)};
    // The properties of the inbox and the root that hold the entry identifiers of calendar, contacts, journal, notes,
    // tasks and drafts.
    const bool namesOtherFolder = PROP_ID(tag) >= 0x36D0 && PROP_ID(tag) <= 0x36D7;
    const ULONG id = PROP_ID(tag);
    switch (kind)
    {
    case ObjectKind::Folder:
        return place.count(id) != 0 || entry.count(id) != 0 || folder.count(id) != 0 || namesOtherFolder;
    case ObjectKind::Message:
        return place.count(id) != 0 || entry.count(id) != 0 || message.count(id) != 0;
    case ObjectKind::Attachment:
        return place.count(id) != 0 || id == PROP_ID(PR_ATTACH_NUM);
    case ObjectKind::Recipient:
        return id == PROP_ID(PR_ROWID);
    }
    return false;
}

void NameReader::Learn(CZebIProp& object, const std::vector<ULONG>& tags)
{
    std::vector<ULONG> unknown;
    for (const ULONG tag : tags)
    {
        if (PROP_ID(tag) >= FirstNamedId && m_names.emplace(PROP_ID(tag), std::nullopt).second)
        {
            unknown.push_back(PROP_TAG(PT_UNSPECIFIED, PROP_ID(tag)));
        }
    }
    if (unknown.empty())
    {
        return;
    }
    CZebPropTagArray list = TagArray(unknown);
    SPropTagArray* asked = list;
    ULONG count = 0;
    MAPINAMEID** names = nullptr;
    object.GetNamesFromIDs(&asked, nullptr, 0, &count, &names);
    const std::unique_ptr<MAPINAMEID*, void (*)(void*)> owner(names, [](void* buffer) { Zeb_MemFree(buffer); });
    for (ULONG i = 0; i < count && i < asked->cValues; ++i)
    {
        if (names[i] != nullptr && names[i]->lpguid != nullptr)
        {
            m_names[PROP_ID(asked->aulPropTag[i])] = NameOf(*names[i]);
        }
    }
}

const PropertyName* NameReader::Find(ULONG id) const
{
    const auto found = m_names.find(id);
    return found == m_names.end() || !found->second ? nullptr : &*found->second;
}

void PropertyReader::Name(Property& property) const
{
    if (PROP_ID(property.tag) < FirstNamedId)
    {
        return;
    }
    if (const PropertyName* name = m_names.Find(PROP_ID(property.tag)))
    {
        property.name = *name;
    }
}

void PropertyReader::ReadLarge(CZebIProp& object, Property& property)
{
    auto stream = std::make_shared<StreamBytes>(object.OpenProperty(property.tag, 0));
    if (m_what == ReadWhat::Beginnings || (!IsText(property.Type()) && stream->Size() > LargestInMemory))
    {
        property.source = std::move(stream);
    }
    else
    {
        property.values.push_back(ReadAll(*stream));
    }
}

void PropertyReader::ReadValue(CZebIProp& object, ULONG tag, const SPropValue& value, Properties& properties)
{
    Property property;
    property.tag = tag;
    try
    {
        if (IsTooLarge(value) && PROP_TYPE(tag) != PT_OBJECT)
        {
            ReadLarge(object, property);
        }
        else if (PROP_TYPE(value.ulPropTag) == PT_ERROR)
        {
            throw ToolError(CodeName(value.Value.err));
        }
        else
        {
            property.values = ValueBytes(value);
        }
        if (IsText(property.Type()) && HasReplacement(property.values))
        {
            SettleWidth(property, NarrowForm(object, tag));
        }
    }
    catch (...)
    {
        m_unread.push_back({tag, CurrentFailure()});
        return;
    }
    Name(property);
    properties.push_back(std::move(property));
}

Properties PropertyReader::ReadObject(CZebIProp& object)
{
    CZebPropTagArray tags;
    object.GetPropList(&tags, MAPI_UNICODE);
    std::vector<ULONG> list;
    for (int i = 0; i < tags.GetCount(); ++i)
    {
        if (PROP_TYPE(tags[i]) != PT_OBJECT && PROP_TYPE(tags[i]) != PT_ERROR && PROP_TYPE(tags[i]) != PT_NULL)
        {
            list.push_back(tags[i]);
        }
    }
    Properties properties;
    if (list.empty())
    {
        return properties;
    }
    m_names.Learn(object, list);
    CZebPropValArray values;
    ULONG* const count = values.CountPtr();
    object.GetProps(TagArray(list), count, &values, 0);
    for (ULONG i = 0; i < values.GetCount(); ++i)
    {
        const SPropValue& value = static_cast<SPropValue*>(values)[i];
        // Deleted since it was listed.
        if (PROP_TYPE(value.ulPropTag) != PT_ERROR || value.Value.err != MAPI_E_NOT_FOUND)
        {
            ReadValue(object, list[i], value, properties);
        }
    }
    return properties;
}

} // namespace zeb::tools
