// Address lists of mail headers.
#pragma once

#include <string>
#include <vector>

namespace zeb::tools
{

struct MailAddress
{
    std::string name;    ///< what is shown: the name, else the address
    std::string address; ///< empty when the header gives only a name
};

/// The addresses of a header's value, with those in groups. An entry that is no address is kept as a name.
std::vector<MailAddress> ParseAddresses(const std::string& value);

} // namespace zeb::tools
