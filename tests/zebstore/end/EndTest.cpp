// A process that ends, or a library that is unloaded, with the provider's address book open.
#include "platform/module.h"
#include "tests/support/TempFolder.h"
#include "zebstore/storage/StoreFile.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace zebstore
{
namespace
{

class ProviderEnd : public testing::TestWithParam<const char*>
{
};

// Several times: whether the thread is inside the store or asleep is chance.
TEST_P(ProviderEnd, WithAnOpenBookIsClean)
{
    const zeb::test::TempFolder folder;
    const std::string path = folder.File("book.zeb");
    StoreFile::Create(path, "Book", {});
    const std::string command = zeb::platform::OwnFolder() + ZEB_END_HOST + " " + GetParam() + " \"" + path + "\"";
    for (int i = 0; i < 5; ++i)
    {
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, ProviderEnd, testing::Values("exit", "unload", "abandon"),
                         [](const auto& each) { return std::string(each.param); });

} // namespace
} // namespace zebstore
