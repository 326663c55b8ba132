#include "tests/support/Environment.h"

namespace zeb::test
{

void SetEnvironment(const std::string& name, const std::optional<std::string>& value)
{
    if (value)
    {
        setenv(name.c_str(), value->c_str(), 1);
    }
    else
    {
        unsetenv(name.c_str());
    }
}

} // namespace zeb::test
