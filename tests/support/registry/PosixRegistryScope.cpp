#include "tests/support/RegistryScope.h"

#include "platform/posix/regfile.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
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
        throw std::runtime_error("cannot create a folder for the test's registry");
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

namespace
{

const char* RootName(zeb::platform::RegistryRoot root)
{
    switch (root)
    {
    case zeb::platform::RegistryRoot::ClassesRoot:
        return "HKEY_CLASSES_ROOT\\";
    case zeb::platform::RegistryRoot::CurrentUser:
        return "HKEY_CURRENT_USER\\";
    default:
        return "HKEY_LOCAL_MACHINE\\";
    }
}

} // namespace

void RegistryScope::SetExpandable(zeb::platform::RegistryRoot root, const std::string& path, const std::string& name,
                                  const std::string& text)
{
    namespace regfile = zeb::platform::regfile;
    const std::string file = std::getenv("ZEBAPI_REGISTRY");
    std::ifstream input(file, std::ios::binary);
    regfile::Key tree =
        regfile::Parse(std::string(std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()));
    regfile::Value value;
    value.name = name;
    value.written = "hex(2):";
    for (const char character : text + '\0')
    {
        char bytes[8];
        std::snprintf(bytes, sizeof bytes, "%02x,00,", static_cast<unsigned char>(character));
        value.written += bytes;
    }
    value.written.pop_back();
    tree.Make(RootName(root) + path).SetValue(value);
    std::ofstream(file, std::ios::binary | std::ios::trunc) << regfile::Write(tree);
}
