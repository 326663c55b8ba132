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
constexpr int LastWithoutKey = 14;

/// The version of the installed Outlook as in its registry keys ("16.0"); empty when none is installed, and for
/// versions that share the subsystem's profiles.
std::string InstalledVersion()
{
    const auto key = RegistryKey::Open(RegistryRoot::ClassesRoot, "Outlook.Application\\CurVer");
    const std::string name = key ? key->StringValue("").value_or("") : "";
    const std::string number = name.substr(name.find_last_not_of("0123456789") + 1);
    constexpr size_t Longest = 4;
    if (number.empty() || number.size() > Longest || std::stoi(number) <= LastWithoutKey)
    {
        return "";
    }
    return number + ".0";
}

class Places
{
public:
    void Add(const std::string& keeper, const std::string& path, bool alsoEmpty)
    {
        if (m_looked.CompareNoCase(path.c_str()) == 0)
        {
            return;
        }
        ProfilePlace place{keeper, path, {}};
        for (const std::string& name : RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, path))
        {
            place.profiles.push_back(name);
        }
        if (alsoEmpty || !place.profiles.empty())
        {
            m_places.push_back(std::move(place));
        }
    }
    void AddOutlook(const std::string& version, bool alsoEmpty)
    {
        Add("Outlook " + version, std::string(OfficeKey) + "\\" + version + "\\Outlook\\Profiles", alsoEmpty);
    }
    std::vector<ProfilePlace> Take() { return std::move(m_places); }

private:
    const CStringA m_looked = CZebProfileNames::GetProfilesKey();
    std::vector<ProfilePlace> m_places;
};

} // namespace

std::string ProfilesKey()
{
    return Utf8FromNarrow(static_cast<const char*>(CZebProfileNames::GetProfilesKey()));
}

std::vector<ProfilePlace> ProfilePlacesNotLookedAt()
{
    Places places;
    places.Add("Windows' messaging subsystem", SubsystemKey, false);
    const std::string installed = InstalledVersion();
    bool seen = installed.empty();
    for (const std::string& version : RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, OfficeKey))
    {
        places.AddOutlook(version, version == installed);
        seen = seen || version == installed;
    }
    if (!seen)
    {
        places.AddOutlook(installed, true);
    }
    return places.Take();
}

} // namespace zeb::tools
