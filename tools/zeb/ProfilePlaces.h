// Registry keys with profiles, in addition to the one that the library reads.
#pragma once

#include <string>
#include <vector>

namespace zeb::tools
{

/// One key of profiles. Texts are UTF-8.
struct ProfilePlace
{
    std::string keeper; ///< their owner: "Outlook 16.0", "Windows' messaging subsystem"
    std::string key;    ///< below HKEY_CURRENT_USER
    std::vector<std::string> profiles;
};

/// The key below HKEY_CURRENT_USER that the library reads. UTF-8.
std::string ProfilesKey();

/// The other keys with at least one profile: the messaging subsystem's, which all versions of Outlook up to 2010 share,
/// and the separate key of each later version, in the registry's order; and always the key of the installed version.
std::vector<ProfilePlace> ProfilePlacesNotLookedAt();

} // namespace zeb::tools
