// The memory that host and library share fails under FailingNew: the linker (--wrap) sends malloc here.
#include "tests/support/FailingNew.h"

#include <cstddef>

extern "C" void* __real_malloc(size_t size);

extern "C" void* __wrap_malloc(size_t size)
{
    return zeb::test::AllocationFails() ? nullptr : __real_malloc(size);
}
