#include "tools/zeb/Registration.h"

#include "platform/registry.h"
#include "tools/common/Output.h"
#include "zebstore/zebstore.h"

#include <filesystem>

namespace zeb::tools
{
namespace
{

using platform::RegistryKey;
using platform::RegistryRoot;

bool SameFile(const std::string& a, const std::string& b)
{
    return WideFromUtf8(a).CompareNoCase(WideFromUtf8(b)) == 0;
}

/// Whether a path names a copy of the embedded provider, of either target.
bool IsEmbedded(const std::string& path)
{
    const std::string name = path.substr(path.find_last_of("/\\") + 1);
    const std::string stem = std::filesystem::u8path(ZEBSTORE_DLL_NAME).stem().u8string();
    return SameFile(name, ZEBSTORE_DLL_NAME) || SameFile(name, "lib" + stem + ".so");
}

} // namespace

Registration::Registration(std::string key, std::string value)
    : m_key(std::move(key))
    , m_value(std::move(value))
    , m_installed(m_value.empty() ? "Zeb.Installed" : m_value + ".Zeb.Installed")
    , m_replaced(m_value.empty() ? "Zeb.Replaced" : m_value + ".Zeb.Replaced")
{
}

Registration Registration::OfMail()
{
    return {"SOFTWARE\\Clients\\Mail\\Microsoft Outlook", "DLLPathEx"};
}

Registration Registration::OfAddressBook()
{
    return {"SOFTWARE\\Microsoft\\WAB\\DLLPath", ""};
}

std::string Registration::Place() const
{
    return "HKEY_LOCAL_MACHINE\\" + m_key + (m_value.empty() ? "" : ", value " + m_value);
}

std::optional<std::string> Registration::Read(const std::string& value) const
{
    const auto key = RegistryKey::Open(RegistryRoot::LocalMachine, m_key);
    const auto text = key ? key->StringValue(value) : std::nullopt;
    return text && !text->empty() ? text : std::nullopt;
}

std::optional<std::string> Registration::Current() const
{
    return Read(m_value);
}

std::optional<std::string> Registration::Replaced() const
{
    return Read(m_replaced);
}

bool Registration::IsOwn(const std::string& path) const
{
    const auto current = Current();
    return current && (SameFile(*current, path) || IsSetHere());
}

bool Registration::IsSetHere() const
{
    const auto current = Current(), installed = Read(m_installed);
    return current && ((installed && SameFile(*current, *installed)) || IsEmbedded(*current));
}

void Registration::Set(const std::string& path)
{
    const auto current = Current();
    if (current && SameFile(*current, path) && !IsSetHere())
    {
        return; // another provider's entry for the same file, which Remove must not delete
    }
    const bool replaces = current && !IsOwn(path);
    RegistryKey key = RegistryKey::Create(RegistryRoot::LocalMachine, m_key);
    if (replaces)
    {
        key.CopyValue(m_value, m_replaced);
    }
    key.SetStringValue(m_installed, path);
    key.SetStringValue(m_value, path);
}

void Registration::Remove()
{
    RegistryKey key = RegistryKey::Create(RegistryRoot::LocalMachine, m_key);
    if (Replaced())
    {
        key.CopyValue(m_replaced, m_value);
    }
    else
    {
        key.DeleteValue(m_value);
    }
    key.DeleteValue(m_replaced);
    key.DeleteValue(m_installed);
}

} // namespace zeb::tools
