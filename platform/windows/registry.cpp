// Windows' own registry.
#include "platform/registry.h"

#include "platform/windows/error.h"

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
        throw RegistryError(std::string("can not ") + action + " '" + name +
                            "': " + SystemMessage(static_cast<DWORD>(status)));
    }
}

} // namespace

struct RegistryKey::Impl
{
    explicit Impl(HKEY opened)
        : key(opened)
    {
    }
    ~Impl() { RegCloseKey(key); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// The bytes of a value and their type; nothing when it is absent or can not be read.
    std::optional<std::pair<DWORD, std::vector<unsigned char>>> Query(const std::string& name) const
    {
        std::vector<unsigned char> bytes(256);
        for (;;)
        {
            DWORD type = 0;
            DWORD size = static_cast<DWORD>(bytes.size());
            const LSTATUS status = RegQueryValueExA(key, name.c_str(), nullptr, &type, bytes.data(), &size);
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

    HKEY key;
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
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExA(RootKey(root), path.c_str(), 0, KEY_READ, &key);
    if (status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND || status == ERROR_ACCESS_DENIED)
    {
        return std::nullopt;
    }
    ThrowIfFailed(status, "open the registry key", path);
    return RegistryKey(std::make_unique<Impl>(key));
}

RegistryKey RegistryKey::Create(RegistryRoot root, const std::string& path)
{
    HKEY key = nullptr;
    ThrowIfFailed(RegCreateKeyExA(RootKey(root), path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr,
                                  &key, nullptr),
                  "create the registry key", path);
    return RegistryKey(std::make_unique<Impl>(key));
}

void RegistryKey::DeleteTree(RegistryRoot root, const std::string& path)
{
    if (path.find_first_not_of('\\') == std::string::npos)
    {
        throw RegistryError("a registry root can not be deleted");
    }
    const LSTATUS status = RegDeleteTreeA(RootKey(root), path.c_str());
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
    std::string text(value->second.begin(), value->second.end());
    text.erase(text.find_last_not_of('\0') + 1);
    return text;
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
    // A key's name has at most 255 characters, of up to two bytes each.
    char name[2 * 256] = {};
    DWORD length = sizeof name;
    if (RegEnumKeyExA(m_impl->key, static_cast<DWORD>(index), name, &length, nullptr, nullptr, nullptr,
                      nullptr) != ERROR_SUCCESS)
    {
        return std::nullopt;
    }
    return std::string(name, length);
}

void RegistryKey::SetStringValue(const std::string& name, const std::string& value)
{
    ThrowIfFailed(RegSetValueExA(m_impl->key, name.c_str(), 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(value.c_str()),
                                 static_cast<DWORD>(value.size() + 1)),
                  "write the registry value", name);
}

void RegistryKey::SetBinaryValue(const std::string& name, const std::vector<unsigned char>& value)
{
    ThrowIfFailed(RegSetValueExA(m_impl->key, name.c_str(), 0, REG_BINARY, value.data(),
                                 static_cast<DWORD>(value.size())),
                  "write the registry value", name);
}

void RegistryKey::DeleteValue(const std::string& name)
{
    const LSTATUS status = RegDeleteValueA(m_impl->key, name.c_str());
    if (status != ERROR_FILE_NOT_FOUND)
    {
        ThrowIfFailed(status, "delete the registry value", name);
    }
}

} // namespace zeb::platform
