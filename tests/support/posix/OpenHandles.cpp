#include "tests/support/OpenHandles.h"

#include <filesystem>
#include <iterator>

namespace zeb::test
{

size_t OpenHandles()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

} // namespace zeb::test
