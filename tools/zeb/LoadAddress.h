// Address book entries from a .jsonl file.
#pragma once

#include "tools/common/HostSession.h"
#include "tools/common/PropertyWriter.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// A line with an entry of the address book.
struct AddressLine
{
    bool isList = false;
    Properties properties;
    std::vector<std::string> members; ///< members of a list: names or addresses, UTF-8
};

/// Adds entries to the default directory of a session's address book.
class AddressWriter
{
public:
    explicit AddressWriter(CZebSession& session);

    /// Adds the complete entry; an exception adds nothing. @return the properties that the provider refused; in that
    /// case nothing is added @throws CZebException*, ToolError naming the unknown member
    std::vector<Refusal> Write(AddressLine& line, NameResolver& names);

private:
    std::vector<CZebBinary> Resolve(const std::vector<std::string>& members);
    void AddMembers(CZebIProp& list, const std::vector<CZebBinary>& members);

    CZebAddressBook m_book;
    CZebContainer m_directory;
};

} // namespace zeb::tools
