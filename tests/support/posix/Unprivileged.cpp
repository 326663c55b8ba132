#include "tests/support/Unprivileged.h"

#include <unistd.h>

namespace zeb::test
{

UnprivilegedScope::UnprivilegedScope()
    : m_user(geteuid())
{
    constexpr uid_t nobody = 65534;
    m_inForce = m_user != 0 || seteuid(nobody) == 0;
}

UnprivilegedScope::~UnprivilegedScope()
{
    if (m_user != geteuid() && seteuid(m_user) != 0)
    {
        _exit(1);
    }
}

} // namespace zeb::test
