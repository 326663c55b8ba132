// An empty registry for the duration of a test.
#pragma once

#include "platform/registry.h"

#include <memory>
#include <string>

/// While it lives, this process sees an empty HKEY_CLASSES_ROOT, HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE: on Windows
/// redirected below a separate key, on Linux a separate file (ZEBAPI_REGISTRY, which child processes see too). One at a
/// time. Link zeb_test_registry.
class RegistryScope
{
public:
    RegistryScope();
    ~RegistryScope();
    RegistryScope(const RegistryScope&) = delete;
    RegistryScope& operator=(const RegistryScope&) = delete;

    /// Writes a REG_EXPAND_SZ value and creates its key. @param text plain ASCII
    static void SetExpandable(zeb::platform::RegistryRoot root, const std::string& path, const std::string& name,
                              const std::string& text);

    struct Impl;

private:
    std::unique_ptr<Impl> m_impl;
};
