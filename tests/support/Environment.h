// Environment variables of this process.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace zeb::test
{

/// Sets a variable, for getenv and for child processes; nothing removes it. Both are UTF-8.
void SetEnvironment(const std::string& name, const std::optional<std::string>& value);

/// Sets a variable for its lifetime, then restores the old value.
class EnvironmentScope
{
public:
    EnvironmentScope(const std::string& name, const std::optional<std::string>& value)
        : m_name(name)
    {
        if (const char* old = std::getenv(name.c_str()))
        {
            m_old = old;
        }
        SetEnvironment(name, value);
    }
    ~EnvironmentScope() { SetEnvironment(m_name, m_old); }
    EnvironmentScope(const EnvironmentScope&) = delete;
    EnvironmentScope& operator=(const EnvironmentScope&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_old;
};

} // namespace zeb::test
