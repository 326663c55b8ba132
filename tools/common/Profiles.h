// Profiles by names in UTF-8, which may have characters that the ANSI code page lacks.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// A profile's name as MAPI's calls take it: narrow where that says all of it, because many providers take nothing
/// else, otherwise wide.
class ProfileName
{
public:
    /// @param name UTF-8
    explicit ProfileName(const std::string& name);

    /// The text of either width, which MAPI declares without const; valid while the object lives.
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

/// The name itself, or that of the default profile where none is given; UTF-8, empty when there is none.
std::string NameOfProfile(CZebProfAdmin& administration, const std::string& profile);

/// The file of the profile's store, asked of the profile: the store need not open for that.
/// @param profile UTF-8; empty: the default profile
/// @return UTF-8; empty when it has no store of zebstore's. @throws ToolError when the profile cannot be read
std::string FileOfStore(CZebProfAdmin& administration, const std::string& profile);

} // namespace zeb::tools
