#include "tools/zeb/ProfilePlaces.h"

#include "platform/registry.h"
#include "tools/common/Output.h"
#include "zebapi/ZebAPI.h"

namespace zeb::tools
{
namespace
{

using platform::RegistryKey;
using platform::RegistryRoot;

constexpr char OfficeKey[] = "Software\\Microsoft\\Office";
constexpr char SubsystemKey[] =
    "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";

/// In the ANSI code page, as the registry is read.
std::vector<std::string> SubKeysOf(const std::string& path)
{
    std::vector<std::string> names;
    const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, path);
    for (unsigned long i = 0; key; ++i)
    {
        const auto name = key->SubKeyName(i);
        if (!name)
            break;
        names.push_back(*name);
    }
    return names;
}

} // namespace

std::string ProfilesKey()
{
    return Utf8FromNarrow(static_cast<const char*>(CZebProfileNames::GetProfilesKey()));
}

std::vector<ProfilePlace> ProfilePlacesNotLookedAt()
{
    const CStringA looked = CZebProfileNames::GetProfilesKey();
    std::vector<ProfilePlace> places;
    const auto add = [&](const std::string& keeper, const std::string& path)
    {
        if (looked.CompareNoCase(path.c_str()) == 0)
            return;
        ProfilePlace place{Utf8FromNarrow(keeper), Utf8FromNarrow(path), {}};
        for (const std::string& name : SubKeysOf(path))
            place.profiles.push_back(Utf8FromNarrow(name));
        if (!place.profiles.empty())
            places.push_back(std::move(place));
    };
    add("Windows' messaging subsystem", SubsystemKey);
    for (const std::string& version : SubKeysOf(OfficeKey))
        add("Outlook " + version, std::string(OfficeKey) + "\\" + version + "\\Outlook\\Profiles");
    return places;
}

} // namespace zeb::tools
