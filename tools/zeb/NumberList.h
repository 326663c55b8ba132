// Numbers and ranges of a command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The numbers from `first` to `last`, both included.
struct NumberRange
{
    uint64_t first = 0;
    std::optional<uint64_t> last; ///< none: to the end
};

/// Reads "1-3,7,12-": numbers and ranges with commas between them.
/// @return empty when the text is not such a list, such as a date
std::vector<NumberRange> ParseNumberList(const std::string& text);

} // namespace zeb::tools
