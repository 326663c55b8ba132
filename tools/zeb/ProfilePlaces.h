// Where profiles are kept, beside the one place where the library looks for them.
#pragma once

#include <string>
#include <vector>

namespace zeb::tools
{

/// One key of profiles. Texts are UTF-8.
struct ProfilePlace
{
    std::string keeper; ///< who keeps them there: "Outlook 16.0", "Windows' messaging subsystem"
    std::string key;    ///< below HKEY_CURRENT_USER
    std::vector<std::string> profiles;
};

/// The key below HKEY_CURRENT_USER where the library looks. UTF-8.
std::string ProfilesKey();

/// The other places that hold at least one profile: the messaging subsystem's, which the versions of Outlook
/// up to 2010 share, and the key that each later version has of its own, in the registry's order; and the key
/// of the version that is installed, whatever it holds.
std::vector<ProfilePlace> ProfilePlacesNotLookedAt();

} // namespace zeb::tools
