// The registry: Windows' own, or on Linux a text file in the format that Windows' registry editor exports.
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace zeb::platform
{

enum class RegistryRoot
{
    ClassesRoot,
    CurrentUser,
    LocalMachine,
};

/// A registry that cannot be read or written: on Linux a file with a syntax error (the message names file
/// and line) or one that cannot be opened or replaced. The message is UTF-8.
class RegistryError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// One open registry key. Names of keys and values compare without case; paths are separated by backslashes. All
/// text, names as well as values, is UTF-8 on both targets.
///
/// On Linux the file named by ZEBAPI_REGISTRY (default $XDG_CONFIG_HOME/zebapi/registry.reg, or
/// ~/.config/zebapi/registry.reg) is read at every Open, and every write replaces the file atomically (temporary file,
/// then rename), under a lock, so two processes do not lose each other's keys. A missing file is an empty registry.
/// Comments in it are lost at the first write that changes something.
class RegistryKey
{
public:
    /// Opens a key for reading; empty when it is absent or access is denied. On Linux the key has the file's content at
    /// the time of opening, plus writes through this object.
    /// @throws RegistryError
    static std::optional<RegistryKey> Open(RegistryRoot root, const std::string& path);

    /// Opens a key for reading and writing, and creates it and the keys above it when absent.
    /// @throws RegistryError
    static RegistryKey Create(RegistryRoot root, const std::string& path);

    /// Deletes a key with all its values and sub-keys; an absent key is not an error.
    /// @throws RegistryError
    static void DeleteTree(RegistryRoot root, const std::string& path);

    RegistryKey(RegistryKey&&) noexcept;
    RegistryKey& operator=(RegistryKey&&) noexcept;
    ~RegistryKey();

    /// A REG_SZ value, or a REG_EXPAND_SZ value with its %VARIABLE%s replaced by this process's (one that is not set
    /// stays unchanged); "" names the default value.
    std::optional<std::string> StringValue(const std::string& name) const;
    std::optional<std::vector<unsigned char>> BinaryValue(const std::string& name) const;

    /// The name of the sub-key at `index` in the registry's order; empty past the last.
    std::optional<std::string> SubKeyName(unsigned long index) const;
    /// The names of all sub-keys of the key at `path`, in the registry's order; none when the key cannot be opened.
    /// @throws RegistryError
    static std::vector<std::string> SubKeyNames(RegistryRoot root, const std::string& path);

    /// Writes REG_SZ. @throws RegistryError
    void SetStringValue(const std::string& name, const std::string& value);
    /// Writes REG_BINARY. @throws RegistryError
    void SetBinaryValue(const std::string& name, const std::vector<unsigned char>& value);
    /// An absent value is not an error. @throws RegistryError
    void DeleteValue(const std::string& name);
    /// Copies type and content of the value `from` to the value `to`; any type.
    /// @throws RegistryError also when `from` is absent
    void CopyValue(const std::string& from, const std::string& to);

    struct Impl;

private:
    explicit RegistryKey(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> m_impl;
};

} // namespace zeb::platform
