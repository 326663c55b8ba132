// zeb folders
#include "platform/console.h"
#include "tools/common/FolderName.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <vector>

namespace zeb::tools
{
namespace
{

struct Options
{
    std::string profile;
    bool all = false;
    bool json = false;
};

struct Node
{
    std::string name;
    LONG messages = 0, unread = 0;
    bool hasChildren = false;
    CZebBinary entryId;
};

/// The lines of the tree.
struct Strokes
{
    const char *branch, *last, *pass, *blank;
};

Strokes StrokesOfOutput()
{
    if (platform::OutputShowsUtf8())
    {
        return {"\xE2\x94\x9C\xE2\x94\x80 ", "\xE2\x94\x94\xE2\x94\x80 ", "\xE2\x94\x82  ", "   "};
    }
    return {"|- ", "`- ", "|  ", "   "};
}

LONG NumberAt(const CZebRow& row, ULONG tag)
{
    return row.hasRealValue(tag) ? static_cast<LONG>(row[tag]) : 0;
}

std::vector<Node> ChildrenOf(CZebFolder& folder)
{
    CZebTable table = folder.GetHierarchyTable(MAPI_UNICODE);
    table.SetColumns(5, PR_DISPLAY_NAME_W, PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_SUBFOLDERS, PR_ENTRYID);
    CZebSortOrder order(PR_DISPLAY_NAME_W, TABLE_SORT_ASCEND);
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, order);
    std::vector<Node> nodes;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        const CZebRow row = rows[i];
        Node node;
        node.name = FolderName(folder, row);
        node.messages = NumberAt(row, PR_CONTENT_COUNT);
        node.unread = NumberAt(row, PR_CONTENT_UNREAD);
        node.hasChildren = row.hasRealValue(PR_SUBFOLDERS) && static_cast<bool>(row[PR_SUBFOLDERS]);
        node.entryId = static_cast<const SBinary&>(row[PR_ENTRYID]);
        nodes.push_back(node);
    }
    return nodes;
}

CZebFolder OpenChild(CZebFolder& folder, const Node& node)
{
    CZebFolder child(nullptr);
    folder.OpenEntry(node.entryId, child, MAPI_BEST_ACCESS);
    return child;
}

std::string Counts(const Node& node)
{
    std::string text = "  " + Grouped(static_cast<unsigned long long>(node.messages));
    if (node.unread > 0)
    {
        text += " (" + Grouped(static_cast<unsigned long long>(node.unread)) + " unread)";
    }
    return text;
}

/// Prints the folders below `folder`. @return the number of folders printed
size_t PrintTree(CZebFolder& folder, const Strokes& strokes, const std::string& indent)
{
    const std::vector<Node> nodes = ChildrenOf(folder);
    size_t count = nodes.size();
    for (size_t i = 0; i < nodes.size(); ++i)
    {
        const bool last = i + 1 == nodes.size();
        Print(indent + (last ? strokes.last : strokes.branch) + OneLine(nodes[i].name) + Counts(nodes[i]) + "\n");
        if (!nodes[i].hasChildren)
        {
            continue;
        }
        CZebFolder child = OpenChild(folder, nodes[i]);
        count += PrintTree(child, strokes, indent + (last ? strokes.blank : strokes.pass));
    }
    return count;
}

nlohmann::ordered_json JsonTree(CZebFolder& folder)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Node& node : ChildrenOf(folder))
    {
        nlohmann::ordered_json object;
        object["name"] = node.name;
        object["messages"] = node.messages;
        object["unread"] = node.unread;
        object["entryId"] = static_cast<const char*>(node.entryId.String());
        object["folders"] = nlohmann::ordered_json::array();
        if (node.hasChildren)
        {
            CZebFolder child = OpenChild(folder, node);
            object["folders"] = JsonTree(child);
        }
        list.push_back(object);
    }
    return list;
}

int Run(const Options& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    CZebFolder top = options.all ? store.OpenRootFolder(MAPI_BEST_ACCESS)
                                 : store.OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    const std::string storeName = TextOf(store, PR_DISPLAY_NAME_W);
    if (options.json)
    {
        nlohmann::ordered_json object;
        object["store"] = storeName;
        object["folders"] = JsonTree(top);
        Print(object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
        return 0;
    }
    Print(OneLine(storeName) + "\n");
    const size_t count = PrintTree(top, StrokesOfOutput(), "");
    Print(Grouped(count) + (count == 1 ? " folder\n" : " folders\n"));
    return 0;
}

} // namespace

void AddFolders(CLI::App& app, Action& action)
{
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("folders", "Shows the folders of the default store as a tree");
    AddProfileOption(*command, options->profile);
    command->add_flag("--all", options->all, "Begin at the store's root instead of the top of the mail folders");
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, &action] { action = [options] { return Run(*options); }; });
}

} // namespace zeb::tools
