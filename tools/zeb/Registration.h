// A provider's entry in the registry, and what it took the place of.
#pragma once

#include <optional>
#include <string>

namespace zeb::tools
{

/// One registry value below HKEY_LOCAL_MACHINE that names a provider's library. Next to it, in values of the same key,
/// the path that was registered through this class and the value that it replaced are kept. Text is UTF-8.
/// All operations throw what the registry throws.
class Registration
{
public:
    /// The mail client's entry, where the library looks first.
    static Registration OfMail();
    /// The Windows Address Book's.
    static Registration OfAddressBook();

    const std::string& Key() const { return m_key; }
    /// The value's name; empty for the key's default value.
    const std::string& Value() const { return m_value; }
    std::string ShownName() const { return m_value.empty() ? "(default)" : m_value; }
    /// Key and value as a sentence names them.
    std::string Place() const;

    /// The path that is registered; nothing when there is none.
    std::optional<std::string> Current() const;
    /// What was replaced and is kept.
    std::optional<std::string> Replaced() const;
    /// Whether what is registered may be overwritten by `path` without loss: it is that path, was registered through
    /// this class, or is another copy of the embedded provider.
    bool IsOwn(const std::string& path) const;
    /// Whether what is registered was registered through this class, or is the embedded provider.
    bool IsSetHere() const;

    /// Registers `path` and keeps what it replaces, if that was another's.
    void Set(const std::string& path);
    /// Puts back what was replaced, or leaves no value.
    void Remove();

private:
    Registration(std::string key, std::string value);
    std::optional<std::string> Read(const std::string& value) const;

    std::string m_key, m_value;
    std::string m_installed; ///< the name of the value that keeps what was registered through this class
    std::string m_replaced;  ///< the name of the value that keeps what was replaced
};

} // namespace zeb::tools
