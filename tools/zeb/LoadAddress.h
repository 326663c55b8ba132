// Address book entries out of a .jsonl file.
#pragma once

#include "tools/common/HostSession.h"
#include "tools/common/PropertyWriter.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// A line that is an entry of the address book.
struct AddressLine
{
    bool isList = false;
    Properties properties;
    std::vector<std::string> members; ///< of a list: names or addresses, UTF-8
};

/// Adds entries to the default directory of a session's address book.
class AddressWriter
{
public:
    explicit AddressWriter(CZebSession& session);

    /// Adds the entry whole or, with an exception, not at all.
    /// @return the properties that the provider refused; nothing is added then
    /// @throws CZebException*, ToolError naming the member that is not known
    std::vector<Refusal> Write(AddressLine& line, NameResolver& names);

private:
    std::vector<CZebBinary> Resolve(const std::vector<std::string>& members);
    void AddMembers(IMAPIProp* list, const std::vector<CZebBinary>& members);

    CZebAddressBook m_book;
    CZebContainer m_directory;
};

} // namespace zeb::tools
