// A text given to another program.
#include "platform/commandinput.h"

#include "platform/module.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace
{

using zeb::platform::GiveToCommand;

class CommandInputTest : public testing::Test
{
protected:
    static std::string Copier()
    {
        return (std::filesystem::path(zeb::platform::OwnFolder()) / "input_copier").make_preferred().string() + " ";
    }
    std::string File() const { return m_folder.File("copy"); }

    std::string Copied() const
    {
        std::ifstream stream(File(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    zeb::test::TempFolder m_folder;
};

TEST_F(CommandInputTest, EveryByteArrives)
{
    std::string text = "Gr\xC3\xBC\xC3\x9F"
                       "e\r\n\n\x1A\xF0\x9F\x98\x80\n";
    text.append(300'000, 'x');
    ASSERT_TRUE(GiveToCommand(Copier() + File(), text));
    EXPECT_EQ(Copied(), text);
}

TEST_F(CommandInputTest, AReaderMayEndEarly)
{
    ASSERT_TRUE(GiveToCommand(Copier() + File() + " 1", std::string(3'000'000, 'y')));
    EXPECT_EQ(Copied(), "y");
}

TEST_F(CommandInputTest, AMissingCommandIsReported)
{
    EXPECT_FALSE(GiveToCommand("no-such-command-of-zeb", "text"));
}

} // namespace
