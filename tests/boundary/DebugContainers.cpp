// This host's containers are not those of a plain build, or the other tests of this program would show nothing.
#include <gtest/gtest.h>

#include <iterator>
#include <unordered_map>

namespace
{

TEST(DebugContainers, AreThoseOfThisHost)
{
#if defined(_GLIBCXX_DEBUG)
    EXPECT_NE(sizeof(std::unordered_map<int, int>), sizeof(std::_GLIBCXX_STD_C::unordered_map<int, int>));
#elif defined(_LIBCPP_DEBUG)
    EXPECT_EQ(_LIBCPP_DEBUG_LEVEL, 2);
#elif defined(_ITERATOR_DEBUG_LEVEL)
    EXPECT_EQ(_ITERATOR_DEBUG_LEVEL, 1);
#else
    FAIL() << "the standard library does not check its containers";
#endif
}

} // namespace
