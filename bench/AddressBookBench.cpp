// ab-open: opening a large address book.
#include "bench/Benches.h"
#include "bench/Stores.h"

#include <stdexcept>
#include <string>

namespace bench
{

namespace
{

constexpr LONG FirstRows = 50;

/// A session on a store whose global address list has `count` users. Created through the provider and kept as
/// FOLDER/addresses-COUNT.zeb.
class AddressBookOf
{
public:
    AddressBookOf(const std::string& folder, ULONG count)
        : m_count(count)
        , m_session(nullptr)
    {
        const std::string name = "addresses-" + std::to_string(count);
        MakeProfile(name, folder + "/" + name + ".zeb");
        m_session = Zeb_GetMAPI().OpenSession(nullptr, name.c_str());
        CZebAddressBook book = m_session.OpenAddressBook(nullptr, AB_NO_DIALOG);
        CZebContainer directory = book.OpenMainContainer(nullptr);
        for (ULONG number = directory.GetContentsTable(0).GetRowCount(); number < count; ++number)
        {
            Add(directory, number);
        }
    }
    ~AddressBookOf() { m_session.Logoff(0, 0, 0); }
    AddressBookOf(const AddressBookOf&) = delete;
    AddressBookOf& operator=(const AddressBookOf&) = delete;

    ULONG Count() const { return m_count; }
    CZebSession& Session() { return m_session; }

private:
    static void Add(CZebContainer& directory, ULONG number)
    {
        const CComPtr<IMAPIProp> held = directory.GetInterface();
        CComPtr<IABContainer> container;
        held->QueryInterface(IID_IABContainer, reinterpret_cast<void**>(container.Put()));
        const CZebBinary model = directory.GetBin(PR_DEF_CREATE_MAILUSER);
        const SBinary& id = model;
        CComPtr<IMAPIProp> created;
        if (FAILED(container->CreateEntry(id.cb, reinterpret_cast<LPENTRYID>(id.lpb), 0, created.Put())))
        {
            throw std::runtime_error("A user could not be created.");
        }
        CStringA name, address;
        name.Format("User %08x", number * 2654435761u);
        address.Format("user%u@example.org", number);
        CZebPropValArray values(2);
        values[PR_DISPLAY_NAME_A] = name;
        values[PR_EMAIL_ADDRESS_A] = address;
        CZebPropObj(created.Get()).SetProps(values, true, nullptr);
    }

    ULONG m_count;
    CZebSession m_session;
};

/// Opens the address book and its default directory, counts, reads the first rows by name.
double OpenOnce(AddressBookOf& addresses)
{
    return Seconds([&]
    {
        CZebAddressBook book = addresses.Session().OpenAddressBook(nullptr, AB_NO_DIALOG);
        CZebTable table = book.OpenMainContainer(nullptr).GetContentsTable(MAPI_UNICODE);
        table.SetColumns(4, PR_ENTRYID, PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_OBJECT_TYPE);
        if (table.GetRowCount() != addresses.Count())
        {
            throw std::runtime_error("The address book did not count every entry.");
        }
        CZebRowSet rows;
        table.QueryRows(&rows, FirstRows, nullptr, nullptr);
        if (rows.Count() != static_cast<ULONG>(FirstRows))
        {
            throw std::runtime_error("The address book did not give its first rows.");
        }
        Keep(rows[0][PR_DISPLAY_NAME_W].GetTag());
    });
}

} // namespace

Measurement AddressBookOpen(const Options& options)
{
    auto large = std::make_shared<AddressBookOf>(options.folder, options.brief ? 2000 : 100000);
    auto few = std::make_shared<AddressBookOf>(options.folder, 100);
    return {"ab-open", 5, [large] { return OpenOnce(*large); }, [few] { return OpenOnce(*few); },
            options.brief ? 5 : 51};
}

} // namespace bench
