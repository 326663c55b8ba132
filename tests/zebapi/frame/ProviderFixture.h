// A machine of the test's own: registry, folders, provider libraries, log.
#pragma once

#include "platform/registry.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "tests/support/providers/FakeProviderScope.h"
#include "tests/support/providers/ProviderFile.h"
#include "zebapi/search/ProviderSearch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace zeb::test
{

constexpr char OutlookClientKey[] = "SOFTWARE\\Clients\\Mail\\Microsoft Outlook";
constexpr char CurrentVersionKey[] = "Software\\Microsoft\\Windows\\CurrentVersion";

class ProviderFixture : public ::testing::Test
{
protected:
    /// Writes a text value ("" is the key's default value) and creates the key.
    void SetRegistry(platform::RegistryRoot root, const std::string& key, const std::string& value,
                     const std::string& text)
    {
        platform::RegistryKey::Create(root, key).SetStringValue(value, text);
    }
    /// Names Outlook's MAPI library in the registry.
    void RegisterOutlook(const std::string& path)
    {
        SetRegistry(platform::RegistryRoot::LocalMachine, OutlookClientKey, "DLLPathEx", path);
    }
    void RegisterCommonFiles(const std::string& folder)
    {
        SetRegistry(platform::RegistryRoot::LocalMachine, CurrentVersionKey, "CommonFilesDir", folder);
    }

    /// A provider library in the test's folder. @return its path
    std::string Library(const std::string& name, const ProviderFile& library)
    {
        const std::string path = folder.File(name);
        library.Save(path);
        return path;
    }
    /// A file that is no library. @return its path
    std::string TextFile(const std::string& name)
    {
        const std::string path = folder.File(name);
        std::ofstream(path) << "not a library at all\n";
        return path;
    }

    /// The machine with a system folder of the test's own, where bare names are looked for too.
    ProviderEnvironment Environment()
    {
        ProviderEnvironment environment = ProviderEnvironment::Machine();
        environment.systemDir = [this] { return System(); };
        environment.isNT = [this] { return isNT; };
        environment.locate = [this](const std::string& path)
        { return path.find_first_of("/\\") == std::string::npos ? System() + path : path; };
        return environment;
    }
    std::string System() const { return folder.Path() + "\\system\\"; }

    ProviderReport Search() { return SearchProvider(Environment()); }

    RegistryScope registry;
    TempFolder folder;
    FakeProviderScope provider;
    LogCapture log;
    bool isNT = true;
};

/// A progress line of the search.
inline LogLine Progress(const std::string& text)
{
    return Line(3, text);
}

/// A line of the classification.
inline LogLine Plain(const std::string& text)
{
    return Line(-1, text);
}

} // namespace zeb::test
