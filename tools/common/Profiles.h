// Profiles with names in UTF-8, which may have characters outside the ANSI code page.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// A profile's name as an argument of MAPI calls: narrow when the ANSI code page can represent it, because many
/// providers accept only narrow names; otherwise wide.
class ProfileName
{
public:
    /// @param name UTF-8
    explicit ProfileName(const std::string& name);

    /// The text in its width, which MAPI declares without const; valid for the lifetime of the object.
    LPTSTR Text() const;
    /// MAPI_UNICODE for wide text, otherwise 0.
    ULONG Flags() const { return m_isWide ? MAPI_UNICODE : 0; }
    bool IsWide() const { return m_isWide; }
    const char* Narrow() const { return m_narrow; }
    const WCHAR* Wide() const { return m_wide; }

private:
    CStringA m_narrow;
    CStringW m_wide;
    bool m_isWide;
};

struct ProfileEntry
{
    std::string name; ///< UTF-8
    bool isDefault = false;
};

/// The profiles that the provider's administration lists. @throws CZebException*
std::vector<ProfileEntry> ListProfiles(CZebProfAdmin& administration);

/// The given name, or the name of the default profile when none is given; UTF-8, empty when there is none.
std::string NameOfProfile(CZebProfAdmin& administration, const std::string& profile);

/// The file of the profile's store, read from the profile: the store is not opened.
/// @param profile UTF-8; empty: the default profile
/// @return UTF-8; empty when the profile has no zebstore store @throws ToolError when the profile cannot be read
std::string FileOfStore(CZebProfAdmin& administration, const std::string& profile);

} // namespace zeb::tools
