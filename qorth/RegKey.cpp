#include "qorth/RegKey.h"

#include "framework/Memory.h"
#include "platform/narrow.h"
#include "platform/registry.h"

#include <optional>
#include <utility>

using zeb::platform::NarrowFromUtf8;
using zeb::platform::RegistryKey;
using zeb::platform::RegistryRoot;
using zeb::platform::Utf8FromNarrow;

namespace
{

std::optional<RegistryKey> Open(HKEY root, const char* path)
{
    const std::string name = path == nullptr ? std::string() : Utf8FromNarrow(path);
    if (root == HKEY_LOCAL_MACHINE)
    {
        return RegistryKey::Open(RegistryRoot::LocalMachine, name);
    }
    if (root == HKEY_CURRENT_USER)
    {
        return RegistryKey::Open(RegistryRoot::CurrentUser, name);
    }
    if (root == HKEY_CLASSES_ROOT)
    {
        return RegistryKey::Open(RegistryRoot::ClassesRoot, name);
    }
    return std::nullopt;
}

} // namespace

CQorRegKey::CQorRegKey(HKEY root, const char* path, int, int)
    : m_key(nullptr)
{
    zeb::framework::WithMemory([&]
    {
        if (std::optional<RegistryKey> key = Open(root, path))
        {
            m_key = new RegistryKey(std::move(*key));
        }
    });
}

CQorRegKey::~CQorRegKey()
{
    delete m_key;
}

CQorRegKey::CQorRegKey(CQorRegKey&& other) noexcept
    : m_key(std::exchange(other.m_key, nullptr))
{
}

CQorRegKey& CQorRegKey::operator=(CQorRegKey&& other) noexcept
{
    std::swap(m_key, other.m_key);
    return *this;
}

bool CQorRegKey::IsOpen() const
{
    return m_key != nullptr;
}

CStringA CQorRegKey::StringValue(const char* name) const
{
    CStringA value;
    GetString(value, name);
    return value;
}

CStringA CQorRegKey::GetString() const
{
    return StringValue("");
}

bool CQorRegKey::GetString(CStringA& value, const char* name, int) const
{
    return zeb::framework::WithMemory([&]
    {
        const auto found = m_key != nullptr ? m_key->StringValue(name == nullptr ? std::string() : Utf8FromNarrow(name))
                                            : std::nullopt;
        value = found ? NarrowFromUtf8(*found).c_str() : "";
        return found.has_value();
    });
}

bool CQorRegKey::EnumKey(ULONG index, CStringA& name) const
{
    return zeb::framework::WithMemory([&]
    {
        const auto found = m_key != nullptr ? m_key->SubKeyName(index) : std::nullopt;
        name = found ? NarrowFromUtf8(*found).c_str() : "";
        return found.has_value();
    });
}
