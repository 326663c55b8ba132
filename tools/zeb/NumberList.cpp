#include "tools/zeb/NumberList.h"

#include <algorithm>

namespace zeb::tools
{
namespace
{

constexpr size_t MostDigits = 10;

/// Reads digits at `at`, which is advanced past them. @return none when there are none or too many
std::optional<uint64_t> ReadDigits(const std::string& text, size_t& at)
{
    const size_t end = std::min(text.find_first_not_of("0123456789", at), text.size());
    const std::string digits = text.substr(at, end - at);
    at = end;
    return digits.empty() || digits.size() > MostDigits ? std::nullopt : std::optional<uint64_t>(std::stoull(digits));
}

/// Reads "7", "1-3" or "12-" at `at`, which is advanced past it.
std::optional<NumberRange> ReadRange(const std::string& text, size_t& at)
{
    const std::optional<uint64_t> first = ReadDigits(text, at);
    if (!first)
    {
        return std::nullopt;
    }
    if (at == text.size() || text[at] != '-')
    {
        return NumberRange{*first, *first};
    }
    ++at;
    if (at == text.size() || text[at] == ',')
    {
        return NumberRange{*first, std::nullopt};
    }
    const std::optional<uint64_t> last = ReadDigits(text, at);
    return last ? std::optional(NumberRange{*first, *last}) : std::nullopt;
}

} // namespace

std::vector<NumberRange> ParseNumberList(const std::string& text)
{
    std::vector<NumberRange> ranges;
    for (size_t at = 0;;)
    {
        const std::optional<NumberRange> range = ReadRange(text, at);
        if (!range || (at < text.size() && text[at] != ','))
        {
            return {};
        }
        ranges.push_back(*range);
        if (at == text.size())
        {
            return ranges;
        }
        ++at;
    }
}

} // namespace zeb::tools
