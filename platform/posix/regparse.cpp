// Reads the registry editor's text format.
#include "platform/posix/regfile.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace zeb::platform::regfile
{
namespace
{

constexpr std::array<std::string_view, 5> Roots = {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER", "HKEY_LOCAL_MACHINE",
                                                   "HKEY_USERS", "HKEY_CURRENT_CONFIG"};

bool IsBlank(char character)
{
    return character == ' ' || character == '\t';
}

bool IsHexDigit(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

std::string_view Trim(std::string_view text)
{
    while (!text.empty() && IsBlank(text.front()))
    {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back()))
    {
        text.remove_suffix(1);
    }
    return text;
}

size_t LineAt(std::string_view text, size_t position)
{
    return 1 +
           static_cast<size_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n'));
}

std::string DecodeUtf16(std::string_view bytes)
{
    WideString wide;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
    {
        wide +=
            static_cast<WCHAR>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8);
    }
    std::string text = Utf8FromWide(wide.data(), wide.size());
    const WideString again = WideFromUtf8(text.data(), text.size());
    if (again != wide || bytes.size() % 2 != 0)
    {
        const auto differ = std::mismatch(wide.begin(), wide.end(), again.begin(), again.end()).first;
        throw SyntaxError(1 + static_cast<size_t>(std::count(wide.begin(), differ, WCHAR('\n'))),
                          "the text is not UTF-16");
    }
    return text;
}

/// The file's text as UTF-8.
std::string Decode(std::string_view bytes)
{
    if (bytes.substr(0, 2) == "\xFF\xFE")
    {
        return DecodeUtf16(bytes.substr(2));
    }
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF")
    {
        bytes.remove_prefix(3);
    }
    const WideString wide = WideFromUtf8(bytes.data(), bytes.size());
    const std::string again = Utf8FromWide(wide.data(), wide.size());
    if (again != bytes)
    {
        const auto differ = std::mismatch(bytes.begin(), bytes.end(), again.begin(), again.end()).first;
        throw SyntaxError(LineAt(bytes, static_cast<size_t>(differ - bytes.begin())), "the text is not UTF-8");
    }
    return std::string(bytes);
}

/// Iterates over the lines of a text.
class Lines
{
public:
    explicit Lines(std::string_view text)
        : m_rest(text)
    {
    }

    bool Next(std::string_view& line)
    {
        if (m_rest.empty())
        {
            return false;
        }
        const size_t end = m_rest.find('\n');
        line = m_rest.substr(0, end);
        m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
        if (!line.empty() && line.back() == '\r')
        {
            line.remove_suffix(1);
        }
        ++m_number;
        return true;
    }

    size_t Number() const { return m_number; }

private:
    std::string_view m_rest;
    size_t m_number = 0;
};

class Parser
{
public:
    explicit Parser(std::string_view text)
        : m_lines(text)
    {
    }

    Key Run()
    {
        std::string_view line;
        if (m_lines.Next(line))
        {
            ReadHeader(Trim(line));
        }
        while (m_lines.Next(line))
        {
            m_line = m_lines.Number();
            line = Trim(line);
            if (line.empty() || line.front() == ';')
            {
                continue;
            }
            if (line.front() == '[')
            {
                ReadKey(line);
            }
            else
            {
                ReadValue(line);
            }
        }
        return std::move(m_tree);
    }

private:
    [[noreturn]] void Fail(const std::string& what) const { throw SyntaxError(m_line, what); }

    void ReadHeader(std::string_view line)
    {
        m_line = 1;
        m_version4 = line == "REGEDIT4";
        if (!m_version4 && line != "Windows Registry Editor Version 5.00")
        {
            Fail("the first line is neither \"Windows Registry Editor Version 5.00\" nor \"REGEDIT4\"");
        }
    }

    void ReadKey(std::string_view line)
    {
        if (line.back() != ']')
        {
            Fail("a key's line does not end with ']'");
        }
        std::string_view path = line.substr(1, line.size() - 2);
        const bool remove = !path.empty() && path.front() == '-';
        path.remove_prefix(remove ? 1 : 0);
        const std::string_view root = path.substr(0, path.find('\\'));
        if (std::none_of(Roots.begin(), Roots.end(), [&](std::string_view known) { return SameName(known, root); }))
        {
            Fail("unknown registry root '" + std::string(root) + "'");
        }
        if (path.back() == '\\' || path.find("\\\\") != std::string_view::npos)
        {
            Fail("a key has an empty name");
        }
        m_key = nullptr;
        m_inDeletedKey = remove;
        if (remove)
        {
            m_tree.DeleteTree(path);
        }
        else
        {
            m_key = &m_tree.Make(path);
        }
    }

    void ReadValue(std::string_view line)
    {
        if (m_key == nullptr)
        {
            Fail(m_inDeletedKey ? "a value follows a deleted key" : "a value precedes the first key");
        }
        std::string name;
        if (line.front() == '@')
        {
            line.remove_prefix(1);
        }
        else if (line.front() == '"')
        {
            name = TakeQuoted(line);
        }
        else
        {
            Fail("a line is neither a key, a value nor a comment");
        }
        line = Trim(line);
        if (line.empty() || line.front() != '=')
        {
            Fail("no '=' after the name of the value '" + name + "'");
        }
        ReadData(std::move(name), Trim(line.substr(1)));
    }

    void ReadData(std::string name, std::string_view data)
    {
        if (!data.empty() && data.front() == '"')
        {
            std::string text = TakeQuoted(data);
            CheckEnd(data, name);
            m_key->SetValue(TextValue(std::move(name), std::move(text)));
        }
        else if (!data.empty() && data.front() == '-')
        {
            CheckEnd(data.substr(1), name);
            m_key->DeleteValue(name);
        }
        else
        {
            Value value;
            value.written = Written(Joined(data), name);
            value.name = std::move(name);
            m_key->SetValue(std::move(value));
        }
    }

    /// Only a comment may follow a complete value.
    void CheckEnd(std::string_view rest, const std::string& name) const
    {
        rest = Trim(rest);
        if (!rest.empty() && rest.front() != ';')
        {
            Fail("unexpected text after the value '" + name + "'");
        }
    }

    std::string TakeQuoted(std::string_view& line) const
    {
        std::string text;
        for (size_t i = 1; i < line.size(); ++i)
        {
            if (line[i] == '"')
            {
                line.remove_prefix(i + 1);
                return text;
            }
            if (line[i] == '\\' && ++i < line.size() && line[i] != '\\' && line[i] != '"')
            {
                Fail("a backslash inside quotes must be written as \\\\");
            }
            if (i < line.size())
            {
                text += line[i];
            }
        }
        Fail("a quoted text has no closing quote");
    }

    /// `data` with its continuation lines.
    std::string Joined(std::string_view data)
    {
        std::string joined(data);
        std::string_view next;
        while (!joined.empty() && joined.back() == '\\')
        {
            joined.pop_back();
            if (!m_lines.Next(next))
            {
                Fail("the value continues after the end of the file");
            }
            joined += Trim(next);
        }
        return joined;
    }

    /// The written form of a value that is not a quoted text, checked if its kind is known.
    std::string Written(const std::string& data, const std::string& name) const
    {
        const size_t colon = data.find(':');
        const size_t kindEnd = colon == std::string::npos ? 0 : colon;
        const std::string_view kind = std::string_view(data).substr(0, kindEnd);
        if (kind.empty() || !std::all_of(kind.begin(), kind.end(), [](char c)
        { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '(' || c == ')'; }))
        {
            Fail("the value '" + name + "' has no kind");
        }
        const std::string_view rest = std::string_view(data).substr(colon + 1);
        if (kind == "dword")
        {
            return "dword:" + DwordDigits(rest, name);
        }
        if (kind == "hex" || kind.substr(0, 4) == "hex(")
        {
            return AsVersion5(std::string(kind), HexList(rest, name));
        }
        return std::string(Trim(data));
    }

    static std::string_view WithoutComment(std::string_view text) { return Trim(text.substr(0, text.find(';'))); }

    std::string DwordDigits(std::string_view text, const std::string& name) const
    {
        const std::string_view digits = WithoutComment(text);
        if (digits.empty() || digits.size() > 8 || !std::all_of(digits.begin(), digits.end(), IsHexDigit))
        {
            Fail("the value '" + name + "' is not a dword of up to eight hexadecimal digits");
        }
        return std::string(8 - digits.size(), '0') + std::string(digits);
    }

    /// "41, 0," as "41,00".
    std::string HexList(std::string_view text, const std::string& name) const
    {
        std::string list;
        std::string_view rest = WithoutComment(text);
        while (!rest.empty())
        {
            const size_t comma = rest.find(',');
            const std::string_view digits = Trim(rest.substr(0, comma));
            if (digits.empty() || digits.size() > 2 || !std::all_of(digits.begin(), digits.end(), IsHexDigit))
            {
                Fail("the value '" + name + "' is not a list of hexadecimal bytes");
            }
            list += list.empty() ? "" : ",";
            list += digits.size() == 1 ? "0" : "";
            list += digits;
            rest = comma == std::string_view::npos ? std::string_view() : Trim(rest.substr(comma + 1));
        }
        return list;
    }

    /// Text kinds are 8-bit in the old format and 16-bit in the new one.
    std::string AsVersion5(std::string kind, std::string list) const
    {
        if (!m_version4 || (kind != "hex(1)" && kind != "hex(2)" && kind != "hex(7)"))
        {
            return kind + ":" + list;
        }
        Value narrow;
        narrow.written = "hex:" + list;
        const std::vector<unsigned char> bytes = *narrow.AsBinary();
        const WideString wide = WideFromUtf8(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        std::vector<unsigned char> wideBytes;
        for (const WCHAR unit : wide)
        {
            wideBytes.push_back(static_cast<unsigned char>(unit & 0xFF));
            wideBytes.push_back(static_cast<unsigned char>(unit >> 8));
        }
        return kind + BinaryValue("", wideBytes).written.substr(std::strlen("hex"));
    }

    Lines m_lines;
    size_t m_line = 0; ///< the start of the current key or value
    bool m_version4 = false;
    bool m_inDeletedKey = false;
    Key m_tree;
    Key* m_key = nullptr;
};

} // namespace

Key Parse(std::string_view bytes)
{
    return Parser(Decode(bytes)).Run();
}

} // namespace zeb::platform::regfile
