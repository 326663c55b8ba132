// Who wants to know of commits.
#pragma once

namespace zebstore
{

/// Observer of a connection's commits. Threads: called from any.
class CommitObserver
{
public:
    /// Called after each commit, on the committing thread and under the connection's lock.
    virtual void Committed() noexcept = 0;

protected:
    ~CommitObserver() = default;
};

} // namespace zebstore
