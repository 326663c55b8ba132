#include "tools/zeb/LoadAddress.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"

namespace zeb::tools
{
namespace
{

template <class Interface>
CComPtr<Interface> Query(const CZebIProp& object, const IID& iid)
{
    CComPtr<Interface> result;
    ThrowIfFailed(object.GetInterface().QueryInterface(iid, result));
    return result;
}

/// One recipient to resolve; frees the resolved properties.
class OneRecipient
{
public:
    explicit OneRecipient(const std::string& name)
    {
        CStringW wide = WideFromUtf8(name);
        const size_t bytes = (static_cast<size_t>(wide.GetLength()) + 1) * sizeof(WCHAR);
        auto* value = static_cast<SPropValue*>(Zeb_MemAllocate(sizeof(SPropValue), nullptr));
        m_list.aEntries[0].rgPropVals = value;
        m_list.aEntries[0].cValues = 1;
        value->ulPropTag = PR_DISPLAY_NAME_W;
        value->Value.lpszW = static_cast<WCHAR*>(Zeb_MemAllocate(static_cast<unsigned long>(bytes), value));
        std::memcpy(value->Value.lpszW, static_cast<const WCHAR*>(wide), bytes);
    }
    ~OneRecipient() { Zeb_MemFree(m_list.aEntries[0].rgPropVals); }
    OneRecipient(const OneRecipient&) = delete;
    OneRecipient& operator=(const OneRecipient&) = delete;

    LPADRLIST List() { return reinterpret_cast<LPADRLIST>(&m_list); }
    CZebBinary EntryID() const
    {
        const ADRENTRY& entry = m_list.aEntries[0];
        for (ULONG i = 0; i < entry.cValues; ++i)
        {
            if (entry.rgPropVals[i].ulPropTag == PR_ENTRYID)
            {
                return CZebBinary(entry.rgPropVals[i].Value.bin);
            }
        }
        throw ToolError("the address book returned no entry identifier");
    }

private:
    SizedADRLIST(1, m_list) = { 1, {} };
};

} // namespace

AddressWriter::AddressWriter(CZebSession& session)
    : m_book(session.OpenAddressBook(nullptr, AB_NO_DIALOG))
    , m_directory(m_book.OpenMainContainer(nullptr))
{
}

std::vector<CZebBinary> AddressWriter::Resolve(const std::vector<std::string>& members)
{
    const CComPtr<IAddrBook> book = Query<IAddrBook>(m_book, IID_IAddrBook);
    std::vector<CZebBinary> found;
    for (const std::string& each : members)
    {
        OneRecipient recipient(each);
        ThrowIfFailed(book->ResolveName(0, MAPI_UNICODE, nullptr, recipient.List()), book);
        found.push_back(recipient.EntryID());
    }
    return found;
}

void AddressWriter::AddMembers(CZebIProp& list, const std::vector<CZebBinary>& members)
{
    const CComPtr<IDistList> target = Query<IDistList>(list, IID_IDistList);
    std::vector<SBinary> entries;
    for (const CZebBinary& each : members)
    {
        entries.push_back(each);
    }
    ENTRYLIST all = {static_cast<ULONG>(entries.size()), entries.data()};
    if (!entries.empty())
    {
        ThrowIfFailed(target->CopyEntries(&all, 0, nullptr, 0), target);
    }
}

std::vector<Refusal> AddressWriter::Write(AddressLine& line, NameResolver& names)
{
    const CComPtr<IABContainer> directory = Query<IABContainer>(m_directory, IID_IABContainer);
    const CZebBinary model = m_directory.GetBin(line.isList ? PR_DEF_CREATE_DL : PR_DEF_CREATE_MAILUSER);
    const SBinary& id = model;
    CComPtr<IMAPIProp> created;
    ThrowIfFailed(directory->CreateEntry(id.cb, reinterpret_cast<LPENTRYID>(id.lpb), 0, created.Put()), directory);
    CZebABItem entry(created.Get());
    const std::vector<Refusal> refused = WriteProperties(entry, line.properties, names);
    if (!refused.empty())
    {
        return refused;
    }
    entry.SaveChanges(KEEP_OPEN_READWRITE);
    try
    {
        if (line.isList)
        {
            AddMembers(entry, Resolve(line.members)); // a member may be the list itself
        }
    }
    catch (...)
    {
        const ToolError failure = CurrentError();
        const CZebBinary made = entry.GetEntryID();
        SBinary one = made;
        ENTRYLIST entries = {1, &one};
        directory->DeleteEntries(&entries, 0);
        throw failure;
    }
    return {};
}

} // namespace zeb::tools
