// A session's address book, with helpers that create entries.
#pragma once

#include "platform/tags.h"
#include "tests/zebstore/provider/ProviderFixture.h"

#include <cstddef>
#include <cstring>

namespace zebstore
{

inline Bytes Joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& each : parts)
    {
        all.insert(all.end(), each.begin(), each.end());
    }
    return all;
}

/// Recipients as MAPI's calls accept and replace them; the destructor frees them.
class Recipients
{
public:
    explicit Recipients(const std::vector<std::string>& names)
        : m_list(Allocate(CbNewADRLIST(names.size())))
        , m_found(Allocate(offsetof(FlagList, ulFlag) + names.size() * sizeof(ULONG)))
    {
        std::memset(static_cast<void*>(m_list.Get()), 0, CbNewADRLIST(names.size()));
        m_list->cEntries = m_found->cFlags = static_cast<ULONG>(names.size());
        for (size_t i = 0; i < names.size(); ++i)
        {
            auto* value = static_cast<SPropValue*>(Allocate(2 * sizeof(SPropValue)));
            value[0] = LongValue(PR_RECIPIENT_TYPE, MAPI_CC);
            value[1] = NarrowValue(PR_DISPLAY_NAME_A, CopyNarrow(names[i].c_str(), value));
            m_list->aEntries[i].cValues = 2;
            m_list->aEntries[i].rgPropVals = value;
            m_found->ulFlag[i] = MAPI_UNRESOLVED;
        }
    }
    ~Recipients()
    {
        for (ULONG i = 0; i < m_list->cEntries; ++i)
        {
            Free(m_list->aEntries[i].rgPropVals);
        }
    }
    Recipients(const Recipients&) = delete;
    Recipients& operator=(const Recipients&) = delete;

    ADRLIST* List() { return m_list.Get(); }
    FlagList* Found() { return m_found.Get(); }
    ULONG Flag(ULONG index) const { return m_found->ulFlag[index]; }
    const SPropValue* Value(ULONG index, ULONG tag) const
    {
        const ADRENTRY& entry = m_list->aEntries[index];
        for (ULONG i = 0; i < entry.cValues; ++i)
        {
            if (entry.rgPropVals[i].ulPropTag == tag)
            {
                return &entry.rgPropVals[i];
            }
        }
        return nullptr;
    }
    std::string TextOf(ULONG index, ULONG tag) const
    {
        const SPropValue* value = Value(index, CHANGE_PROP_TYPE(tag, PT_STRING8));
        return value ? value->Value.lpszA : "<none>";
    }

private:
    Buffer<ADRLIST> m_list;
    Buffer<FlagList> m_found;
};

class AddressBookProvider : public Provider
{
protected:
    static constexpr ULONG SmtpAddress = PR_SMTP_ADDRESS_A;

    ~AddressBookProvider() override { m_book = {}; }

    IAddrBook& Book()
    {
        if (!m_book)
        {
            IAddrBook* book = nullptr;
            EXPECT_EQ(Session().OpenAddressBook(0, nullptr, 0, &book), S_OK);
            m_book = Ref<IAddrBook>::Adopt(book);
        }
        return *m_book;
    }

    /// Opens an entry through the address book. @param type receives the object's type
    template <class Interface>
    Ref<Interface> OpenInBook(const Bytes& id, ULONG flags = MAPI_BEST_ACCESS, ULONG* type = nullptr,
                              HRESULT expected = S_OK)
    {
        ULONG found = 0;
        IUnknown* object = nullptr;
        EXPECT_EQ(Book().OpenEntry(static_cast<ULONG>(id.size()), Id(id), nullptr, flags, &found, &object), expected);
        if (type)
        {
            *type = found;
        }
        return Ref<Interface>::Adopt(static_cast<Interface*>(object));
    }

    Ref<IABContainer> Root() { return OpenInBook<IABContainer>({}); }

    Bytes ContainerId(const char* name)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(Root()->GetHierarchyTable(0, &table), S_OK);
        const Rows rows(table, {PR_DISPLAY_NAME_A, PR_ENTRYID});
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            if (rows.TextCell(i, 0) == name)
            {
                return rows.BytesCell(i, 1);
            }
        }
        ADD_FAILURE() << "no container " << name;
        return {};
    }
    Bytes DirectoryId() { return ContainerId("Global Address List"); }
    Bytes ContactsId() { return ContainerId("Contacts"); }
    Ref<IABContainer> Directory() { return OpenInBook<IABContainer>(DirectoryId()); }
    Ref<IABContainer> Contacts() { return OpenInBook<IABContainer>(ContactsId()); }

    Ref<IMAPIProp> New(IABContainer& container, ULONG templateTag, ULONG flags = 0)
    {
        const Bytes id = GetBytes(&container, templateTag);
        IMAPIProp* entry = nullptr;
        EXPECT_EQ(container.CreateEntry(static_cast<ULONG>(id.size()), Id(id), flags, &entry), S_OK);
        return Ref<IMAPIProp>::Adopt(entry);
    }

    /// Adds a mail user to the global address list. @return its identifier
    Bytes AddUser(const char* name, const char* address = nullptr)
    {
        const Ref<IMAPIProp> user = New(*Directory(), PR_DEF_CREATE_MAILUSER);
        EXPECT_EQ(Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, name)), S_OK);
        if (address)
        {
            EXPECT_EQ(Set(user.Get(), NarrowValue(PR_EMAIL_ADDRESS_A, address)), S_OK);
        }
        EXPECT_EQ(user->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        return GetBytes(user.Get(), PR_ENTRYID);
    }

    Bytes AddList(const char* name, const std::vector<Bytes>& members = {})
    {
        const Ref<IMAPIProp> list = New(*Directory(), PR_DEF_CREATE_DL);
        EXPECT_EQ(Set(list.Get(), NarrowValue(PR_DISPLAY_NAME_A, name)), S_OK);
        EXPECT_EQ(list->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        const Bytes id = GetBytes(list.Get(), PR_ENTRYID);
        for (const Bytes& each : members)
        {
            EXPECT_EQ(AddMember(id, each), S_OK);
        }
        return id;
    }

    HRESULT AddMember(const Bytes& list, const Bytes& member)
    {
        EntryList entries(member);
        return OpenInBook<IDistList>(list)->CopyEntries(&entries, 0, nullptr, 0);
    }

    template <class Container>
    static std::vector<std::string> NamesIn(Container& container)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(container.GetContentsTable(0, &table), S_OK);
        return NamesOf(table);
    }
    static std::vector<std::string> NamesOf(IMAPITable* table)
    {
        const Rows rows(table, {PR_DISPLAY_NAME_A});
        std::vector<std::string> names;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            names.push_back(rows.TextCell(i, 0));
        }
        return names;
    }

    Bytes OneOff(const char* name, const char* type, const char* address, ULONG flags = 0)
    {
        ULONG size = 0;
        ENTRYID* id = nullptr;
        EXPECT_EQ(Book().CreateOneOff(Text(name), Text(type), Text(address), flags, &size, &id), S_OK);
        const Buffer<ENTRYID> owner(id);
        const BYTE* bytes = reinterpret_cast<const BYTE*>(id);
        return id ? Bytes(bytes, bytes + size) : Bytes();
    }

    Ref<IMAPIFolder> ContactsFolder()
    {
        const Bytes id = GetBytes(Inbox().Get(), PR_IPM_CONTACT_ENTRYID);
        return OpenFolder(id);
    }

    /// The tag of one of the properties in which contacts keep their addresses.
    ULONG ContactTag(IMAPIProp& object, LONG number, ULONG type = PT_STRING8)
    {
        GUID set = {0x00062004, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
        MAPINAMEID name{};
        name.lpguid = &set;
        name.ulKind = MNID_ID;
        name.Kind.lID = number;
        MAPINAMEID* names = &name;
        SPropTagArray* tags = nullptr;
        EXPECT_EQ(object.GetIDsFromNames(1, &names, MAPI_CREATE, &tags), S_OK);
        const Buffer<SPropTagArray> owner(tags);
        return CHANGE_PROP_TYPE(tags->aulPropTag[0], type);
    }

    /// Saves a contact with these addresses. @return the message's identifier
    Bytes AddContact(const char* name, const std::vector<std::string>& addresses,
                     const char* messageClass = "IPM.Contact")
    {
        const Ref<IMAPIFolder> folder = ContactsFolder();
        const Ref<IMessage> message = NewMessage(*folder, name);
        Set(message.Get(), NarrowValue(PR_MESSAGE_CLASS_A, messageClass));
        Set(message.Get(), NarrowValue(PR_DISPLAY_NAME_A, name));
        LONG number = 0x8083;
        for (const std::string& each : addresses)
        {
            if (!each.empty())
            {
                Set(message.Get(), NarrowValue(ContactTag(*message.Get(), number), each.c_str()));
            }
            number += 0x10;
        }
        EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        return GetBytes(message.Get(), PR_ENTRYID);
    }

    std::string BookErrorText(HRESULT code) { return ErrorText(Book(), code); }

    Ref<IAddrBook> m_book;
};

} // namespace zebstore
