// Writes the registry editor's text format.
#include "platform/posix/regfile.h"

#include "platform/text.h"

#include <algorithm>

namespace zeb::platform::regfile
{
namespace
{

constexpr size_t LineWidth = 78;
constexpr const char* LineEnd = "\r\n";

std::string HexList(const std::vector<unsigned char>& bytes)
{
    constexpr char Digits[] = "0123456789abcdef";
    std::string list;
    for (const unsigned char byte : bytes)
    {
        list += list.empty() ? "" : ",";
        list += Digits[byte >> 4];
        list += Digits[byte & 15];
    }
    return list;
}

std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char character : text)
    {
        quoted += character == '\\' || character == '"' ? "\\" : "";
        quoted += character;
    }
    return quoted + "\"";
}

/// A long line, broken after commas like the registry editor does.
std::string Wrapped(const std::string& line)
{
    std::string wrapped;
    size_t column = 0;
    for (size_t i = 0; i < line.size(); ++i, ++column)
    {
        wrapped += line[i];
        if (line[i] == ',' && column >= LineWidth - 3 && i + 1 < line.size())
        {
            wrapped += std::string("\\") + LineEnd + "  ";
            column = 1;
        }
    }
    return wrapped;
}

/// Only a list of bytes may be broken: for an unknown kind the allowed positions are unknown.
bool IsByteList(const std::string& written)
{
    return written.rfind("hex:", 0) == 0 || written.rfind("hex(", 0) == 0;
}

void WriteKey(std::string& out, const Key& key, const std::string& path)
{
    // A key with only sub-keys is created by theirs.
    if (!key.values.empty() || (key.keys.empty() && path.find('\\') != std::string::npos))
    {
        out += "[" + path + "]" + LineEnd;
        for (const Value& value : key.values)
        {
            const std::string name = (value.name.empty() ? "@" : Quoted(value.name)) + "=";
            out += name + (value.isText ? Quoted(value.text) : "");
            if (IsByteList(value.written))
            {
                // The name before the list must not be broken.
                out += Wrapped(std::string(name.size(), ' ') + value.written).substr(name.size());
            }
            else
            {
                out += value.written;
            }
            out += LineEnd;
        }
        out += LineEnd;
    }
    for (const auto& child : key.keys)
    {
        WriteKey(out, *child, path + "\\" + child->name);
    }
}

bool IsAscii(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Whether an 8-bit file can represent everything below a key: importers disagree about the bytes of text kinds in
/// 8-bit files.
bool IsPlain(const Key& key)
{
    const auto plainValue = [](const Value& value)
    { return IsAscii(value.name) && IsAscii(value.text) && IsAscii(value.written) && value.written.find("hex(") != 0; };
    const auto plainKey = [](const auto& child) { return IsPlain(*child); };
    return IsAscii(key.name) && std::all_of(key.values.begin(), key.values.end(), plainValue) &&
           std::all_of(key.keys.begin(), key.keys.end(), plainKey);
}

std::string AsUtf16(const std::string& text)
{
    std::string bytes = "\xFF\xFE";
    for (const WCHAR unit : WideFromUtf8(text.data(), text.size()))
    {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

} // namespace

Value TextValue(std::string name, std::string text)
{
    Value value;
    value.name = std::move(name);
    if (std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }))
    {
        value.isText = true;
        value.text = std::move(text);
        return value;
    }
    // Quoted text cannot contain line ends and other control characters.
    std::vector<unsigned char> bytes;
    for (const WCHAR unit : WideFromUtf8(text.data(), text.size()) + WCHAR(0))
    {
        bytes.push_back(static_cast<unsigned char>(unit & 0xFF));
        bytes.push_back(static_cast<unsigned char>(unit >> 8));
    }
    value.written = "hex(1):" + HexList(bytes);
    return value;
}

Value BinaryValue(std::string name, const std::vector<unsigned char>& bytes)
{
    Value value;
    value.name = std::move(name);
    value.written = "hex:" + HexList(bytes);
    return value;
}

std::string Write(const Key& tree)
{
    std::string out = std::string("Windows Registry Editor Version 5.00") + LineEnd + LineEnd;
    for (const auto& root : tree.keys)
    {
        WriteKey(out, *root, root->name);
    }
    return IsPlain(tree) ? out : AsUtf16(out);
}

} // namespace zeb::platform::regfile
