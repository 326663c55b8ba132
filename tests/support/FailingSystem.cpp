#include "tests/support/FailingSystem.h"

#include "tests/support/ProviderScope.h"

namespace zeb::test
{

namespace
{

thread_local int callsLeft = -1; // -1: none fails
thread_local bool failOnce = false;
thread_local bool hasFailed = false;
thread_local int failure = 0;

} // namespace

FailingSystem::FailingSystem(int after, bool once, int error)
{
    failOnce = once;
    hasFailed = false;
    failure = error;
    callsLeft = after;
}

FailingSystem::~FailingSystem()
{
    callsLeft = -1;
}

bool FailingSystem::HasFailed() const
{
    return hasFailed;
}

int SystemFailure(int everyday)
{
    if (callsLeft < 0 || ProviderScope::IsInside())
    {
        return 0;
    }
    if (callsLeft > 0)
    {
        --callsLeft;
        return 0;
    }
    callsLeft = failOnce ? -1 : 0;
    hasFailed = true;
    return failure != 0 ? failure : everyday;
}

} // namespace zeb::test
