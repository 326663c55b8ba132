#include "tools/zeb/Lister.h"

#include "tools/common/Output.h"

namespace zeb::tools
{
namespace
{

constexpr int Indent = 2;

/// The members of an object, one a line, without the braces.
std::string Members(const Json& object)
{
    const std::string text = JsonText(object, Indent);
    return object.empty() ? std::string() : text.substr(1, text.size() - 3);
}

} // namespace

std::string JsonText(const Json& value, int indent)
{
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

Json TextOrNull(const std::string& text)
{
    return text.empty() ? Json(nullptr) : Json(text);
}

void Lister::PrintObject(const Json& object)
{
    Print(JsonText(object, Indent) + "\n");
}

void Lister::PrintLine(const Json& object)
{
    Print(JsonText(object) + "\n");
}

void Lister::AddRow(const Json& row)
{
    if (m_rowByRow)
    {
        Print((m_count == 0 ? "\n    " : ",\n    ") + JsonText(row));
    }
    else
    {
        m_rows.push_back(row);
    }
}

void Lister::PrintHead(const Json& head, const char* name)
{
    Print("{" + Members(head) + (head.empty() ? "\n  " : ",\n  ") + JsonText(name) + ": [");
}

void Lister::End(const Json& tail)
{
    if (!m_isJson)
    {
        return;
    }
    if (!m_rowByRow)
    {
        PrintObject(m_rows);
        return;
    }
    Print((m_count == 0 ? "]" : "\n  ]") + (tail.empty() ? std::string() : "," + Members(tail)) + "\n}\n");
}

} // namespace zeb::tools
