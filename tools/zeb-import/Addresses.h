// Address lists of mail headers.
#pragma once

#include <string>
#include <vector>

namespace zeb::tools
{

struct MailAddress
{
    std::string name;    ///< the display name: the name, else the address
    std::string address; ///< empty when the header gives only a name
};

/// The addresses of a header's value, including those in groups. An entry that is not an address becomes a name.
std::vector<MailAddress> ParseAddresses(const std::string& value);

} // namespace zeb::tools
