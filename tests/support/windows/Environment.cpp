#include "tests/support/Environment.h"

#include "platform/text.h"

namespace zeb::test
{

void SetEnvironment(const std::string& name, const std::optional<std::string>& value)
{
    using platform::WideFromUtf8;
    const std::string text = value.value_or("");
    // An empty value removes the variable.
    _wputenv_s(WideFromUtf8(name.data(), name.size()).c_str(), WideFromUtf8(text.data(), text.size()).c_str());
}

} // namespace zeb::test
