#include "zebstore/profiles/Profiles.h"

#include "platform/environment.h"
#include "platform/registry.h"
#include "zebstore/base/Error.h"
#include "zebstore/storage/Text.h"

#include <cstring>
#include <filesystem>
#include <random>

namespace zebstore::profiles
{
namespace
{

using zeb::platform::RegistryKey;
using zeb::platform::RegistryRoot;

constexpr char ClassicPath[] = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";
constexpr char OfficePath[] = "Software\\Microsoft\\Office\\15.0\\Outlook";
constexpr char DefaultValue[] = "DefaultProfile";
constexpr char ServiceValue[] = "Service";
constexpr char ServiceName[] = "zebstore";
constexpr size_t LongestName = 64;

/// Outlook 15 moved the profiles; whoever reads them asks the same question.
bool HasOutlook15()
{
    const auto key = RegistryKey::Open(RegistryRoot::ClassesRoot, "Outlook.Application\\CurVer");
    return key && key->StringValue("").value_or("").find("15") != std::string::npos;
}

std::string ProfilesPath()
{
    return HasOutlook15() ? std::string(OfficePath) + "\\Profiles" : std::string(ClassicPath);
}

std::string DefaultPath()
{
    return HasOutlook15() ? OfficePath : ClassicPath;
}

std::string KeyOf(const std::string& profile)
{
    return ProfilesPath() + "\\" + profile;
}

void RequireExists(const std::string& profile)
{
    if (!Exists(profile))
    {
        throw Error(MAPI_E_NOT_FOUND, "the profile '" + profile + "' does not exist");
    }
}

std::string TextOf(const MAPIUID& uid)
{
    std::string text;
    for (BYTE each : uid.ab)
    {
        text += "0123456789ABCDEF"[each >> 4];
        text += "0123456789ABCDEF"[each & 15];
    }
    return text;
}

/// Services of other providers are under the same key; they do not have this value.
std::optional<Service> ReadService(const std::string& profile, const std::string& uidText)
{
    Service service;
    std::string digits = uidText;
    if (digits.size() != 2 * sizeof(service.uid.ab) || !FBinFromHex(digits.data(), service.uid.ab))
    {
        return std::nullopt;
    }
    const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, KeyOf(profile) + "\\" + uidText);
    if (!key || key->StringValue(ServiceValue) != std::string(ServiceName))
    {
        return std::nullopt;
    }
    service.displayName = key->StringValue("DisplayName").value_or("");
    service.path = key->StringValue("Path").value_or("");
    service.fullDurability = key->StringValue("Durability").value_or("") == "full";
    return service;
}

void CheckName(const std::string& name)
{
    bool good = !name.empty() && name.size() <= LongestName && name.front() != ' ' && name.back() != ' ';
    for (char each : name)
    {
        good = good && static_cast<unsigned char>(each) >= ' ' && each != '\\';
    }
    if (!good)
    {
        throw Error(MAPI_E_INVALID_PARAMETER, "'" + name + "' is not a valid profile name");
    }
}

} // namespace

std::vector<std::string> Names()
{
    return RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, ProfilesPath());
}

bool Exists(const std::string& name)
{
    return !name.empty() && name.find('\\') == std::string::npos &&
           RegistryKey::Open(RegistryRoot::CurrentUser, KeyOf(name)).has_value();
}

std::optional<std::string> Default()
{
    const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, DefaultPath());
    if (!key)
    {
        return std::nullopt;
    }
    const std::string name = key->StringValue(DefaultValue).value_or("");
    return Exists(name) ? std::optional<std::string>(name) : std::nullopt;
}

void Create(const std::string& name)
{
    CheckName(name);
    if (Exists(name))
    {
        throw Error(MAPI_E_NO_ACCESS, "a profile '" + name + "' already exists");
    }
    RegistryKey::Create(RegistryRoot::CurrentUser, KeyOf(name));
    if (!Default())
    {
        SetDefault(name);
    }
}

void Delete(const std::string& name)
{
    RequireExists(name);
    const std::optional<std::string> byDefault = Default();
    RegistryKey::DeleteTree(RegistryRoot::CurrentUser, KeyOf(name));
    if (byDefault && SameName(*byDefault, name))
    {
        SetDefault(std::string());
    }
}

void Copy(const std::string& from, const std::string& to)
{
    RequireExists(from);
    const std::vector<Service> services = Services(from);
    Create(to);
    for (const Service& each : services)
    {
        SaveService(to, each);
    }
}

void SetDefault(const std::string& name)
{
    if (name.empty())
    {
        RegistryKey::Create(RegistryRoot::CurrentUser, DefaultPath()).DeleteValue(DefaultValue);
        return;
    }
    RequireExists(name);
    RegistryKey::Create(RegistryRoot::CurrentUser, DefaultPath()).SetStringValue(DefaultValue, name);
}

std::vector<Service> Services(const std::string& profile)
{
    RequireExists(profile);
    std::vector<Service> services;
    for (const std::string& name : RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, KeyOf(profile)))
    {
        if (auto service = ReadService(profile, name))
        {
            services.push_back(std::move(*service));
        }
    }
    return services;
}

Service ServiceOf(const std::string& profile, const MAPIUID& uid)
{
    auto service = ReadService(profile, TextOf(uid));
    if (!service)
    {
        throw Error(MAPI_E_NOT_FOUND, "the profile '" + profile + "' has no service with this identifier");
    }
    return *service;
}

void SaveService(const std::string& profile, const Service& service)
{
    RequireExists(profile);
    RegistryKey key = RegistryKey::Create(RegistryRoot::CurrentUser, KeyOf(profile) + "\\" + TextOf(service.uid));
    key.SetStringValue(ServiceValue, ServiceName);
    key.SetStringValue("DisplayName", service.displayName);
    key.SetStringValue("Durability", service.fullDurability ? "full" : "normal");
    if (!service.path.empty())
    {
        key.SetStringValue("Path", service.path);
    }
}

void DeleteService(const std::string& profile, const MAPIUID& uid)
{
    ServiceOf(profile, uid);
    RegistryKey::DeleteTree(RegistryRoot::CurrentUser, KeyOf(profile) + "\\" + TextOf(uid));
}

bool SameName(const std::string& a, const std::string& b)
{
    return Folded(a, TextFold::IgnoreCase) == Folded(b, TextFold::IgnoreCase);
}

MAPIUID NewUid()
{
    std::random_device random;
    MAPIUID uid;
    for (size_t i = 0; i < sizeof(uid.ab); i += sizeof(unsigned))
    {
        const unsigned number = random();
        std::memcpy(uid.ab + i, &number, sizeof(number));
    }
    return uid;
}

std::string DefaultStorePath(const std::string& profile)
{
    std::string folder;
    using zeb::platform::EnvironmentVariable;
    if (const auto local = EnvironmentVariable("LOCALAPPDATA"))
    {
        folder = *local;
    }
    else if (const auto data = EnvironmentVariable("XDG_DATA_HOME"))
    {
        folder = *data;
    }
    else if (const auto home = EnvironmentVariable("HOME"))
    {
        folder = *home + "/.local/share";
    }
    if (folder.empty())
    {
        throw Error(MAPI_E_NOT_FOUND, "no path for the store: the environment names no data folder");
    }
    std::string name = profile;
    for (char& each : name)
    {
        if (std::strchr("/\\:*?\"<>|", each) != nullptr)
        {
            each = '_';
        }
    }
    namespace fs = std::filesystem;
    return (fs::u8path(folder) / "zebapi" / fs::u8path(name + ".zeb")).make_preferred().u8string();
}

} // namespace zebstore::profiles
