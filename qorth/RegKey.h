// Reading the registry.
#pragma once

#include "framework/CString.h"
#include "platform/mapi.h"

namespace zeb::platform
{
class RegistryKey;
}

/// One registry key, open for reading, or none. Names compare without case. Text is narrow: in the ANSI code page on
/// Windows, UTF-8 on Linux.
///
/// On Linux the registry is a text file (platform/registry.h).
class CQorRegKey
{
public:
    /// Opens the key at `path` below `root`: HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER or HKEY_CLASSES_ROOT;
    /// below another root nothing opens. The two numbers ask for read access, the only one there is.
    /// @throws zeb::platform::RegistryError when the registry cannot be read (a syntax error in its file)
    CQorRegKey(HKEY root, const char* path, int reserved = 0, int readOnly = 1);
    ~CQorRegKey();
    CQorRegKey(CQorRegKey&& other) noexcept;
    CQorRegKey& operator=(CQorRegKey&& other) noexcept;

    /// Whether the key is there.
    bool IsOpen() const;

    /// A text value, or an empty text when it is absent, no text, or nothing is open.
    zeb::CStringA StringValue(const char* name) const;
    /// The default value, as StringValue.
    zeb::CStringA GetString() const;
    /// As StringValue, into `value`. @return whether the value is there.
    bool GetString(zeb::CStringA& value, const char* name, int reserved = 1) const;

    /// The name of the sub-key at `index`, counted from 0. @return false past the last; `name` is empty then.
    bool EnumKey(ULONG index, zeb::CStringA& name) const;

private:
    zeb::platform::RegistryKey* m_key; ///< owned; null when nothing is open
};
