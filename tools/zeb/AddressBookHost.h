// The address book of a profile, or the Windows Address Book, for the commands that use it.
#pragma once

#include "tools/common/HostSession.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The listed columns of a container or an entry. Texts are UTF-8.
struct AddressRow
{
    std::string name, addressType, address, entryId;
    LONG objectType = 0;  ///< MAPI_ABCONT, MAPI_MAILUSER, MAPI_DISTLIST; 0 when the provider does not set it
    LONG displayType = 0; ///< DT_...
};

/// The address book, open for the lifetime of the object. All objects opened from it must be released before it is
/// destroyed.
class AddressBookHost
{
public:
    /// @param wab the Windows Address Book, by the library that the registry names, instead of a profile's address book
    /// @throws ToolError
    AddressBookHost(const std::string& profile, bool wab);
    ~AddressBookHost();
    AddressBookHost(const AddressBookHost&) = delete;
    AddressBookHost& operator=(const AddressBookHost&) = delete;

    CZebAddressBook& Book() { return m_book; }
    std::string DefaultDirectory() { return static_cast<const char*>(m_book.GetDefaultDirEntryID().String()); }

    /// The containers of the address book, at any depth.
    std::vector<AddressRow> Containers();
    /// A container by its name (in any letter case) or its identifier in hexadecimal text.
    /// @throws ToolError when there is none
    AddressRow FindContainer(const std::string& nameOrId);
    CZebABContainer OpenContainer(const std::string& entryId);

    /// The identifier of an entry: hexadecimal text is decoded; otherwise the only entry of the containers with this
    /// name or address, or else the only entry whose name begins with it.
    /// @throws ToolError when there is none, or several
    std::string FindEntry(const std::string& nameOrId);

    /// Reads a table's rows from the first one, in batches, until `visit` returns false.
    void ReadRows(CZebTable& table, const std::function<bool(const AddressRow&)>& visit) const;

private:
    std::vector<AddressRow> Matching(const std::string& name);

    const bool m_wab;
    std::unique_ptr<HostSession> m_session;
    CZebAddressBook m_book;
};

/// True when the text consists of hexadecimal digits, two for each byte, and is long enough for an entry identifier.
bool IsEntryId(const std::string& text);

} // namespace zeb::tools
