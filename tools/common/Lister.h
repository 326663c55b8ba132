// Results of commands, as text or as JSON.
#pragma once

#include "tools/common/Failure.h"
#include "tools/common/Json.h"

#include <cstddef>
#include <string>

namespace zeb::tools
{

/// The version of what commands print with --json: the member "version" of each object that they print. It grows when a
/// member changes its meaning or goes away; new members do not change it.
constexpr int JsonVersion = 1;

/// The object with its version before its other members.
Json Versioned(const Json& object);

/// A value as JSON text; bytes that are not UTF-8 become U+FFFD.
/// @param indent blanks per level; -1: in one line
std::string JsonText(const Json& value, int indent = -1);

/// Null for an empty text.
Json TextOrNull(const std::string& text);

/// Prints a failure on standard error: as "tool: failure", or with --json as one line of JSON.
void ReportFailure(const char* tool, const ToolFailure& failure, bool json);

/// Prints the results of a command: as text for people, or, with --json, as JSON.
///
/// Each result has two forms: a function that returns its JSON, and one that prints its text. Only the function of the
/// chosen form is called. Lists are printed as one array by End, or row by row between Begin and End. Every function
/// throws std::runtime_error when standard output cannot be written.
class Lister
{
public:
    explicit Lister(bool json)
        : m_isJson(json)
    {
    }

    /// A single result; as JSON indented.
    template <class ToJson, class PrintText>
    void Object(ToJson toJson, PrintText printText) const
    {
        if (m_isJson)
        {
            PrintObject(toJson());
        }
        else
        {
            printText();
        }
    }

    /// A result of its own that is printed at once; as JSON in one line.
    template <class ToJson, class PrintText>
    void Line(ToJson toJson, PrintText printText) const
    {
        if (m_isJson)
        {
            PrintLine(toJson());
        }
        else
        {
            printText();
        }
    }

    /// One row of a list.
    template <class ToJson, class PrintText>
    void Row(ToJson toJson, PrintText printText)
    {
        if (m_isJson)
        {
            AddRow(toJson());
        }
        else
        {
            printText();
        }
        ++m_count;
    }

    /// A heading or a sum of a list, which only people read.
    template <class PrintText>
    void Text(PrintText printText) const
    {
        if (!m_isJson)
        {
            printText();
        }
    }

    /// Begins a list that is printed row by row: as JSON the member `name` of an object, with one row a line.
    /// @param toHead returns an object with the members before the list
    template <class ToJson>
    void Begin(ToJson toHead, const char* name)
    {
        m_rowByRow = true;
        if (m_isJson)
        {
            PrintHead(toHead(), name);
        }
    }

    /// Ends a list with Begin. @param tail the members of the object after the list
    void End(const Json& tail = Json::object()) const;

    /// Ends a list without Begin; as JSON it is printed here: an object with the member `name`.
    void EndAs(const char* name) const;

    /// The number of rows.
    size_t Count() const { return m_count; }

private:
    static void PrintObject(const Json& object);
    static void PrintLine(const Json& object);
    static void PrintHead(const Json& head, const char* name);
    void AddRow(const Json& row);

    const bool m_isJson;
    bool m_rowByRow = false;
    size_t m_count = 0;
    Json m_rows = Json::array(); ///< of a list without Begin
};

} // namespace zeb::tools
