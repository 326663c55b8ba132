// A provider's registry entry, and the value that it replaced.
#pragma once

#include <optional>
#include <string>

namespace zeb::tools
{

/// One registry value below HKEY_LOCAL_MACHINE that names a provider's library. Other values of the same key store the
/// path that was registered through this class and the value that it replaced. Text is UTF-8. All operations throw the
/// registry's errors.
class Registration
{
public:
    /// The mail client's entry, where the library searches first.
    static Registration OfMail();
    /// The Windows Address Book's entry.
    static Registration OfAddressBook();

    const std::string& Key() const { return m_key; }
    /// The value's name; empty for the key's default value.
    const std::string& Value() const { return m_value; }
    std::string ShownName() const { return m_value.empty() ? "(default)" : m_value; }
    /// Key and value as shown in messages.
    std::string Place() const;

    /// The registered path; empty when there is none.
    std::optional<std::string> Current() const;
    /// The saved value that was replaced.
    std::optional<std::string> Replaced() const;
    /// Whether `path` may overwrite the entry without loss: the entry is that path, was registered through this class,
    /// or is another copy of the embedded provider.
    bool IsOwn(const std::string& path) const;
    /// Whether the entry was registered through this class, or is the embedded provider.
    bool IsSetHere() const;

    /// Registers `path` and saves the replaced value if it belongs to another provider.
    void Set(const std::string& path);
    /// Restores the replaced value, or deletes the entry.
    void Remove();

private:
    Registration(std::string key, std::string value);
    std::optional<std::string> Read(const std::string& value) const;

    std::string m_key, m_value;
    std::string m_installed; ///< the name of the value with the path registered through this class
    std::string m_replaced;  ///< the name of the value with the replaced entry
};

} // namespace zeb::tools
