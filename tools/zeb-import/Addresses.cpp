#include "tools/zeb-import/Addresses.h"

#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/Mime.h"

namespace zeb::tools
{
namespace
{

/// Splits a list at its commas, except at those in quotes, comments, angle brackets and groups.
std::vector<std::string> Entries(const std::string& list)
{
    std::vector<std::string> entries(1);
    bool quoted = false, inGroup = false;
    int depth = 0;
    for (size_t i = 0; i < list.size(); ++i)
    {
        const char character = list[i];
        if (character == '\\' && i + 1 < list.size())
        {
            entries.back() += list[i++];
        }
        else if (character == '"')
        {
            quoted = !quoted;
        }
        else if (!quoted && (character == '(' || character == '<'))
        {
            ++depth;
        }
        else if (!quoted && depth > 0 && (character == ')' || character == '>'))
        {
            --depth;
        }
        else if (!quoted && depth == 0 && (character == ':' || character == ';'))
        {
            inGroup = character == ':';
        }
        else if (!quoted && depth == 0 && !inGroup && character == ',')
        {
            entries.emplace_back();
            continue;
        }
        entries.back() += list[i];
    }
    return entries;
}

void Append(std::vector<MailAddress>& to, InternetAddressList* list)
{
    for (int i = 0, count = list != nullptr ? internet_address_list_length(list) : 0; i < count; ++i)
    {
        InternetAddress* entry = internet_address_list_get_address(list, i);
        if (INTERNET_ADDRESS_IS_GROUP(entry))
        {
            Append(to, internet_address_group_get_members(INTERNET_ADDRESS_GROUP(entry)));
            continue;
        }
        const char* name = internet_address_get_name(entry);
        const char* address = internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(entry));
        to.push_back({name != nullptr && *name != '\0' ? name : address, address});
    }
}

/// A group is not an address, even without members, as in "undisclosed-recipients:;".
bool IsGroup(const std::string& entry)
{
    return !entry.empty() && entry.find(':') != std::string::npos;
}

} // namespace

std::vector<MailAddress> ParseAddresses(const std::string& value)
{
    std::vector<MailAddress> addresses;
    for (const std::string& text : Entries(value))
    {
        const std::string entry = Trimmed(text);
        if (entry.empty() || entry == ";")
        {
            continue;
        }
        const GRef<InternetAddressList> list(internet_address_list_parse(nullptr, entry.c_str()));
        if (list && internet_address_list_length(list.get()) > 0)
        {
            Append(addresses, list.get());
        }
        else if (!IsGroup(entry))
        {
            addresses.push_back(
                {GText(g_mime_utils_header_decode_phrase(nullptr, entry.c_str())).get(), std::string()});
        }
    }
    return addresses;
}

} // namespace zeb::tools
