#include "tests/support/FailingNew.h"

#include <cstdlib>
#include <new>

namespace
{

thread_local int newsLeft = -1; ///< -1: none fails
thread_local bool failOnce = false;

} // namespace

namespace zeb::test
{

FailingNew::FailingNew(int after, bool once)
{
    newsLeft = after;
    failOnce = once;
}

FailingNew::~FailingNew()
{
    newsLeft = -1;
}

} // namespace zeb::test

void* operator new(size_t size)
{
    if (newsLeft == 0)
    {
        newsLeft = failOnce ? -1 : 0;
        throw std::bad_alloc();
    }
    if (newsLeft > 0)
    {
        --newsLeft;
    }
    if (void* block = std::malloc(size != 0 ? size : 1))
    {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, size_t) noexcept
{
    std::free(block);
}
