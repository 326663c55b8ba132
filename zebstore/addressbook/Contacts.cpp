#include "zebstore/addressbook/Contacts.h"

#include "platform/tags.h"
#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/storage/Encoding.h"

#include <algorithm>

namespace zebstore
{
namespace
{

constexpr GUID AddressSet = {0x00062004, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr LONG MembersName = 0x8055;
constexpr LONG FirstName = 0x8080; ///< of the first address; each further one adds AddressStep
constexpr LONG AddressStep = 0x10;
constexpr LONG NameOffset = 0;
constexpr LONG TypeOffset = 2;
constexpr LONG AddressOffset = 3;

std::string TextIn(const ValueSource& values, ULONG tag)
{
    const EncodedValue value = tag ? values.Find(tag) : EncodedValue();
    return IsText(value.Type()) && value.large == nullptr ? std::string(StoredTextOf(value.Type(), value.bytes))
                                                          : std::string();
}

std::string AddressOf(const ContactTags& tags, ULONG index, const ValueSource& message)
{
    std::string address = TextIn(message, tags.address[index]);
    if (address.empty() && index == 0)
    {
        address = TextIn(message, PR_EMAIL_ADDRESS_W);
    }
    return address;
}

std::string TypeOf(const ContactTags& tags, ULONG index, const ValueSource& message)
{
    const std::string type = TextIn(message, tags.type[index]);
    return type.empty() ? "SMTP" : type;
}

std::string NameOf(const ContactTags& tags, const AddressName& contact, const ValueSource& message)
{
    if (contact.kind == AddressKind::Contact)
    {
        if (const std::string own = TextIn(message, tags.displayName[contact.index]); !own.empty())
        {
            return own;
        }
    }
    const std::string name = TextIn(message, PR_DISPLAY_NAME_W);
    return name.empty() ? TextIn(message, PR_SUBJECT_W) : name;
}

bool ComputeAddress(const ContactTags& tags, const AddressName& contact, const ValueSource& message, ULONG tag,
                    PropertySet& out)
{
    if (contact.kind != AddressKind::Contact)
    {
        return false;
    }
    const std::string address = AddressOf(tags, contact.index, message);
    return !address.empty() && ComputeFromAddress(TypeOf(tags, contact.index, message), address, tag, out);
}

bool ClassIs(const std::string& messageClass, const char* base)
{
    const std::string folded = Folded(messageClass, TextFold::IgnoreCase);
    const std::string wanted = Folded(base, TextFold::IgnoreCase);
    return folded.compare(0, wanted.size(), wanted) == 0 &&
           (folded.size() == wanted.size() || folded[wanted.size()] == '.');
}

} // namespace

ContactTags ContactTagsOf(StoreFile& store)
{
    std::vector<LONG> numbers = {MembersName};
    for (LONG i = 0; i < static_cast<LONG>(MostContactAddresses); ++i)
    {
        for (const LONG offset : {NameOffset, TypeOffset, AddressOffset})
        {
            numbers.push_back(FirstName + i * AddressStep + offset);
        }
    }
    GUID set = AddressSet;
    std::vector<MAPINAMEID> names(numbers.size());
    std::vector<const MAPINAMEID*> pointers;
    for (size_t i = 0; i < names.size(); ++i)
    {
        names[i].lpguid = &set;
        names[i].ulKind = MNID_ID;
        names[i].Kind.lID = numbers[i];
        pointers.push_back(&names[i]);
    }
    const std::vector<ULONG> ids = store.NamedProperties().Ids(pointers.data(), pointers.size(), false);
    const auto tagAt = [&](size_t index, ULONG type) { return ids[index] ? PROP_TAG(type, ids[index]) : 0; };
    ContactTags tags;
    tags.members = tagAt(0, PT_MV_BINARY);
    for (size_t i = 0; i < MostContactAddresses; ++i)
    {
        tags.displayName[i] = tagAt(1 + 3 * i, PT_UNICODE);
        tags.type[i] = tagAt(2 + 3 * i, PT_UNICODE);
        tags.address[i] = tagAt(3 + 3 * i, PT_UNICODE);
    }
    return tags;
}

const std::vector<ULONG>& ComputedContactTags()
{
    static const std::vector<ULONG> tags = []
    {
        std::vector<ULONG> all = ComputedEntryTags();
        for (const ULONG tag : {PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W, PR_SEARCH_KEY})
        {
            all.push_back(tag);
        }
        return all;
    }();
    return tags;
}

bool ComputeContact(const StoreContext& store, const ContactTags& tags, const AddressName& contact,
                    const ValueSource& message, ULONG tag, PropertySet& out)
{
    if (PROP_ID(tag) != PROP_ID(PR_DISPLAY_NAME))
    {
        return ComputeEntry(store, contact, tag, out) || ComputeAddress(tags, contact, message, tag, out);
    }
    out.SetText(PR_DISPLAY_NAME_W, NameOf(tags, contact, message));
    return true;
}

std::vector<std::string> ContactListMembers(const ContactTags& tags, const PropertySet& message)
{
    std::vector<std::string> members;
    const EncodedValue value = tags.members ? message.Find(tags.members) : EncodedValue();
    if (value.Type() != PT_MV_BINARY)
    {
        return members;
    }
    for (ULONG i = 0; i < ElementCount(value.Type(), value.bytes); ++i)
    {
        members.emplace_back(Element(value.Type(), value.bytes, i));
    }
    return members;
}

std::vector<AddressName> ContactsIn(const ContactTags& tags, MessageId message, const ValueSource& values)
{
    std::vector<AddressName> found;
    const std::string messageClass = TextIn(values, PR_MESSAGE_CLASS_W);
    AddressName name;
    name.key = message;
    if (ClassIs(messageClass, "IPM.DistList"))
    {
        name.kind = AddressKind::ContactList;
        found.push_back(name);
    }
    if (!ClassIs(messageClass, "IPM.Contact"))
    {
        return found;
    }
    name.kind = AddressKind::Contact;
    for (name.index = 0; name.index < MostContactAddresses; ++name.index)
    {
        if (!AddressOf(tags, name.index, values).empty())
        {
            found.push_back(name);
        }
    }
    name.index = 0;
    if (found.empty())
    {
        found.push_back(name);
    }
    return found;
}

} // namespace zebstore
