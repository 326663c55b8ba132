#include "tests/support/RegistryScope.h"

#include "platform/mapi.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace
{

void Check(LSTATUS status, const char* what)
{
    if (status != ERROR_SUCCESS)
    {
        throw std::runtime_error(std::string(what) + " failed with " + std::to_string(status));
    }
}

const std::pair<HKEY, const char*> roots[] = {
    {HKEY_CLASSES_ROOT, "ClassesRoot"}, {HKEY_LOCAL_MACHINE, "LocalMachine"}, {HKEY_CURRENT_USER, "CurrentUser"}};

} // namespace

struct RegistryScope::Impl
{
    std::string path; ///< below the real HKEY_CURRENT_USER
};

RegistryScope::RegistryScope()
    : m_impl(std::make_unique<Impl>())
{
    m_impl->path = "Software\\ZebAPI-Tests\\" + std::to_string(GetCurrentProcessId());
    RegDeleteTreeA(HKEY_CURRENT_USER, m_impl->path.c_str());
    // The current user's root is redirected last: the keys are made below the real one.
    for (const auto& [root, name] : roots)
    {
        HKEY key = nullptr;
        Check(RegCreateKeyA(HKEY_CURRENT_USER, (m_impl->path + "\\" + name).c_str(), &key), "RegCreateKeyA");
        Check(RegOverridePredefKey(root, key), "RegOverridePredefKey");
        RegCloseKey(key);
    }
}

RegistryScope::~RegistryScope()
{
    for (const auto& [root, name] : roots)
    {
        RegOverridePredefKey(root, nullptr);
    }
    RegDeleteTreeA(HKEY_CURRENT_USER, m_impl->path.c_str());
}

void RegistryScope::SetExpandable(zeb::platform::RegistryRoot root, const std::string& path, const std::string& name,
                                  const std::string& text)
{
    // Redirected like every key below the root.
    const HKEY predefined = root == zeb::platform::RegistryRoot::ClassesRoot   ? HKEY_CLASSES_ROOT
                            : root == zeb::platform::RegistryRoot::CurrentUser ? HKEY_CURRENT_USER
                                                                               : HKEY_LOCAL_MACHINE;
    HKEY key = nullptr;
    Check(RegCreateKeyA(predefined, path.c_str(), &key), "RegCreateKeyA");
    const LSTATUS status =
        RegSetValueExA(key, name.c_str(), 0, REG_EXPAND_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>(text.size() + 1));
    RegCloseKey(key);
    Check(status, "RegSetValueExA");
}
