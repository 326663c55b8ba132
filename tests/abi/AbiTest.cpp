#include "tests/abi/Dump.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

const char* const expected =
#include "expected.inc"
    ;

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

TEST(Abi, EqualsThatOfTheOtherTarget)
{
    const std::vector<std::string> wanted = LinesOf(expected);
    const std::vector<std::string> found = LinesOf(abidump::All());
    ASSERT_GT(wanted.size(), 300u);
    for (size_t i = 0; i < wanted.size() && i < found.size(); ++i)
    {
        EXPECT_EQ(found[i], wanted[i]);
    }
    EXPECT_EQ(found.size(), wanted.size());
}

} // namespace
