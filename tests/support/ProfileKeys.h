// Registry keys of profiles and of the installed Outlook.
#pragma once

#include "platform/registry.h"

#include <string>

namespace zeb::test
{

constexpr char Outlook15[] = "Software\\Microsoft\\Office\\15.0\\Outlook";
constexpr char Outlook15Profiles[] = "Software\\Microsoft\\Office\\15.0\\Outlook\\Profiles";
constexpr char Subsystem[] = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";

inline void SetOutlookVersion(const std::string& version)
{
    platform::RegistryKey::Create(platform::RegistryRoot::ClassesRoot, "Outlook.Application\\CurVer")
        .SetStringValue("", version);
}

} // namespace zeb::test
