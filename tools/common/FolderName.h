// Folder names of any length.
#pragma once

#include "zebapi/ZebAPI.h"

#include <functional>
#include <string>

namespace zeb::tools
{

/// The name of a folder in a row of a hierarchy table with the columns PR_DISPLAY_NAME_W and PR_ENTRYID; a name that is
/// too long for a row is read from the folder. UTF-8. @throws CZebException*
std::string FolderName(CZebFolder& above, const CZebRow& row);

/// Opens each direct subfolder, sorted by name, and passes it to the callback with its name in UTF-8.
void ForEachSubfolder(CZebFolder& folder, const std::function<void(CZebFolder& child, const std::string& name)>& take);

} // namespace zeb::tools
