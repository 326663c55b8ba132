#include "tools/common/PropertyWriter.h"

#include "tools/common/Failure.h"
#include "tools/common/PropertyValues.h"

#include <deque>
#include <memory>

namespace zeb::tools
{
namespace
{

/// Larger values (bytes) are written through a stream: a provider may refuse more in one call.
constexpr size_t LargestInOneCall = 32 * 1024;
constexpr size_t StreamPiece = 256 * 1024;

bool GoesByStream(const Property& property)
{
    const ULONG type = property.Type();
    if (property.source || type == PT_OBJECT)
    {
        return true;
    }
    return (type == PT_STRING8 || type == PT_UNICODE || type == PT_BINARY) && property.values.size() == 1 &&
           property.values.front().size() > LargestInOneCall;
}

void WriteAll(IStream* stream, const char* bytes, size_t size)
{
    while (size > 0)
    {
        ULONG written = 0;
        const ULONG piece = static_cast<ULONG>(size < StreamPiece ? size : StreamPiece);
        ThrowIfFailed(stream->Write(bytes, piece, &written));
        ThrowIfFailed(written == 0 ? STG_E_MEDIUMFULL : S_OK);
        bytes += written;
        size -= written;
    }
}

void WriteByStream(CZebIProp& object, const Property& property)
{
    const auto stream = object.OpenProperty(property.tag, MAPI_CREATE | MAPI_MODIFY);
    if (property.source)
    {
        std::vector<char> piece(StreamPiece);
        while (const size_t size = property.source->Read(piece.data(), piece.size()))
        {
            WriteAll(stream.Get(), piece.data(), size);
        }
    }
    else
    {
        WriteAll(stream.Get(), property.values.front().data(), property.values.front().size());
    }
    ThrowIfFailed(stream->Commit(STGC_DEFAULT));
}

/// An empty value, for a property that is set only to be deleted.
Property Blank(const Property& property)
{
    Property blank;
    blank.tag = property.tag;
    if ((property.Type() & MV_FLAG) == 0)
    {
        blank.values.emplace_back(ElementSize(property.Type()), '\0');
    }
    return blank;
}

/// A store adds defaults that a new object never had; it does not add what was set and deleted again.
void RemoveProperties(CZebIProp& object, const Properties& properties)
{
    std::vector<Property> blanks;
    std::vector<ULONG> tags;
    for (const Property& property : properties)
    {
        if (property.removed)
        {
            blanks.push_back(Blank(property));
            tags.push_back(property.tag);
        }
    }
    if (tags.empty())
    {
        return;
    }
    std::vector<const Property*> pointers;
    for (const Property& blank : blanks)
    {
        pointers.push_back(&blank);
    }
    CZebPropValArray values;
    FillValues(values, pointers);
    object.SetProps(values.Count(), values, nullptr);
    object.DeleteProps(TagArray(tags), nullptr);
}

std::vector<Refusal> RefusalsOf(CZebPropProblemArray& problems, const std::vector<const Property*>& properties)
{
    std::vector<Refusal> refusals;
    for (int i = 0; i < problems.GetCount(); ++i)
    {
        const SPropProblem& problem = problems[i];
        const bool known = problem.ulIndex < properties.size();
        refusals.push_back(
            {known ? PropertyText(*properties[problem.ulIndex]) : "a property", static_cast<long>(problem.scode)});
    }
    return refusals;
}

void Append(std::vector<Refusal>& to, std::vector<Refusal> more)
{
    to.insert(to.end(), more.begin(), more.end());
}

/// All recipients in one call, with all their properties.
void WriteRecipients(CZebMessage& message, std::vector<Properties>& recipients, NameResolver& names)
{
    if (recipients.empty())
    {
        return;
    }
    std::deque<CZebPropValArray> owners;
    std::vector<CZebPropValArray*> pointers;
    for (Properties& recipient : recipients)
    {
        names.Resolve(message, recipient);
        std::vector<const Property*> all;
        for (const Property& property : recipient)
        {
            all.push_back(&property);
        }
        CZebPropValArray& values = owners.emplace_back();
        FillValues(values, all);
        pointers.push_back(std::addressof(values));
    }
    message.AddRecipients(static_cast<ULONG>(pointers.size()), pointers.data());
}

std::vector<Refusal> WriteEmbedded(CZebAttachment& attachment, MessageContent& content, NameResolver& names)
{
    // Not CreateMessage, which sets properties of the attachment that the content may lack.
    CZebMessage message = attachment.OpenMessage(MAPI_CREATE | MAPI_MODIFY);
    std::vector<Refusal> refusals = WriteMessage(message, content, names);
    message.SaveChanges(KEEP_OPEN_READWRITE);
    return refusals;
}

std::vector<Refusal> WriteAttachment(CZebMessage& message, AttachmentContent& content, NameResolver& names)
{
    CZebAttachment attachment = message.CreateAttachment();
    std::vector<Refusal> refusals = WriteProperties(attachment, content.properties, names);
    if (content.message)
    {
        Append(refusals, WriteEmbedded(attachment, *content.message, names));
    }
    attachment.SaveChanges(KEEP_OPEN_READWRITE);
    return refusals;
}

} // namespace

std::string NameResolver::KeyOf(const PropertyName& name)
{
    std::string key(reinterpret_cast<const char*>(&name.set), sizeof name.set);
    if (name.isText)
    {
        key.append("t").append(reinterpret_cast<const char*>(name.text.data()), name.text.size() * sizeof(WCHAR));
    }
    else
    {
        key.append("n").append(reinterpret_cast<const char*>(&name.id), sizeof name.id);
    }
    return key;
}

void NameResolver::Resolve(CZebIProp& object, Properties& properties)
{
    std::map<std::string, const PropertyName*> missing;
    for (const Property& property : properties)
    {
        if (property.name && m_identifiers.count(KeyOf(*property.name)) == 0)
        {
            missing.emplace(KeyOf(*property.name), &*property.name);
        }
    }
    if (!missing.empty())
    {
        Ask(object, missing);
    }
    for (Property& property : properties)
    {
        if (property.name)
        {
            property.tag = PROP_TAG(property.Type(), m_identifiers.at(KeyOf(*property.name)));
        }
    }
}

void NameResolver::Ask(CZebIProp& object, const std::map<std::string, const PropertyName*>& missing)
{
    std::vector<MAPINAMEID> names;
    for (const auto& entry : missing)
    {
        MAPINAMEID name{};
        name.lpguid = const_cast<GUID*>(&entry.second->set);
        name.ulKind = entry.second->isText ? MNID_STRING : MNID_ID;
        if (entry.second->isText)
        {
            name.Kind.lpwstrName = const_cast<WCHAR*>(entry.second->text.c_str());
        }
        else
        {
            name.Kind.lID = entry.second->id;
        }
        names.push_back(name);
    }
    std::vector<MAPINAMEID*> pointers;
    for (MAPINAMEID& name : names)
    {
        pointers.push_back(&name);
    }
    CZebPropTagArray tags;
    object.GetIDsFromNames(static_cast<ULONG>(pointers.size()), pointers.data(), MAPI_CREATE, &tags);
    int index = 0;
    for (const auto& entry : missing)
    {
        if (PROP_TYPE(tags[index]) == PT_ERROR)
        {
            throw ToolError("the store returned no identifier for a named property of " + GuidText(entry.second->set));
        }
        m_identifiers[entry.first] = PROP_ID(tags[index++]);
    }
}

std::vector<Refusal> WriteProperties(CZebIProp& object, Properties& properties, NameResolver& names)
{
    names.Resolve(object, properties);
    RemoveProperties(object, properties);
    std::vector<const Property*> inRow;
    for (const Property& property : properties)
    {
        if (!property.removed && !GoesByStream(property))
        {
            inRow.push_back(&property);
        }
    }
    std::vector<Refusal> refusals;
    if (!inRow.empty())
    {
        CZebPropValArray values;
        FillValues(values, inRow);
        CZebPropProblemArray problems;
        object.SetProps(values.Count(), values, &problems);
        refusals = RefusalsOf(problems, inRow);
    }
    for (const Property& property : properties)
    {
        if (!property.removed && GoesByStream(property))
        {
            WriteByStream(object, property);
        }
    }
    return refusals;
}

std::vector<Refusal> WriteMessage(CZebMessage& message, MessageContent& content, NameResolver& names)
{
    std::vector<Refusal> refusals = WriteProperties(message, content.properties, names);
    WriteRecipients(message, content.recipients, names);
    for (AttachmentContent& attachment : content.attachments)
    {
        Append(refusals, WriteAttachment(message, attachment, names));
    }
    return refusals;
}

} // namespace zeb::tools
