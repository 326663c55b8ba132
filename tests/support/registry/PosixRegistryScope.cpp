#include "tests/support/RegistryScope.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

struct RegistryScope::Impl
{
    std::filesystem::path folder;
    std::optional<std::string> before;
};

RegistryScope::RegistryScope()
    : m_impl(std::make_unique<Impl>())
{
    std::string name = (std::filesystem::temp_directory_path() / "zeb-registry-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
    {
        throw std::runtime_error("can not make a folder for the test's registry");
    }
    m_impl->folder = name;
    if (const char* set = std::getenv("ZEBAPI_REGISTRY"))
    {
        m_impl->before = set;
    }
    setenv("ZEBAPI_REGISTRY", (m_impl->folder / "registry.reg").c_str(), 1);
}

RegistryScope::~RegistryScope()
{
    if (m_impl->before)
    {
        setenv("ZEBAPI_REGISTRY", m_impl->before->c_str(), 1);
    }
    else
    {
        unsetenv("ZEBAPI_REGISTRY");
    }
    std::error_code ignored;
    std::filesystem::remove_all(m_impl->folder, ignored);
}
