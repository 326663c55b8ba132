// The registry as a tree, and its text form, which Windows' registry editor imports and exports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zeb::platform::regfile
{

/// Whether two names are equal in the registry: without case. Names are UTF-8.
bool SameName(std::string_view a, std::string_view b);

/// One value of a key. Text is stored as text; every other kind as its written form after the '=', so unknown kinds are
/// written back unchanged.
struct Value
{
    std::string name; ///< "" is the default value
    bool isText = false;
    std::string text;    ///< if isText; UTF-8
    std::string written; ///< otherwise, as "hex(2):41,00"

    /// REG_SZ or REG_EXPAND_SZ as UTF-8, without terminators; empty for other kinds.
    std::optional<std::string> AsText() const;
    /// Whether it is REG_EXPAND_SZ.
    bool IsExpandable() const;
    /// REG_BINARY; empty for other kinds.
    std::optional<std::vector<unsigned char>> AsBinary() const;
};

/// One key with its values and sub-keys in the order in which they first appeared.
struct Key
{
    std::string name;
    std::vector<Value> values;
    std::vector<std::unique_ptr<Key>> keys;

    /// A sub-key by its name; null when absent.
    Key* Child(std::string_view childName) const;
    const Value* FindValue(std::string_view valueName) const;
    /// The sub-key at a path of names separated by backslashes; "" is the key itself. Null when absent.
    Key* Find(std::string_view path);
    /// Like Find, but adds missing keys.
    Key& Make(std::string_view path);
    /// Replaces a value of the same name, or adds it.
    void SetValue(Value value);
    void DeleteValue(std::string_view valueName);
    /// Deletes the sub-key at `path` and all below it.
    void DeleteTree(std::string_view path);
};

Value TextValue(std::string name, std::string text);
Value BinaryValue(std::string name, const std::vector<unsigned char>& bytes);

/// A syntax error with its line number, counted from 1.
class SyntaxError : public std::runtime_error
{
public:
    SyntaxError(size_t line, const std::string& what)
        : std::runtime_error(what)
        , m_line(line)
    {
    }
    size_t Line() const { return m_line; }

private:
    size_t m_line;
};

/// Reads a whole file's bytes: UTF-8 with or without its mark, or UTF-16LE with its mark. The tree's
/// top-level keys are the roots (HKEY_LOCAL_MACHINE, ...). Empty bytes are an empty registry. Deletions
/// ("[-KEY]", "name"=-) apply to the lines above them. Comments are not kept.
/// @throws SyntaxError
Key Parse(std::string_view bytes);

/// The bytes of the file for a tree. Lines end with CR LF. Plain ASCII if possible; with other characters, or with text
/// written as bytes, UTF-16LE with its mark, which importers read without loss.
std::string Write(const Key& tree);

} // namespace zeb::platform::regfile
