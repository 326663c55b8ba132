#include "tools/common/FolderName.h"

#include "tools/common/HostSession.h"

namespace zeb::tools
{

std::string FolderName(CZebFolder& above, const CZebRow& row)
{
    if (row.hasRealValue(PR_DISPLAY_NAME_W) || !row.hasRealValue(PR_ENTRYID))
        return TextOf(row, PR_DISPLAY_NAME_W);
    CZebFolder folder(nullptr);
    above.OpenEntry(static_cast<const SBinary&>(row[PR_ENTRYID]), folder, MAPI_BEST_ACCESS);
    return TextOf(folder, PR_DISPLAY_NAME_W);
}

} // namespace zeb::tools
