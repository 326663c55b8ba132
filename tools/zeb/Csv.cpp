#include "tools/zeb/Csv.h"

namespace zeb::tools
{
namespace
{

std::string Cell(const std::string& text)
{
    const bool endsBlank = !text.empty() && (text.front() == ' ' || text.back() == ' ');
    if (!endsBlank && text.find_first_of(",\"\r\n") == std::string::npos)
    {
        return text;
    }
    std::string quoted = "\"";
    for (const char each : text)
    {
        quoted += each == '"' ? "\"\"" : std::string(1, each);
    }
    return quoted + "\"";
}

} // namespace

std::string CsvRow(const std::vector<std::string>& cells)
{
    std::string row;
    for (size_t i = 0; i < cells.size(); ++i)
    {
        row += (i == 0 ? "" : ",") + Cell(cells[i]);
    }
    return row + "\n";
}

} // namespace zeb::tools
