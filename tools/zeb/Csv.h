// Rows of comma-separated values.
#pragma once

#include <string>
#include <vector>

namespace zeb::tools
{

/// One row with its line end. Cells with a comma, a quotation mark, a line break or blanks at an end are quoted.
std::string CsvRow(const std::vector<std::string>& cells);

} // namespace zeb::tools
