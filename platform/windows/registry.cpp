// Windows' own registry.
#include "platform/registry.h"

#include "platform/narrow.h"
#include "platform/text.h"
#include "platform/windows/error.h"

#include <cstring>

namespace zeb::platform
{
namespace
{

HKEY RootKey(RegistryRoot root)
{
    switch (root)
    {
    case RegistryRoot::ClassesRoot:
        return HKEY_CLASSES_ROOT;
    case RegistryRoot::CurrentUser:
        return HKEY_CURRENT_USER;
    default:
        return HKEY_LOCAL_MACHINE;
    }
}

void ThrowIfFailed(LSTATUS status, const char* action, const std::string& name)
{
    if (status != ERROR_SUCCESS)
    {
        throw RegistryError(std::string("cannot ") + action + " '" + name +
                            "': " + Utf8FromNarrow(SystemMessage(static_cast<DWORD>(status))));
    }
}

WideString Wide(const std::string& text)
{
    return WideFromUtf8(text.data(), text.size());
}

/// The text with its %VARIABLE%s replaced; one that is not set stays unchanged.
WideString Expanded(const WideString& text)
{
    WideString buffer(text.size() + MAX_PATH, L'\0');
    for (;;)
    {
        const DWORD size = ExpandEnvironmentStringsW(text.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()));
        if (size == 0)
        {
            return text;
        }
        const bool fits = size <= buffer.size();
        buffer.resize(fits ? size - 1 : size);
        if (fits)
        {
            return buffer;
        }
    }
}

} // namespace

struct RegistryKey::Impl
{
    Impl() = default;
    ~Impl()
    {
        if (key != nullptr)
        {
            RegCloseKey(key);
        }
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// The bytes of a value and their type; empty when it is absent or cannot be read.
    std::optional<std::pair<DWORD, std::vector<unsigned char>>> Query(const std::string& name) const
    {
        const WideString wideName = Wide(name);
        std::vector<unsigned char> bytes(512);
        for (;;)
        {
            DWORD type = 0;
            DWORD size = static_cast<DWORD>(bytes.size());
            const LSTATUS status = RegQueryValueExW(key, wideName.c_str(), nullptr, &type, bytes.data(), &size);
            if (status == ERROR_SUCCESS)
            {
                bytes.resize(size);
                return std::make_pair(type, std::move(bytes));
            }
            if (status != ERROR_MORE_DATA)
            {
                return std::nullopt;
            }
            bytes.resize(size > bytes.size() ? size : bytes.size() * 2);
        }
    }

    void Set(const std::string& name, DWORD type, const BYTE* bytes, size_t size) const
    {
        ThrowIfFailed(RegSetValueExW(key, Wide(name).c_str(), 0, type, bytes, static_cast<DWORD>(size)),
                      "write the registry value", name);
    }

    HKEY key = nullptr;
};

RegistryKey::RegistryKey(std::unique_ptr<Impl> impl)
    : m_impl(std::move(impl))
{
}
RegistryKey::RegistryKey(RegistryKey&&) noexcept = default;
RegistryKey& RegistryKey::operator=(RegistryKey&&) noexcept = default;
RegistryKey::~RegistryKey() = default;

std::optional<RegistryKey> RegistryKey::Open(RegistryRoot root, const std::string& path)
{
    auto impl = std::make_unique<Impl>();
    const LSTATUS status = RegOpenKeyExW(RootKey(root), Wide(path).c_str(), 0, KEY_READ, &impl->key);
    if (status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND || status == ERROR_ACCESS_DENIED)
    {
        return std::nullopt;
    }
    ThrowIfFailed(status, "open the registry key", path);
    return RegistryKey(std::move(impl));
}

RegistryKey RegistryKey::Create(RegistryRoot root, const std::string& path)
{
    auto impl = std::make_unique<Impl>();
    ThrowIfFailed(RegCreateKeyExW(RootKey(root), Wide(path).c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr,
                                  &impl->key, nullptr),
                  "create the registry key", path);
    return RegistryKey(std::move(impl));
}

void RegistryKey::DeleteTree(RegistryRoot root, const std::string& path)
{
    if (path.find_first_not_of('\\') == std::string::npos)
    {
        throw RegistryError("a registry root cannot be deleted");
    }
    const LSTATUS status = RegDeleteTreeW(RootKey(root), Wide(path).c_str());
    if (status != ERROR_FILE_NOT_FOUND && status != ERROR_PATH_NOT_FOUND)
    {
        ThrowIfFailed(status, "delete the registry key", path);
    }
}

std::optional<std::string> RegistryKey::StringValue(const std::string& name) const
{
    const auto value = m_impl->Query(name);
    if (!value || (value->first != REG_SZ && value->first != REG_EXPAND_SZ))
    {
        return std::nullopt;
    }
    WideString text(value->second.size() / sizeof(WCHAR), L'\0');
    std::memcpy(text.data(), value->second.data(), text.size() * sizeof(WCHAR));
    text.erase(text.find_last_not_of(L'\0') + 1);
    text = value->first == REG_EXPAND_SZ ? Expanded(text) : text;
    return Utf8FromWide(text.data(), text.size());
}

std::optional<std::vector<unsigned char>> RegistryKey::BinaryValue(const std::string& name) const
{
    auto value = m_impl->Query(name);
    if (!value || value->first != REG_BINARY)
    {
        return std::nullopt;
    }
    return std::move(value->second);
}

std::optional<std::string> RegistryKey::SubKeyName(unsigned long index) const
{
    // A key's name has at most 255 characters.
    WCHAR name[256] = {};
    DWORD length = 256;
    if (RegEnumKeyExW(m_impl->key, static_cast<DWORD>(index), name, &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS)
    {
        return std::nullopt;
    }
    return Utf8FromWide(name, length);
}

void RegistryKey::SetStringValue(const std::string& name, const std::string& value)
{
    const WideString text = Wide(value);
    m_impl->Set(name, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), (text.size() + 1) * sizeof(WCHAR));
}

void RegistryKey::SetBinaryValue(const std::string& name, const std::vector<unsigned char>& value)
{
    m_impl->Set(name, REG_BINARY, value.data(), value.size());
}

void RegistryKey::DeleteValue(const std::string& name)
{
    const LSTATUS status = RegDeleteValueW(m_impl->key, Wide(name).c_str());
    if (status != ERROR_FILE_NOT_FOUND)
    {
        ThrowIfFailed(status, "delete the registry value", name);
    }
}

void RegistryKey::CopyValue(const std::string& from, const std::string& to)
{
    const auto value = m_impl->Query(from);
    if (!value)
    {
        throw RegistryError("the registry value '" + from + "' to copy does not exist");
    }
    m_impl->Set(to, value->first, value->second.data(), value->second.size());
}

} // namespace zeb::platform
