// Profiles in the registry: one key for each profile, with one subkey for each message service.
#pragma once

#include "platform/mapi.h"

#include <optional>
#include <string>
#include <vector>

namespace zebstore
{

/// One message service of a profile: the provider's store. Texts are UTF-8.
struct Service
{
    MAPIUID uid{};
    std::string displayName;
    std::string path; ///< empty until the service is configured
    bool fullDurability = false;
};

/// The profiles of this user. Names compare without case, as registry keys do. Nothing is cached: each call reads or
/// writes the registry. Names are UTF-8. All calls throw the registry's errors; changes of a profile that does not
/// exist: Error MAPI_E_NOT_FOUND.
namespace profiles
{

std::vector<std::string> Names();
bool Exists(const std::string& name);
/// The default profile, when it exists.
std::optional<std::string> Default();

/// The first profile becomes the default. @throws Error MAPI_E_NO_ACCESS when the name is taken;
/// MAPI_E_INVALID_PARAMETER for a name that is empty,
///   longer than 64 bytes or has a backslash or a control character
void Create(const std::string& name);
/// A deleted default profile is no longer the default. Store files stay.
void Delete(const std::string& name);
/// Used with Delete for renaming; services keep their identifiers.
void Copy(const std::string& from, const std::string& to);
/// An empty name: no default.
void SetDefault(const std::string& name);

std::vector<Service> Services(const std::string& profile);
/// @throws Error MAPI_E_NOT_FOUND
Service ServiceOf(const std::string& profile, const MAPIUID& uid);
/// Adds or replaces the service.
void SaveService(const std::string& profile, const Service& service);
void DeleteService(const std::string& profile, const MAPIUID& uid);

/// Names compare without case.
bool SameName(const std::string& a, const std::string& b);

/// A UID that no other service has.
MAPIUID NewUid();

/// The default path of a profile's store: <local data>/zebapi/<profile>.zeb.
/// @throws Error MAPI_E_NOT_FOUND when the environment names no folder for data
std::string DefaultStorePath(const std::string& profile);

} // namespace profiles
} // namespace zebstore
