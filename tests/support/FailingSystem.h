// Makes calls of the operating system fail on purpose.
#pragma once

namespace zeb::test
{

/// While it lives, this thread's calls of the system fail after the next `after` ones; with `once` only the first of
/// those. The calls are those that platform/ makes for the library: of the registry, of libraries, of windows and of
/// dates. For programs that link zeb_fail_system. One at a time.
class FailingSystem
{
public:
    /// @param error the system's code of the failure (an errno on Linux, a status on Windows); 0 for an everyday one
    FailingSystem(int after, bool once, int error = 0);
    ~FailingSystem();
    FailingSystem(const FailingSystem&) = delete;
    FailingSystem& operator=(const FailingSystem&) = delete;

    /// Whether a call has failed by now.
    bool HasFailed() const;
};

/// Counts a call. @return the system's code that it is to fail with; 0 when it is not to fail
int SystemFailure(int everyday);

} // namespace zeb::test
