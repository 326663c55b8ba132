// What the library asks of the loader and of the system's version.
#include "tests/support/doubles/RecordingStore.h"
#include "tests/support/providers/WabObject.h"
#include "tests/zebapi/frame/LibraryFixture.h"
#include "tests/zebapi/frame/RecordingLoader.h"

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::Field;

class LoaderMode : public LibraryFixture
{
protected:
    LoaderMode()
    {
        Loads().clear();
        isVista = true;
    }
    std::string RegisterWab()
    {
        const std::string path = Library("wab32.dll", ProviderFile::Undecorated());
        SetRegistry(platform::RegistryRoot::LocalMachine, "Software\\Microsoft\\WAB\\DLLPath", "", path);
        return path;
    }
};

} // namespace

TEST_F(LoaderMode, ProvidersAreLoadedIn22)
{
    const std::string path = Install(ProviderFile::Undecorated());
    library.Initialize(false);
    EXPECT_THAT(Loads(), ElementsAre(Load{path, 20}, Load{path, 22}));
}

TEST_F(LoaderMode, TheStubsAreLoadedIn4)
{
    Search();
    ASSERT_EQ(Loads().size(), 3u);
    EXPECT_EQ(Loads()[0], (Load{System() + "mapistub.dll", 4}));
    EXPECT_EQ(Loads()[1], (Load{System() + "mapi32.dll", 4}));
    EXPECT_EQ(Loads()[2].mode, 20);
}

TEST_F(LoaderMode, WabLibrariesAreLoadedIn22)
{
    Journal journal;
    RecordingAddrBook book(journal);
    WabObject wab;
    provider.addressBook = &book;
    provider.wabObject = &wab;
    const std::string path = RegisterWab();
    library.Initialize(true);
    EXPECT_THAT(Loads(), ElementsAre(Load{path, 22}));
    library.Uninitialize(nullptr);
}

TEST_F(LoaderMode, BeforeVistaInstancesShareOneBook)
{
    Journal journal;
    RecordingAddrBook book(journal);
    WabObject wab;
    provider.addressBook = &book;
    provider.wabObject = &wab;
    RegisterWab();
    library.Initialize(true);
    isVista = false;
    {
        const CZebAddressBook another = library.GetWABAddressBook(true);
        EXPECT_TRUE(another.IsValid());
        EXPECT_EQ(provider.wabOpenCalls, 1);
        EXPECT_EQ(book.References(), 2u);
        EXPECT_EQ(wab.references, 2) << "it has no WAB object of its own";
    }
    isVista = true;
    library.GetWABAddressBook(true);
    EXPECT_EQ(provider.wabOpenCalls, 2);
    library.Uninitialize(nullptr);
}

} // namespace zeb::test
