// zeb ab list, zeb ab show, zeb ab compare
#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/Property.h"
#include "tools/zeb/AddressBookHost.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>
#include <set>

namespace zeb::tools
{
namespace
{

using Json = nlohmann::ordered_json;

constexpr size_t NameWidth = 32, KindWidth = 10, PropertyWidth = 30;

struct Options
{
    std::string profile;
    bool wab = false;
    bool json = false;
    bool expand = false;
    std::string subject; ///< the container, or the entry
    std::string other;   ///< the entry to compare with
    ULONG limit = 0;
};

const char* KindOf(LONG objectType)
{
    switch (objectType)
    {
    case MAPI_ABCONT:
        return "container";
    case MAPI_MAILUSER:
        return "user";
    case MAPI_DISTLIST:
        return "list";
    default:
        return "unknown";
    }
}

std::string Dumped(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

Json JsonOf(const AddressRow& row)
{
    Json object;
    object["name"] = row.name;
    object["kind"] = KindOf(row.objectType);
    object["addressType"] = row.addressType;
    object["address"] = row.address;
    object["entryId"] = row.entryId;
    return object;
}

std::string Line(const std::string& name, const std::string& kind, const std::string& rest)
{
    std::string line = Fitted(OneLine(name), NameWidth) + "  " + Fitted(kind, KindWidth) + "  " + OneLine(rest);
    line.erase(line.find_last_not_of(' ') + 1);
    return Shortened(line, static_cast<size_t>(platform::TerminalColumns(platform::OutputStream::Output))) + "\n";
}

std::string AddressText(const AddressRow& row)
{
    const bool smtp = row.addressType == "SMTP" || row.addressType.empty();
    return smtp ? row.address : row.addressType + ":" + row.address;
}

void PrintEntry(const AddressRow& row)
{
    Print(Line(row.name, KindOf(row.objectType), AddressText(row)));
}

std::string Counted(unsigned long long count, const char* one, const char* many)
{
    return Grouped(count) + " " + (count == 1 ? one : many);
}

int ListContainers(AddressBookHost& host, bool json)
{
    const std::vector<AddressRow> containers = host.Containers();
    const std::string standard = host.DefaultDirectory();
    Json list = Json::array();
    for (const AddressRow& each : containers)
    {
        CZebABContainer container = host.OpenContainer(each.entryId);
        const ULONG entries = container.GetContentsTable(MAPI_UNICODE).GetRowCount();
        Json object;
        object["name"] = each.name;
        object["entries"] = entries;
        object["default"] = each.entryId == standard;
        object["exchange"] = container.IsExchange();
        object["entryId"] = each.entryId;
        list.push_back(object);
        if (!json)
        {
            Print((each.entryId == standard ? "* " : "  ") + OneLine(each.name) + "  " +
                  Counted(entries, "entry", "entries") + "\n");
        }
    }
    if (json)
    {
        Print(Dumped(Json{{"containers", list}}, 2) + "\n");
    }
    return ExitDone;
}

int ListEntries(AddressBookHost& host, const Options& options)
{
    const AddressRow name = host.FindContainer(options.subject);
    CZebABContainer container = host.OpenContainer(name.entryId);
    CZebTable table = container.GetContentsTable(MAPI_UNICODE);
    CZebSortOrder order(PR_DISPLAY_NAME_W, TABLE_SORT_ASCEND);
    table.SortTable(order);
    const ULONG total = table.GetRowCount();
    const ULONG wanted = options.limit == 0 ? total : std::min(options.limit, total);
    ULONG shown = 0;
    if (options.json)
    {
        Print("{\n  \"container\": " + Dumped(container.IsValid() ? Utf8(container.GetDisplayNameW()) : "", -1) +
              ",\n  \"total\": " + std::to_string(total) + ",\n  \"entries\": [");
    }
    else if (total > 0)
    {
        Print(Line("name", "kind", "address"));
    }
    if (wanted > 0)
    {
        host.ReadRows(table, [&](const AddressRow& row)
        {
            if (options.json)
            {
                Print((shown ? ",\n    " : "\n    ") + Dumped(JsonOf(row), -1));
            }
            else
            {
                PrintEntry(row);
            }
            return ++shown < wanted;
        });
    }
    if (options.json)
    {
        Print(shown ? "\n  ]\n}\n" : "]\n}\n");
    }
    else if (shown == total)
    {
        Print(Counted(total, "entry", "entries") + "\n");
    }
    else
    {
        Print(Grouped(shown) + " of " + Grouped(total) + " entries\n");
    }
    return ExitDone;
}

std::string PropertyName(ULONG tag)
{
    Property property;
    property.tag = tag;
    return PropertyText(property);
}

/// The members of a list. @param seen identifiers of the lists already visited; null: direct members only
void GatherMembers(AddressBookHost& host, CZebDistList& list, std::set<std::string>* seen,
                   std::vector<AddressRow>& members)
{
    CZebTable table = list.GetContentsTable(MAPI_UNICODE);
    std::vector<AddressRow> direct;
    host.ReadRows(table, [&](const AddressRow& row)
    {
        direct.push_back(row);
        return true;
    });
    for (const AddressRow& each : direct)
    {
        // A list may be a member of itself, directly or through another list.
        if (seen && !seen->insert(each.entryId).second)
        {
            continue;
        }
        if (!seen || each.objectType != MAPI_DISTLIST)
        {
            members.push_back(each);
            continue;
        }
        CZebDistList inner;
        host.Book().OpenEntry(CZebBinary(each.entryId.c_str()), inner, MAPI_BEST_ACCESS);
        GatherMembers(host, inner, seen, members);
    }
}

std::vector<AddressRow> MembersOf(AddressBookHost& host, const std::string& entryId, bool expand)
{
    CZebDistList list;
    host.Book().OpenEntry(CZebBinary(entryId.c_str()), list, MAPI_BEST_ACCESS);
    std::set<std::string> seen = {static_cast<const char*>(CZebBinary(entryId.c_str()).String())};
    std::vector<AddressRow> members;
    GatherMembers(host, list, expand ? &seen : nullptr, members);
    return members;
}

int Show(AddressBookHost& host, const Options& options)
{
    const std::string entryId = host.FindEntry(options.subject);
    CZebABItem entry;
    host.Book().OpenEntry(CZebBinary(entryId.c_str()), entry, MAPI_BEST_ACCESS);
    const LONG type = static_cast<LONG>(entry.GetObjectType());
    CZebPropValArray values;
    ULONG* const count = values.CountPtr();
    entry.GetAllProps(count, &values, MAPI_UNICODE);
    Json properties = Json::object();
    const std::string name = Utf8(entry.GetDisplayNameW());
    if (!options.json)
    {
        Print(OneLine(name) + "\n" + KindOf(type) + "\n");
    }
    for (ULONG i = 0; i < values.GetCount(); ++i)
    {
        const CZebOnePropVal value = values.GetAt(i);
        if (!value.StringConversionPossible())
        {
            continue;
        }
        const std::string text = Utf8(value.StringW(true));
        properties[PropertyName(value.GetTag())] = text;
        if (!options.json)
        {
            Print("  " + Fitted(PropertyName(value.GetTag()), PropertyWidth) + "  " + OneLine(text) + "\n");
        }
    }
    std::vector<AddressRow> members;
    if (type == MAPI_DISTLIST)
    {
        members = MembersOf(host, entryId, options.expand);
    }
    Json list = Json::array();
    for (const AddressRow& each : members)
    {
        list.push_back(JsonOf(each));
    }
    if (options.json)
    {
        Json object = {{"name", name}, {"kind", KindOf(type)}, {"entryId", entryId}, {"properties", properties}};
        if (type == MAPI_DISTLIST)
        {
            object["members"] = list;
        }
        Print(Dumped(object, 2) + "\n");
        return ExitDone;
    }
    if (type != MAPI_DISTLIST)
    {
        return ExitDone;
    }
    Print(Counted(members.size(), "member", "members") + "\n");
    for (const AddressRow& each : members)
    {
        Print("  " + Line(each.name, KindOf(each.objectType), AddressText(each)));
    }
    return ExitDone;
}

void RequireEntryId(const std::string& text)
{
    if (IsEntryId(text))
    {
        return;
    }
    EntryIdFromText(text);
    throw UsageError("the entry identifier '" + text + "' is too short: the shortest has 20 bytes, 40 digits");
}

int Compare(AddressBookHost& host, const Options& options)
{
    for (const std::string& each : {options.subject, options.other})
    {
        RequireEntryId(each);
    }
    const bool same = host.Book().CompareEntryIDs(options.subject.c_str(), options.other.c_str());
    if (options.json)
    {
        Print(Dumped(Json{{"same", same}}, 2) + "\n");
    }
    else
    {
        Print(same ? "same\n" : "different\n");
    }
    return ExitDone;
}

int List(AddressBookHost& host, const Options& options)
{
    return options.subject.empty() ? ListContainers(host, options.json) : ListEntries(host, options);
}

using Body = int (*)(AddressBookHost&, const Options&);

CLI::App* AddCommand(CLI::App& group, const char* name, const char* help, Body body,
                     const std::shared_ptr<Options>& options, Action& action)
{
    CLI::App* command = group.add_subcommand(name, help);
    AddProfileOption(*command, options->profile);
    command->add_flag("--wab", options->wab, "Read the Windows Address Book instead of a profile's");
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, body, &action]
    {
        action = [options, body]
        {
            AddressBookHost host(options->profile, options->wab);
            return body(host, *options);
        };
    });
    return command;
}

} // namespace

void AddAddressBook(CLI::App& app, Action& action)
{
    CLI::App* group = app.add_subcommand("ab", "Shows the address book");
    group->require_subcommand(1);
    auto options = std::make_shared<Options>();

    CLI::App* list = AddCommand(*group, "list", "Lists the containers, or the entries of one sorted by name", &List,
                                options, action);
    list->add_option("container", options->subject,
                     "The container's name, or its entry identifier in hexadecimal digits")
        ->type_name("CONTAINER");
    AddCountOption(*list, "--limit", options->limit, "List only the first N entries");

    CLI::App* show = AddCommand(*group, "show", "Shows an entry with its properties, and the members of a list", &Show,
                                options, action);
    show->add_option("entry", options->subject, "The entry's name, address, or entry identifier in hexadecimal digits")
        ->required()
        ->type_name("ENTRY");
    show->add_flag("--expand", options->expand, "Show the members of lists inside the list, each once");

    CLI::App* compare = AddCommand(*group, "compare", "Compares two entry identifiers: do they name the same entry",
                                   &Compare, options, action);
    compare->add_option("first", options->subject, "The first entry identifier in hexadecimal digits")
        ->required()
        ->type_name("A");
    compare->add_option("second", options->other, "The second entry identifier")->required()->type_name("B");
}

} // namespace zeb::tools
