// The registry as a tree.
#include "platform/posix/regfile.h"

#include "platform/text.h"

#include <algorithm>

namespace zeb::platform::regfile
{
namespace
{

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char UpperAscii(char character)
{
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

bool SameAscii(std::string_view a, std::string_view b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return UpperAscii(x) == UpperAscii(y); });
}

/// Removes the separators at both ends of a path.
std::string_view Trimmed(std::string_view path)
{
    while (!path.empty() && path.front() == '\\')
    {
        path.remove_prefix(1);
    }
    while (!path.empty() && path.back() == '\\')
    {
        path.remove_suffix(1);
    }
    return path;
}

/// Splits the first name off a path.
std::string_view TakeName(std::string_view& path)
{
    const size_t end = path.find('\\');
    const std::string_view name = path.substr(0, end);
    path = end == std::string_view::npos ? std::string_view() : Trimmed(path.substr(end));
    return name;
}

std::optional<std::vector<unsigned char>> BytesOf(std::string_view written, std::string_view kind)
{
    if (written.substr(0, kind.size()) != kind)
    {
        return std::nullopt;
    }
    std::vector<unsigned char> bytes;
    unsigned value = 0;
    bool digits = false;
    for (const char character : std::string(written.substr(kind.size())) + ",")
    {
        if (character == ',')
        {
            if (digits)
            {
                bytes.push_back(static_cast<unsigned char>(value));
            }
            value = 0;
            digits = false;
            continue;
        }
        const char upper = UpperAscii(character);
        value = value << 4 | static_cast<unsigned>(upper <= '9' ? upper - '0' : upper - 'A' + 10);
        digits = true;
    }
    return bytes;
}

} // namespace

bool SameName(std::string_view a, std::string_view b)
{
    if (IsAscii(a) || IsAscii(b))
    {
        return SameAscii(a, b);
    }
    const WideString left = WideFromUtf8(a.data(), a.size());
    const WideString right = WideFromUtf8(b.data(), b.size());
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(),
                                                     [](WCHAR x, WCHAR y) { return UpperWide(x) == UpperWide(y); });
}

std::optional<std::string> Value::AsText() const
{
    if (isText)
    {
        return text;
    }
    for (const std::string_view kind : {"hex(1):", "hex(2):"})
    {
        if (const auto bytes = BytesOf(written, kind))
        {
            WideString wide;
            for (size_t i = 0; i + 1 < bytes->size(); i += 2)
            {
                wide += static_cast<WCHAR>((*bytes)[i] | (*bytes)[i + 1] << 8);
            }
            wide.erase(wide.find_last_not_of(WCHAR(0)) + 1);
            return Utf8FromWide(wide.data(), wide.size());
        }
    }
    return std::nullopt;
}

bool Value::IsExpandable() const
{
    return !isText && BytesOf(written, "hex(2):").has_value();
}

std::optional<std::vector<unsigned char>> Value::AsBinary() const
{
    return isText ? std::nullopt : BytesOf(written, "hex:");
}

Key* Key::Child(std::string_view childName) const
{
    const auto found =
        std::find_if(keys.begin(), keys.end(), [&](const auto& key) { return SameName(key->name, childName); });
    return found == keys.end() ? nullptr : found->get();
}

const Value* Key::FindValue(std::string_view valueName) const
{
    const auto found =
        std::find_if(values.begin(), values.end(), [&](const auto& value) { return SameName(value.name, valueName); });
    return found == values.end() ? nullptr : &*found;
}

Key* Key::Find(std::string_view path)
{
    path = Trimmed(path);
    Key* key = this;
    while (key != nullptr && !path.empty())
    {
        key = key->Child(TakeName(path));
    }
    return key;
}

Key& Key::Make(std::string_view path)
{
    path = Trimmed(path);
    Key* key = this;
    while (!path.empty())
    {
        const std::string_view childName = TakeName(path);
        Key* child = key->Child(childName);
        if (child == nullptr)
        {
            key->keys.push_back(std::make_unique<Key>());
            child = key->keys.back().get();
            child->name = childName;
        }
        key = child;
    }
    return *key;
}

void Key::SetValue(Value value)
{
    for (Value& held : values)
    {
        if (SameName(held.name, value.name))
        {
            value.name = held.name;
            held = std::move(value);
            return;
        }
    }
    values.push_back(std::move(value));
}

void Key::DeleteValue(std::string_view valueName)
{
    values.erase(std::remove_if(values.begin(), values.end(),
                                [&](const auto& value) { return SameName(value.name, valueName); }),
                 values.end());
}

void Key::DeleteTree(std::string_view path)
{
    path = Trimmed(path);
    const size_t last = path.rfind('\\');
    Key* parent = last == std::string_view::npos ? this : Find(path.substr(0, last));
    if (parent == nullptr)
    {
        return;
    }
    const std::string_view childName = last == std::string_view::npos ? path : path.substr(last + 1);
    auto& below = parent->keys;
    below.erase(
        std::remove_if(below.begin(), below.end(), [&](const auto& key) { return SameName(key->name, childName); }),
        below.end());
}

} // namespace zeb::platform::regfile
