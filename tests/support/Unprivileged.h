// Work as a user whom the system's file permissions bind.
#pragma once

namespace zeb::test
{

/// For its lifetime this process is no administrator, where the system can say so; else it changes nothing.
class UnprivilegedScope
{
public:
    UnprivilegedScope();
    ~UnprivilegedScope();
    UnprivilegedScope(const UnprivilegedScope&) = delete;
    UnprivilegedScope& operator=(const UnprivilegedScope&) = delete;

    /// True when a folder without the permission to write cannot be written now.
    bool IsInForce() const { return m_inForce; }

private:
    bool m_inForce = false;
    [[maybe_unused]] unsigned m_user = 0; ///< who it was before
};

} // namespace zeb::test
