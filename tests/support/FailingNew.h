// Simulates failing allocations.
#pragma once

namespace zeb::test
{

/// While it lives, every allocation of this thread after the next `after` ones throws std::bad_alloc; with `once` only
/// the first of those. Allocations are `new` and, in a program that links zeb_fail_shared_memory, the memory that
/// strings and containers share with the library. What is allocated inside a ProviderScope does not fail.
class FailingNew
{
public:
    explicit FailingNew(int after = 0, bool once = false);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    /// Whether an allocation has failed so far.
    bool HasFailed() const;
};

/// Counts an allocation. @return whether it must fail
bool AllocationFails();

} // namespace zeb::test
