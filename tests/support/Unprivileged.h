// Runs code as a user who is subject to file permissions.
#pragma once

namespace zeb::test
{

/// For its lifetime this process has no administrator rights, if the system supports that; otherwise no effect.
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
