// Reading the registry.
#pragma once

#include "framework/CString.h"
#include "platform/mapi.h"

namespace zeb::platform
{
class RegistryKey;
}

/// A registry key open for reading, or empty. Names compare without case. Text is narrow: in the ANSI code page on
/// Windows, UTF-8 on Linux.
///
/// On Linux the registry is a text file (platform/registry.h).
class CQorRegKey
{
public:
    /// Opens the key at `path` below `root`: HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER or HKEY_CLASSES_ROOT;
    /// below another root nothing opens. The two numbers request read access, the only supported access.
    /// @throws zeb::platform::RegistryError when the registry cannot be read (a syntax error in its file)
    CQorRegKey(HKEY root, const char* path, int reserved = 0, int readOnly = 1);
    ~CQorRegKey();
    /// Takes the other's key.
    CQorRegKey(CQorRegKey&& other) noexcept;
    /// Takes the other's key; the previous one is closed.
    CQorRegKey& operator=(CQorRegKey&& other) noexcept;

    /// Whether the key exists.
    bool IsOpen() const;

    /// A text value; empty when it is absent, not a text, or no key is open.
    zeb::CStringA StringValue(const char* name) const;
    /// The default value, like StringValue.
    zeb::CStringA GetString() const;
    /// Like StringValue, into `value`. @return whether the value exists
    bool GetString(zeb::CStringA& value, const char* name, int reserved = 1) const;

    /// The name of the sub-key at `index`, counted from 0. @return false past the last; `name` is then empty
    bool EnumKey(ULONG index, zeb::CStringA& name) const;

private:
    zeb::platform::RegistryKey* m_key; ///< owned; null when no key is open
};
