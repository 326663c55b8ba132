// zeb folders
#include "platform/console.h"
#include "tools/common/Color.h"
#include "tools/common/FolderName.h"
#include "tools/common/HostSession.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"

#include <memory>
#include <vector>

namespace zeb::tools
{
namespace
{

struct FolderListOptions
{
    std::string profile;
    bool all = false;
    bool json = false;
};

struct Node
{
    std::string name;
    LONG messages = 0, unread = 0;
    bool hasFolders = false;
    CZebBinary entryId;
    std::vector<Node> folders;
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

/// The folders below `folder`, at any depth, sorted by name.
std::vector<Node> ReadTree(CZebFolder& folder)
{
    CZebTable table = folder.GetHierarchyTable(MAPI_UNICODE);
    table.SortTable(CZebSortOrder(PR_DISPLAY_NAME_W, TABLE_SORT_ASCEND));
    std::vector<Node> nodes;
    for (CZebRow row : table.Rows({PR_DISPLAY_NAME_W, PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_SUBFOLDERS, PR_ENTRYID}))
    {
        Node node;
        node.name = FolderName(folder, row);
        node.messages = NumberOf(row, PR_CONTENT_COUNT);
        node.unread = NumberOf(row, PR_CONTENT_UNREAD);
        node.entryId = static_cast<const SBinary&>(row[PR_ENTRYID]);
        node.hasFolders = row.hasRealValue(PR_SUBFOLDERS) && static_cast<bool>(row[PR_SUBFOLDERS]);
        nodes.push_back(node);
    }
    for (Node& node : nodes)
    {
        if (node.hasFolders)
        {
            CZebFolder child(nullptr);
            folder.OpenEntry(node.entryId, child, MAPI_BEST_ACCESS);
            node.folders = ReadTree(child);
        }
    }
    return nodes;
}

std::string CountsOf(const Node& node)
{
    std::string text = "  " + Grouped(static_cast<unsigned long long>(node.messages));
    if (node.unread > 0)
    {
        text += Toned(Tone::Unread, " (" + Grouped(static_cast<unsigned long long>(node.unread)) + " unread)");
    }
    return text;
}

/// @return the number of folders printed
size_t PrintTree(const std::vector<Node>& nodes, const Strokes& strokes, const std::string& indent)
{
    size_t count = nodes.size();
    for (size_t i = 0; i < nodes.size(); ++i)
    {
        const bool last = i + 1 == nodes.size();
        Print(indent + (last ? strokes.last : strokes.branch) + OneLine(nodes[i].name) + CountsOf(nodes[i]) + "\n");
        count += PrintTree(nodes[i].folders, strokes, indent + (last ? strokes.blank : strokes.pass));
    }
    return count;
}

Json JsonOf(const std::vector<Node>& nodes)
{
    Json list = Json::array();
    for (const Node& node : nodes)
    {
        list.push_back({{"name", node.name},
                        {"messages", node.messages},
                        {"unread", node.unread},
                        {"entryId", static_cast<const char*>(node.entryId.String())},
                        {"folders", JsonOf(node.folders)}});
    }
    return list;
}

int Run(const FolderListOptions& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    CZebFolder top = options.all ? store.OpenRootFolder(MAPI_BEST_ACCESS)
                                 : store.OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    const std::string storeName = TextOf(store, PR_DISPLAY_NAME_W);
    const std::vector<Node> tree = ReadTree(top);
    Lister(options.json)
        .Object([&] { return Json{{"store", storeName}, {"folders", JsonOf(tree)}}; }, [&]
    {
        Print(OneLine(storeName) + "\n");
        const size_t count = PrintTree(tree, StrokesOfOutput(), "");
        Print(Grouped(count) + (count == 1 ? " folder\n" : " folders\n"));
    });
    return 0;
}

} // namespace

void AddFolders(Command app)
{
    auto options = std::make_shared<FolderListOptions>();
    Command command = app.AddCommand("folders", "Shows the folders of the default store as a tree");
    AddProfileOption(command, options->profile);
    command.AddFlag("--all", options->all, "Begin at the store's root instead of the top of the mail folders");
    command.AddFlag("--json", options->json, "Print JSON");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
