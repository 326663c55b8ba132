// The open handles of this process.
#pragma once

#include <cstddef>

namespace zeb::test
{

/// The number of the system's handles (Windows) or file descriptors (Linux) that this process holds.
size_t OpenHandles();

} // namespace zeb::test
