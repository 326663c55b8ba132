// zeb name, value, eid
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyNames.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <memory>

namespace zeb::tools
{
namespace
{

constexpr const char* Tables[] = {"MAPIErrors",  "CMCErrors",   "PropTags",   "PropIDs",      "PropType",
                                  "FolderType",  "TableStatus", "TableType",  "SortOrder",    "RestrictionType",
                                  "RelOp",       "Bmr",         "FuzzyLevel", "MAPIObjTypes", "NotifEvents",
                                  "TableEvents", "MsgFlags",    "RecipType",  "EIDFlags",     "ResourceType",
                                  "Priority",    "AttachMethod"};

struct NameOptions
{
    std::string table;
    std::string value;
    std::string name;
    std::string hex;
    bool json = false;
};

std::string Hex(ULONG value)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(value));
    return text;
}

void RequireTable(const std::string& table)
{
    if (Zeb_TableCount(table.c_str()) > 0)
    {
        return;
    }
    std::string known;
    for (const char* each : Tables)
    {
        known += (known.empty() ? "" : ", ") + std::string(each);
    }
    throw UsageError("there is no table '" + Shortened(OneLine(ValidUtf8(table)), 40) + "'; the tables are: " + known);
}

/// A number of 32 bits, signed or not, decimal or "0x".
ULONG ParseValue(const std::string& text)
{
    const bool isHex = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    const bool isNegative = !isHex && text.compare(0, 1, "-") == 0;
    const std::string digits = text.substr(isHex ? 2 : isNegative ? 1 : 0);
    const char* allowed = isHex ? "0123456789abcdefABCDEF" : "0123456789";
    if (!digits.empty() && digits.size() <= 10 && digits.find_first_not_of(allowed) == std::string::npos)
    {
        const unsigned long long number = std::stoull(digits, nullptr, isHex ? 16 : 10);
        if (number <= (isNegative ? 0x80000000ull : 0xFFFFFFFFull))
        {
            return static_cast<ULONG>(isNegative ? 0 - number : number);
        }
    }
    throw UsageError("'" + Shortened(OneLine(ValidUtf8(text)), 40) +
                     "' is not a 32-bit number such as 26, -5 or 0x0037001E");
}

int ListTables(const NameOptions& options)
{
    Lister lister(options.json);
    for (const char* table : Tables)
    {
        const ULONG rows = Zeb_TableCount(table);
        lister.Row([&] { return Json{{"table", table}, {"rows", rows}}; },
                   [&] { Print(Fitted(table, 16) + "  " + std::to_string(rows) + "\n"); });
    }
    lister.EndAs("tables");
    return ExitDone;
}

int ListTable(const NameOptions& options)
{
    Lister lister(options.json);
    char name[64];
    for (ULONG i = 0; i < Zeb_TableCount(options.table.c_str()); ++i)
    {
        const ULONG value = Zeb_ValueAt(options.table.c_str(), i);
        Zeb_NameAt(options.table.c_str(), i, name);
        lister.Row([&] { return Json{{"name", name}, {"value", value}}; },
                   [&] { Print(Hex(value) + "  " + name + "\n"); });
    }
    lister.EndAs("rows");
    return ExitDone;
}

struct FoundName
{
    std::string table, name;
};

/// The names of a property tag whose form differs in the tables: text has its narrow form there.
void AddTagNames(ULONG value, std::vector<FoundName>& found)
{
    const char* type = Zeb_NameFromValue("PropType", PROP_TYPE(value), nullptr);
    if (PROP_ID(value) == 0 || type == nullptr)
    {
        return;
    }
    const ULONG narrow = PROP_TAG(PROP_TYPE(value) == PT_UNICODE      ? PT_STRING8
                                  : PROP_TYPE(value) == PT_MV_UNICODE ? PT_MV_STRING8
                                                                      : PT_NULL,
                                  PROP_ID(value));
    if (const char* name = Zeb_NameFromValue("PropTags", narrow, nullptr))
    {
        found.push_back({"PropTags", name + std::string("_W")});
    }
    const char* inTable = Zeb_NameFromValue("PropIDs", PROP_ID(value), nullptr);
    if (const char* name = NameOfProperty(PROP_ID(value)))
    {
        found.push_back({inTable != nullptr ? "PropIDs" : "headers", name});
    }
    if (!found.empty())
    {
        found.push_back({"PropType", type});
    }
}

/// The names of a number in all tables.
int ShowNames(const NameOptions& options, ULONG value)
{
    std::vector<FoundName> found;
    for (const char* table : Tables)
    {
        if (const char* name = Zeb_NameFromValue(table, value, nullptr))
        {
            found.push_back({table, name});
        }
    }
    AddTagNames(value, found);
    if (found.empty())
    {
        throw ToolError("no table has a name for " + Hex(value));
    }
    Lister lister(options.json);
    for (const FoundName& each : found)
    {
        lister.Row([&] { return Json{{"table", each.table}, {"name", each.name}}; },
                   [&] { Print(Fitted(each.table, 16) + "  " + each.name + "\n"); });
    }
    lister.EndAs("names");
    return ExitDone;
}

bool LooksLikeNumber(const std::string& text)
{
    return text.find_first_of("0123456789") == (text.compare(0, 1, "-") == 0 ? 1u : 0u);
}

int ShowName(const NameOptions& options)
{
    if (options.table.empty())
    {
        return ListTables(options);
    }
    if (options.value.empty() && LooksLikeNumber(options.table))
    {
        return ShowNames(options, ParseValue(options.table));
    }
    RequireTable(options.table);
    if (options.value.empty())
    {
        return ListTable(options);
    }
    const ULONG value = ParseValue(options.value);
    const char* name = Zeb_NameFromValue(options.table.c_str(), value, nullptr);
    if (name == nullptr)
    {
        throw ToolError("table '" + options.table + "' has no name for " + Hex(value));
    }
    Lister(options.json)
        .Object([&] { return Json{{"name", name}, {"value", value}}; }, [&] { Print(std::string(name) + "\n"); });
    return ExitDone;
}

int ShowValue(const NameOptions& options)
{
    RequireTable(options.table);
    ULONG value = 0;
    if (!Zeb_ValueFromName(options.table.c_str(), options.name.c_str(), &value))
    {
        throw ToolError("table '" + options.table + "' has no '" + Shortened(OneLine(ValidUtf8(options.name)), 60) +
                        "'");
    }
    Lister(options.json)
        .Object([&] { return Json{{"name", options.name}, {"value", value}}; }, [&] { Print(Hex(value) + "\n"); });
    return ExitDone;
}

/// The argument, or, for "-", the text of standard input.
std::string HexArgument(const std::string& argument)
{
    if (argument != "-")
    {
        return argument;
    }
    std::string text{std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isSpace(text.back()))
    {
        text.pop_back();
    }
    text.erase(0, std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    return text;
}

int ShowEntryId(const NameOptions& options)
{
    const std::string hex = HexArgument(options.hex);
    // The library decodes into memory of the provider; no profile is needed.
    HostMapi mapi;
    EntryIdFromText(hex);
    const std::string dump = Utf8FromNarrow(static_cast<const char*>(Zeb_DumpEntryID(hex.c_str())));
    for (size_t at = 0; at < dump.size();)
    {
        const size_t end = std::min(dump.find("\r\n", at), dump.size());
        Print(OneLine(dump.substr(at, end - at)) + "\n");
        at = end + 2;
    }
    return ExitDone;
}

} // namespace

void AddNames(Command app)
{
    auto options = std::make_shared<NameOptions>();
    Command name = app.AddCommand("name", "Shows the name of a MAPI constant");
    name.AddOption("table", options->table,
                   "The table, such as PropTags; without it the tables are listed. Or a value, to search "
                   "all tables")
        .Type("TABLE");
    name.AddOption("value", options->value,
                   "The value, decimal or 0x hexadecimal; without it the whole table is listed")
        .Type("VALUE");
    name.AddFlag("--json", options->json, "Print JSON");
    name.Runs([options] { return ShowName(*options); });

    Command value = app.AddCommand("value", "Shows the value of a MAPI constant");
    value.AddOption("table", options->table, "The table; 'zeb name' lists them").Required().Type("TABLE");
    value.AddOption("name", options->name, "The constant's name, in its letter case").Required().Type("NAME");
    value.AddFlag("--json", options->json, "Print JSON");
    value.Runs([options] { return ShowValue(*options); });

    Command eid = app.AddCommand("eid", "Decodes an entry identifier");
    eid.AddOption("hex", options->hex, "The identifier in hexadecimal text; - reads it from standard input")
        .Required()
        .Type("HEX");
    eid.Runs([options] { return ShowEntryId(*options); });
}

} // namespace zeb::tools
