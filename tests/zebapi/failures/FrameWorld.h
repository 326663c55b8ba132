// A machine with a provider, an address book and profiles, for the operations that look for them.
#pragma once

#include "Scan.h"
#include "tests/support/ProfileKeys.h"
#include "tests/support/doubles/RecordingProfAdmin.h"
#include "tests/support/doubles/RecordingStore.h"
#include "tests/support/providers/WabObject.h"
#include "tests/zebapi/frame/LibraryFixture.h"
#include "zebapi/ZebAPI.h"

namespace zeb::test
{

class FrameWorld : public LibraryFixture
{
public:
    FrameWorld()
    {
        Install(ProviderFile::Undecorated());
        SetRegistry(platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath", "",
                    Library("wab32.dll", ProviderFile::Undecorated()));
        SetRegistry(platform::RegistryRoot::CurrentUser, Subsystem, "DefaultProfile", "A profile with a long name");
        platform::RegistryKey::Create(platform::RegistryRoot::CurrentUser,
                                      std::string(Subsystem) + "\\Another profile");
        provider.session = &session;
        provider.profAdmin = &admin;
        provider.addressBook = &book;
        provider.wabObject = &wab;
    }
    ~FrameWorld() override { CleanUp(); }

    MapiMemory* Memory() { return nullptr; }
    static constexpr bool TakesLong = true; // folders, libraries and a registry
    void CleanUp()
    {
        Library().Uninitialize(nullptr);
        Library().SetWasFailed(false);
        EXPECT_EQ(provider.loads, provider.unloads);
        EXPECT_EQ(session.References() + admin.References() + book.References(), 0u);
        EXPECT_EQ(wab.references, 1);
        log.Clear();
    }
    size_t LogLines() const { return log.Lines().size(); }
    CZebAPI& Library() { return library; }
    using LibraryFixture::Library;
    /// Starts MAPI or the address book, which does not fail.
    void Start(bool isWab)
    {
        const ProviderScope outside;
        library.SetWasFailed(false);
        library.Initialize(isWab);
    }

    Journal journal;
    RecordingSession session{journal};
    RecordingProfAdmin admin{journal};
    RecordingAddrBook book{journal};
    WabObject wab;

private:
    void TestBody() override {}
};

} // namespace zeb::test
