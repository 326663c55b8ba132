#include "qorth/DllLoader.h"

#include "platform/module.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

std::vector<int> unloaded;

CStringA Library(int number)
{
    const auto folder = std::filesystem::path(zeb::platform::OwnFolder()) / ZEB_LIBRARIES_FROM_BIN;
    return (folder / ("loader_probe_" + std::to_string(number) + ".dll")).lexically_normal().string().c_str();
}

int NumberOf(const CDllLoader& loader)
{
    int (*number)() = nullptr;
    return loader.GetProc("ProbeNumber", number) ? number() : -1;
}

void Watch(const CDllLoader& loader)
{
    void (*watch)(void (*)(int)) = nullptr;
    ASSERT_TRUE(loader.GetProc("ProbeWatch", watch));
    watch([](int number) { unloaded.push_back(number); });
}

class DllLoader : public ::testing::Test
{
protected:
    DllLoader() { unloaded.clear(); }
};

TEST_F(DllLoader, StartsEmpty)
{
    CDllLoader loader;
    EXPECT_TRUE(loader.IsEmpty());
    EXPECT_EQ(loader.GetProc("ProbeNumber"), nullptr);
    loader.Unload();
    EXPECT_TRUE(loader.IsEmpty());
}

TEST_F(DllLoader, ConstructionWithPathLoadsAtOnce)
{
    for (const long mode : {4L, 20L, 22L})
    {
        const CDllLoader loader(Library(1), mode);
        ASSERT_FALSE(loader.IsEmpty()) << loader.Reason();
        EXPECT_EQ(NumberOf(loader), 1);
        EXPECT_EQ(loader.GetProc("NoSuchName"), nullptr);
        EXPECT_EQ(loader.Reason(), "");
    }
}

TEST_F(DllLoader, AMissingNamesAddressIsNull)
{
    const CDllLoader loader(Library(1), 20);
    int (*number)() = [] { return 0; };
    EXPECT_FALSE(loader.GetProc("NoSuchName", number));
    EXPECT_EQ(number, nullptr);
}

TEST_F(DllLoader, DestructionUnloads)
{
    {
        const CDllLoader loader(Library(1), 22);
        Watch(loader);
    }
    EXPECT_EQ(unloaded, std::vector<int>{1});
}

TEST_F(DllLoader, UnloadEmpties)
{
    CDllLoader loader(Library(1), 22);
    Watch(loader);
    loader.Unload();
    EXPECT_TRUE(loader.IsEmpty());
    EXPECT_EQ(unloaded, std::vector<int>{1});
}

TEST_F(DllLoader, LoadsTheNewBeforeReleasingOld)
{
    CDllLoader loader(Library(1), 22);
    Watch(loader);
    EXPECT_TRUE(loader.Load(Library(2), 22));
    EXPECT_EQ(unloaded, std::vector<int>{1});
    EXPECT_EQ(NumberOf(loader), 2);
}

TEST_F(DllLoader, ReloadingTheSameLibraryKeepsIt)
{
    CDllLoader loader(Library(1), 22);
    Watch(loader);
    EXPECT_TRUE(loader.Load(Library(1), 22));
    EXPECT_TRUE(unloaded.empty());
    loader.Unload();
    EXPECT_EQ(unloaded, std::vector<int>{1});
}

TEST_F(DllLoader, AFailedLoadKeepsTheOld)
{
    CDllLoader loader(Library(1), 22);
    EXPECT_FALSE(loader.Load("no_such_library.dll", 22));
    EXPECT_NE(loader.Reason().Find("no_such_library.dll"), -1) << loader.Reason();
    EXPECT_EQ(NumberOf(loader), 1);
    EXPECT_TRUE(loader.Load(Library(2), 22));
    EXPECT_EQ(loader.Reason(), "");
}

TEST_F(DllLoader, EmptyAndNullPathsAreRefused)
{
    CDllLoader loader("", 20);
    EXPECT_TRUE(loader.IsEmpty());
    EXPECT_FALSE(loader.Reason().IsEmpty());
    EXPECT_FALSE(loader.Load(nullptr, 20));
}

TEST_F(DllLoader, LoadIsVirtual)
{
    class Refusing : public CDllLoader
    {
    public:
        bool Load(const char*, long) override { return false; }
    } refusing;
    CDllLoader& loader = refusing;
    EXPECT_FALSE(loader.Load(Library(1), 20));
}

} // namespace
