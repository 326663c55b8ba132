#include "tools/common/FolderName.h"

#include "tools/common/HostSession.h"

namespace zeb::tools
{

std::string FolderName(CZebFolder& above, const CZebRow& row)
{
    if (row.hasRealValue(PR_DISPLAY_NAME_W) || !row.hasRealValue(PR_ENTRYID))
    {
        return TextOf(row, PR_DISPLAY_NAME_W);
    }
    CZebFolder folder(nullptr);
    above.OpenEntry(static_cast<const SBinary&>(row[PR_ENTRYID]), folder, MAPI_BEST_ACCESS);
    return TextOf(folder, PR_DISPLAY_NAME_W);
}

void ForEachSubfolder(CZebFolder& folder, const std::function<void(CZebFolder& child, const std::string& name)>& take)
{
    CZebTable table = folder.GetHierarchyTable(MAPI_UNICODE);
    table.SetColumns(2, PR_DISPLAY_NAME_W, PR_ENTRYID);
    CZebSortOrder order(PR_DISPLAY_NAME_W, TABLE_SORT_ASCEND);
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, order);
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        CZebFolder child(nullptr);
        folder.OpenEntry(static_cast<const SBinary&>(rows[i][PR_ENTRYID]), child, MAPI_BEST_ACCESS);
        take(child, FolderName(folder, rows[i]));
    }
}

} // namespace zeb::tools
