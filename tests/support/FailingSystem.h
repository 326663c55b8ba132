// Simulates failing calls of the operating system.
#pragma once

namespace zeb::test
{

/// While it lives, this thread's calls of the system fail after the next `after` ones; with `once` only the first of
/// those. The calls are those that platform/ makes for the library: of the registry, of libraries, of windows and of
/// dates. For programs that link zeb_fail_system. One at a time.
class FailingSystem
{
public:
    /// @param error the system's code of the failure (an errno on Linux, a status on Windows); 0 for a common one
    FailingSystem(int after, bool once, int error = 0);
    ~FailingSystem();
    FailingSystem(const FailingSystem&) = delete;
    FailingSystem& operator=(const FailingSystem&) = delete;

    /// Whether a call has failed so far.
    bool HasFailed() const;
};

/// Counts a call. @return the system's code with which it must fail; 0 when it must succeed
int SystemFailure(int everyday);

} // namespace zeb::test
