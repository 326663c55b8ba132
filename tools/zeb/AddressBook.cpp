// zeb ab list, zeb ab show, zeb ab compare
#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Property.h"
#include "tools/zeb/AddressBookHost.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"

#include <algorithm>
#include <memory>
#include <set>

namespace zeb::tools
{
namespace
{

constexpr size_t NameWidth = 32, KindWidth = 10, PropertyWidth = 30;

struct AddressBookOptions
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

/// A container of the address book.
struct ListedContainer
{
    std::string name, entryId;
    ULONG entries = 0;
    bool isDefault = false, isExchange = false;
};

std::vector<ListedContainer> ReadContainers(AddressBookHost& host)
{
    const std::vector<AddressRow> rows = host.Containers();
    const std::string standard = host.DefaultDirectory();
    std::vector<ListedContainer> containers;
    for (const AddressRow& row : rows)
    {
        CZebABContainer container = host.OpenContainer(row.entryId);
        const ULONG entries = container.GetContentsTable(MAPI_UNICODE).GetRowCount();
        containers.push_back({row.name, row.entryId, entries, row.entryId == standard, container.IsExchange()});
    }
    return containers;
}

Json JsonOf(const std::vector<ListedContainer>& containers)
{
    Json list = Json::array();
    for (const ListedContainer& each : containers)
    {
        list.push_back({{"name", each.name},
                        {"entries", each.entries},
                        {"default", each.isDefault},
                        {"exchange", each.isExchange},
                        {"entryId", each.entryId}});
    }
    return Json{{"containers", list}};
}

int ListContainers(AddressBookHost& host, bool json)
{
    const std::vector<ListedContainer> containers = ReadContainers(host);
    Lister(json).Object([&] { return JsonOf(containers); }, [&]
    {
        for (const ListedContainer& each : containers)
        {
            Print((each.isDefault ? "* " : "  ") + OneLine(each.name) + "  " +
                  Counted(each.entries, "entry", "entries") + "\n");
        }
    });
    return ExitDone;
}

int ListEntries(AddressBookHost& host, const AddressBookOptions& options)
{
    const AddressRow name = host.FindContainer(options.subject);
    CZebABContainer container = host.OpenContainer(name.entryId);
    CZebTable table = container.GetContentsTable(MAPI_UNICODE);
    CZebSortOrder order(PR_DISPLAY_NAME_W, TABLE_SORT_ASCEND);
    table.SortTable(order);
    const ULONG total = table.GetRowCount();
    const ULONG wanted = options.limit == 0 ? total : std::min(options.limit, total);
    Lister lister(options.json);
    lister.Begin([&] { return Json{{"container", Utf8(container.GetDisplayNameW())}, {"total", total}}; }, "entries");
    lister.Text([&] { Print(total > 0 ? Line("name", "kind", "address") : ""); });
    if (wanted > 0)
    {
        host.ReadRows(table, [&](const AddressRow& row)
        {
            lister.Row([&] { return JsonOf(row); }, [&] { PrintEntry(row); });
            return lister.Count() < wanted;
        });
    }
    lister.End();
    lister.Text([&]
    {
        Print(lister.Count() == total ? Counted(total, "entry", "entries") + "\n"
                                      : Grouped(lister.Count()) + " of " + Grouped(total) + " entries\n");
    });
    return ExitDone;
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
        if (seen != nullptr && !seen->insert(each.entryId).second)
        {
            continue;
        }
        if (seen == nullptr || each.objectType != MAPI_DISTLIST)
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

/// What is shown of an entry.
struct ShownEntry
{
    std::string name, entryId;
    LONG type = 0;
    std::vector<std::pair<std::string, std::string>> properties; ///< names and values, in the provider's order
    std::vector<AddressRow> members;                             ///< of a list
};

ShownEntry ReadEntry(AddressBookHost& host, const std::string& entryId, bool expand)
{
    CZebABItem entry;
    host.Book().OpenEntry(CZebBinary(entryId.c_str()), entry, MAPI_BEST_ACCESS);
    ShownEntry shown;
    shown.entryId = entryId;
    shown.type = static_cast<LONG>(entry.GetObjectType());
    CZebPropValArray values;
    ULONG* const count = values.CountPtr();
    entry.GetAllProps(count, &values, MAPI_UNICODE);
    shown.name = Utf8(entry.GetDisplayNameW());
    for (ULONG i = 0; i < values.GetCount(); ++i)
    {
        const CZebOnePropVal value = values.GetAt(i);
        if (value.StringConversionPossible())
        {
            shown.properties.emplace_back(PropertyText(value.GetTag()), value.StringUtf8().GetString());
        }
    }
    if (shown.type == MAPI_DISTLIST)
    {
        shown.members = MembersOf(host, entryId, expand);
    }
    return shown;
}

Json JsonOf(const ShownEntry& entry)
{
    Json properties = Json::object();
    for (const auto& property : entry.properties)
    {
        properties[property.first] = property.second;
    }
    Json object = {
        {"name", entry.name}, {"kind", KindOf(entry.type)}, {"entryId", entry.entryId}, {"properties", properties}};
    if (entry.type == MAPI_DISTLIST)
    {
        object["members"] = Json::array();
        for (const AddressRow& each : entry.members)
        {
            object["members"].push_back(JsonOf(each));
        }
    }
    return object;
}

void PrintShown(const ShownEntry& entry)
{
    Print(OneLine(entry.name) + "\n" + KindOf(entry.type) + "\n");
    for (const auto& property : entry.properties)
    {
        Print("  " + Fitted(property.first, PropertyWidth) + "  " + OneLine(property.second) + "\n");
    }
    if (entry.type != MAPI_DISTLIST)
    {
        return;
    }
    Print(Counted(entry.members.size(), "member", "members") + "\n");
    for (const AddressRow& each : entry.members)
    {
        Print("  " + Line(each.name, KindOf(each.objectType), AddressText(each)));
    }
}

int Show(AddressBookHost& host, const AddressBookOptions& options)
{
    const ShownEntry entry = ReadEntry(host, host.FindEntry(options.subject), options.expand);
    Lister(options.json).Object([&] { return JsonOf(entry); }, [&] { PrintShown(entry); });
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

int Compare(AddressBookHost& host, const AddressBookOptions& options)
{
    for (const std::string& each : {options.subject, options.other})
    {
        RequireEntryId(each);
    }
    const bool same = host.Book().CompareEntryIDs(options.subject.c_str(), options.other.c_str());
    Lister(options.json).Object([&] { return Json{{"same", same}}; }, [&] { Print(same ? "same\n" : "different\n"); });
    return ExitDone;
}

int List(AddressBookHost& host, const AddressBookOptions& options)
{
    return options.subject.empty() ? ListContainers(host, options.json) : ListEntries(host, options);
}

using Body = int (*)(AddressBookHost&, const AddressBookOptions&);

Command AddCommand(Command group, const char* name, const char* help, Body body,
                   const std::shared_ptr<AddressBookOptions>& options)
{
    Command command = group.AddCommand(name, help);
    AddProfileOption(command, options->profile);
    command.AddFlag("--wab", options->wab, "Read the Windows Address Book instead of a profile's");
    command.AddFlag("--json", options->json, "Print JSON");
    command.Runs([options, body]
    {
        AddressBookHost host(options->profile, options->wab);
        return body(host, *options);
    });
    return command;
}

} // namespace

void AddAddressBook(Command app)
{
    Command group = app.AddCommand("ab", "Shows the address book");
    group.NeedsCommand();
    auto options = std::make_shared<AddressBookOptions>();

    Command list =
        AddCommand(group, "list", "Lists the containers, or the entries of one sorted by name", &List, options);
    list.AddOption("container", options->subject, "The container's name, or its entry identifier in hexadecimal digits")
        .Type("CONTAINER");
    AddCountOption(list, "--limit", options->limit, "List only the first N entries");

    Command show =
        AddCommand(group, "show", "Shows an entry with its properties, and the members of a list", &Show, options);
    show.AddOption("entry", options->subject, "The entry's name, address, or entry identifier in hexadecimal digits")
        .Required()
        .Type("ENTRY");
    show.AddFlag("--expand", options->expand, "Show the members of lists inside the list, each once");

    Command compare =
        AddCommand(group, "compare", "Compares two entry identifiers: do they name the same entry", &Compare, options);
    compare.AddOption("first", options->subject, "The first entry identifier in hexadecimal digits")
        .Required()
        .Type("A");
    compare.AddOption("second", options->other, "The second entry identifier").Required().Type("B");
}

} // namespace zeb::tools
