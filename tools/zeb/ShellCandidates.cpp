#include "tools/zeb/ShellCandidates.h"

#include "tools/common/FolderName.h"
#include "tools/common/Profiles.h"
#include "tools/zeb/Objects.h"

namespace zeb::tools
{
namespace
{

void AddPathsBelow(CZebFolder& folder, const FolderPath& path, std::vector<std::string>& paths)
{
    ForEachSubfolder(folder, [&](CZebFolder& child, const std::string& name)
    {
        const FolderPath below = path.Below(name);
        paths.push_back(below.Text());
        AddPathsBelow(child, below, paths);
    });
}

std::vector<std::string> FolderPaths(const std::string& profile)
{
    Mailbox mailbox(profile);
    CZebFolder top = mailbox.Store().OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    std::vector<std::string> paths;
    AddPathsBelow(top, mailbox.PathOf(top), paths);
    return paths;
}

std::vector<std::string> ProfileNames()
{
    const HostMapi mapi;
    CZebProfAdmin administration = CZebProfAdmin::Open();
    std::vector<std::string> names;
    for (const ProfileEntry& each : ListProfiles(administration))
    {
        names.push_back(each.name);
    }
    return names;
}

} // namespace

std::vector<std::string> ShellCandidates(const std::string& kind, const std::string& profile)
{
    if (kind == "PROFILE")
    {
        return ProfileNames();
    }
    return kind.compare(0, 6, "FOLDER") == 0 ? FolderPaths(profile) : std::vector<std::string>();
}

} // namespace zeb::tools
