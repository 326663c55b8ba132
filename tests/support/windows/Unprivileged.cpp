#include "tests/support/Unprivileged.h"

namespace zeb::test
{

// Folders have no permission to write here that a file's owner could take away by attributes.
UnprivilegedScope::UnprivilegedScope() = default;
UnprivilegedScope::~UnprivilegedScope() = default;

} // namespace zeb::test
