#include "tools/zebview/FolderTable.h"

#include "tools/common/FolderName.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/zebview/Mailbox.h"

#include <algorithm>
#include <map>

namespace zeb::view
{
namespace
{

/// The folders below one, by the key of the one above.
using Children = std::map<std::string, std::vector<FolderNode>>;

std::string KeyIn(const CZebRow& row, ULONG tag)
{
    return row.hasRealValue(tag) ? KeyOf(static_cast<const SBinary&>(row[tag])) : std::string();
}

void TakeBelow(Children& children, const std::string& parent, std::vector<FolderNode>& nodes)
{
    const auto found = children.find(parent);
    if (found == children.end())
    {
        return;
    }
    // Taken out first: a circle of folders must not be followed twice.
    std::vector<FolderNode> group = std::move(found->second);
    children.erase(found);
    std::stable_sort(group.begin(), group.end(), [](const FolderNode& a, const FolderNode& b)
    { return tools::WideFromUtf8(a.name).CompareNoCase(tools::WideFromUtf8(b.name)) < 0; });
    for (const FolderNode& node : group)
    {
        nodes.push_back(node);
        TakeBelow(children, node.key, nodes);
    }
}

} // namespace

std::string LabelOf(const FolderNode& node)
{
    if (node.messages == 0 && node.unread == 0)
    {
        return tools::OneLine(node.name);
    }
    return tools::OneLine(node.name) + " (" + tools::Grouped(static_cast<unsigned long long>(node.unread)) + "/" +
           tools::Grouped(static_cast<unsigned long long>(node.messages)) + ")";
}

FolderTable::FolderTable(const CZebFolder& top, HWND listener)
    : m_top(top)
{
    m_table.SetOwnerWindow(listener);
    m_table = m_top.GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH);
}

std::vector<FolderNode> FolderTable::Read()
{
    Children children;
    for (CZebRow row : m_table.Rows(
             {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_PARENT_ENTRYID, PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_DEPTH}))
    {
        FolderNode node;
        node.name = tools::FolderName(m_top, row);
        node.key = KeyIn(row, PR_ENTRYID);
        node.parent = tools::NumberOf(row, PR_DEPTH) > 1 ? KeyIn(row, PR_PARENT_ENTRYID) : "";
        node.messages = tools::NumberOf(row, PR_CONTENT_COUNT);
        node.unread = tools::NumberOf(row, PR_CONTENT_UNREAD);
        children[node.parent].push_back(node);
    }
    std::vector<FolderNode> nodes;
    TakeBelow(children, "", nodes);
    return nodes;
}

std::vector<FolderNode> ReadContainers(CZebAddressBook& book)
{
    CZebABContainer root = book.OpenRootContainer(MAPI_BEST_ACCESS);
    CZebTable table = root.GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH);
    std::vector<FolderNode> nodes;
    for (CZebRow row : table.Rows({PR_DISPLAY_NAME_W, PR_ENTRYID}))
    {
        FolderNode node;
        node.name = tools::TextOf(row, PR_DISPLAY_NAME_W);
        node.key = KeyIn(row, PR_ENTRYID);
        nodes.push_back(node);
    }
    return nodes;
}

} // namespace zeb::view
