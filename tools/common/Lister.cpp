#include "tools/common/Lister.h"

#include "tools/common/Output.h"

#include <cstdio>

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

Json Versioned(const Json& object)
{
    Json versioned = {{"version", JsonVersion}};
    versioned.update(object);
    return versioned;
}

std::string JsonText(const Json& value, int indent)
{
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

Json TextOrNull(const std::string& text)
{
    return text.empty() ? Json(nullptr) : Json(text);
}

void ReportFailure(const char* tool, const ToolFailure& failure, bool json)
{
    if (!json)
    {
        return ComplainOf(tool, failure);
    }
    const char* name = failure.result != 0 ? NameOfResult(failure.result) : nullptr;
    const Json error = {{"message", failure.text},
                        {"exitCode", failure.exitCode},
                        {"result", TextOrNull(failure.result != 0 ? TextOfResult(failure.result) : "")},
                        {"name", TextOrNull(name != nullptr ? name : "")}};
    std::fprintf(stderr, "%s\n", JsonText(Versioned({{"error", error}})).c_str());
}

void Lister::PrintObject(const Json& object)
{
    Print(JsonText(Versioned(object), Indent) + "\n");
}

void Lister::PrintLine(const Json& object)
{
    Print(JsonText(Versioned(object)) + "\n");
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
    Print("{" + Members(Versioned(head)) + ",\n  " + JsonText(name) + ": [");
}

void Lister::End(const Json& tail) const
{
    if (m_isJson)
    {
        Print((m_count == 0 ? "]" : "\n  ]") + (tail.empty() ? std::string() : "," + Members(tail)) + "\n}\n");
    }
}

void Lister::EndAs(const char* name) const
{
    if (m_isJson)
    {
        PrintObject(Json{{name, m_rows}});
    }
}

} // namespace zeb::tools
