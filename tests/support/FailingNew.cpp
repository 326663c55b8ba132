#include "tests/support/FailingNew.h"

#include "tests/support/ProviderScope.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local int newsLeft = -1; ///< -1: none fails
thread_local bool failOnce = false;
thread_local bool hasFailed = false;
thread_local bool insideNew = false; ///< what `new` itself allocates by is not counted again

} // namespace

namespace zeb::test
{

FailingNew::FailingNew(int after, bool once)
{
    newsLeft = after;
    failOnce = once;
    hasFailed = false;
}

FailingNew::~FailingNew()
{
    newsLeft = -1;
}

bool FailingNew::HasFailed() const
{
    return hasFailed;
}

bool AllocationFails()
{
    if (insideNew || ProviderScope::IsInside())
    {
        return false;
    }
    if (newsLeft == 0)
    {
        newsLeft = failOnce ? -1 : 0;
        hasFailed = true;
        return true;
    }
    if (newsLeft > 0)
    {
        --newsLeft;
    }
    return false;
}

} // namespace zeb::test

void* operator new(size_t size)
{
    if (zeb::test::AllocationFails())
    {
        throw std::bad_alloc();
    }
    insideNew = true;
    void* const block = std::malloc(size != 0 ? size : 1);
    insideNew = false;
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, size_t) noexcept
{
    std::free(block);
}
