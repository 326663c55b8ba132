#include "tests/support/Environment.h"

namespace zeb::test
{

void SetEnvironment(const std::string& name, const std::optional<std::string>& value)
{
    // An empty value removes the variable.
    _putenv_s(name.c_str(), value ? value->c_str() : "");
}

} // namespace zeb::test
