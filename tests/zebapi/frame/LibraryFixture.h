// The library object with a test provider to load.
#pragma once

#include "platform/module.h"
#include "tests/support/Thrown.h"
#include "tests/zebapi/frame/ProviderFixture.h"
#include "zebapi/MEM.h"
#include "zebapi/Mapiload.h"
#include "zebapi/frame/internal/EntryPoints.h"

namespace zeb::test
{

/// Each test begins and ends with nothing loaded, on a machine without a provider: a text file in the test program's
/// folder hides the system's provider.
class LibraryFixture : public ProviderFixture
{
protected:
    LibraryFixture() { std::ofstream(InOwnFolder(), std::ios::trunc) << "not a library at all\n"; }
    ~LibraryFixture() override
    {
        library.Uninitialize(nullptr);
        library.SetWasFailed(false);
        for (const EntryPointRow& row : UndecoratedEntryPoints)
        {
            SetEntryPoint(row.slot, nullptr);
        }
        EXPECT_EQ(provider.loads, provider.unloads) << "the provider stays loaded";
    }

    /// Where the system's provider is looked for first.
    static std::string InOwnFolder() { return platform::OwnFolder() + "MAPI32.DLL"; }

    /// Puts a provider where Outlook's is looked for. @return its path
    std::string Install(const ProviderFile& file)
    {
        const std::string path = Library("provider.dll", file);
        RegisterOutlook(path);
        return path;
    }
    /// Installs a provider that classifies well, and puts another file in its place as soon as it was looked at.
    /// @return its path
    std::string InstallChanging(const ProviderFile& first)
    {
        const std::string path = Install(first);
        m_old = folder.File("old.dll");
        m_next = folder.File("next.dll");
        m_path = path;
        provider.replaceFile = m_path.c_str();
        provider.replacedTo = m_old.c_str();
        provider.replacement = m_next.c_str();
        return path;
    }
    /// The file that takes the place.
    std::string Next() const { return m_next; }

    void Start(const ProviderFile& file)
    {
        Install(file);
        library.Initialize(false);
    }

    /// The entry points have no provider.
    void ExpectNothingLoaded()
    {
        EXPECT_FALSE(library.WasInitialized());
        EXPECT_EQ(provider.loads, provider.unloads);
        EXPECT_EQ(zeb::HrSetOneProp(nullptr, nullptr), MAPI_E_CALL_FAILED);
        EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(1, nullptr); }), MAPI_E_NOT_INITIALIZED);
    }

    CZebAPI& library = Zeb_GetMAPI();

private:
    std::string m_path;
    std::string m_old;
    std::string m_next;
};

} // namespace zeb::test
