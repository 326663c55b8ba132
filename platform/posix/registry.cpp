// The registry as a text file.
#include "platform/registry.h"

#include "platform/posix/regfile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zeb::platform
{
namespace
{

constexpr mode_t PrivateFolder = 0700;
constexpr mode_t NewFile = 0600;

std::string RootName(RegistryRoot root)
{
    switch (root)
    {
    case RegistryRoot::ClassesRoot:
        return "HKEY_CLASSES_ROOT";
    case RegistryRoot::CurrentUser:
        return "HKEY_CURRENT_USER";
    default:
        return "HKEY_LOCAL_MACHINE";
    }
}

const char* NonEmpty(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

std::string FilePath()
{
    if (const char* named = NonEmpty("ZEBAPI_REGISTRY"))
    {
        return named;
    }
    if (const char* config = NonEmpty("XDG_CONFIG_HOME"))
    {
        return std::string(config) + "/zebapi/registry.reg";
    }
    if (const char* home = NonEmpty("HOME"))
    {
        return std::string(home) + "/.config/zebapi/registry.reg";
    }
    throw RegistryError("no path for the registry file: ZEBAPI_REGISTRY, XDG_CONFIG_HOME and HOME are empty");
}

[[noreturn]] void Fail(const char* action, const std::string& path, int error)
{
    throw RegistryError(std::string("cannot ") + action + " the registry file '" + path + "': " + std::strerror(error));
}

/// Closes a file descriptor at the end of a scope.
class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool Valid() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }
    bool Close()
    {
        const int closing = m_descriptor;
        m_descriptor = -1;
        return closing < 0 || close(closing) == 0;
    }

private:
    int m_descriptor;
};

std::string ReadAll(const std::string& path)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.Valid())
    {
        if (errno == ENOENT)
        {
            return {};
        }
        Fail("read", path, errno);
    }
    std::string bytes;
    char buffer[16384];
    for (;;)
    {
        const ssize_t count = read(file.Get(), buffer, sizeof buffer);
        if (count == 0)
        {
            return bytes;
        }
        if (count > 0)
        {
            bytes.append(buffer, static_cast<size_t>(count));
        }
        else if (errno != EINTR)
        {
            Fail("read", path, errno);
        }
    }
}

std::shared_ptr<regfile::Key> ReadTree(const std::string& path)
{
    try
    {
        return std::make_shared<regfile::Key>(regfile::Parse(ReadAll(path)));
    }
    catch (const regfile::SyntaxError& error)
    {
        throw RegistryError("the registry file '" + path + "' has an error in line " + std::to_string(error.Line()) +
                            ": " + error.what());
    }
}

void MakeFoldersAbove(const std::string& path)
{
    for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
    {
        const std::string folder = path.substr(0, slash);
        if (mkdir(folder.c_str(), PrivateFolder) != 0 && errno != EEXIST)
        {
            Fail("write", path, errno);
        }
    }
}

bool WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
        {
            return false;
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<size_t>(count));
    }
    return true;
}

/// Replaces the file atomically: `path` always has the old or the new content.
void Replace(const std::string& path, const std::string& bytes)
{
    struct stat old = {};
    const mode_t mode = stat(path.c_str(), &old) == 0 ? old.st_mode & 07777 : NewFile;
    std::string partial = path + ".XXXXXX";
    Descriptor file(mkostemp(partial.data(), O_CLOEXEC));
    if (!file.Valid())
    {
        Fail("write", path, errno);
    }
    if (!WriteAll(file.Get(), bytes) || fchmod(file.Get(), mode) != 0 || fsync(file.Get()) != 0 || !file.Close() ||
        rename(partial.c_str(), path.c_str()) != 0)
    {
        const int error = errno;
        unlink(partial.c_str());
        Fail("write", path, error);
    }
}

/// The target of a link: the file is replaced, not the link.
std::string LinkTarget(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? real.get() : path;
}

/// Reads the file, changes the tree and replaces the file, with a lock against all processes and threads.
/// @return the changed tree.
std::shared_ptr<regfile::Key> Change(const std::string& named, const std::function<void(regfile::Key&)>& change)
{
    MakeFoldersAbove(named);
    const std::string path = LinkTarget(named);
    const std::string lockPath = path + ".lock";
    const Descriptor lock(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, NewFile));
    if (!lock.Valid())
    {
        Fail("lock", path, errno);
    }
    while (flock(lock.Get(), LOCK_EX) != 0)
    {
        if (errno != EINTR)
        {
            Fail("lock", path, errno);
        }
    }
    auto tree = ReadTree(path);
    const std::string before = regfile::Write(*tree);
    change(*tree);
    const std::string after = regfile::Write(*tree);
    if (after != before)
    {
        Replace(path, after);
    }
    return tree;
}

/// Names are written into lines, so they cannot contain line ends.
void CheckName(const std::string& name, const char* what)
{
    for (const char character : name)
    {
        if (static_cast<unsigned char>(character) < 0x20)
        {
            throw RegistryError(std::string("the name of a registry ") + what + " has a control character");
        }
    }
}

/// The text with its %VARIABLE%s replaced; one that is not set stays unchanged.
std::string Expanded(const std::string& text)
{
    std::string out;
    size_t from = 0;
    for (;;)
    {
        const size_t begin = text.find('%', from);
        const size_t end = begin == std::string::npos ? begin : text.find('%', begin + 1);
        if (end == std::string::npos)
        {
            return out + text.substr(from);
        }
        const char* value = std::getenv(text.substr(begin + 1, end - begin - 1).c_str());
        out += text.substr(from, begin - from);
        // The '%' that ends an unset name may begin the next one.
        out += value != nullptr ? value : text.substr(begin, end - begin);
        from = value != nullptr ? end + 1 : end;
    }
}

} // namespace

struct RegistryKey::Impl
{
    std::string file;
    std::string path; ///< from the root's name on
    std::shared_ptr<regfile::Key> tree;
    regfile::Key* key;

    void Update(const std::function<void(regfile::Key&)>& change)
    {
        tree = Change(file, [&](regfile::Key& root) { change(root.Make(path)); });
        key = &tree->Make(path);
    }
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
    const std::string full = RootName(root) + "\\" + path;
    const std::string file = FilePath();
    const auto tree = ReadTree(file);
    regfile::Key* key = tree->Find(full);
    if (key == nullptr)
    {
        return std::nullopt;
    }
    return RegistryKey(std::make_unique<Impl>(Impl{file, full, tree, key}));
}

RegistryKey RegistryKey::Create(RegistryRoot root, const std::string& path)
{
    CheckName(path, "key");
    auto impl = std::make_unique<Impl>(Impl{FilePath(), RootName(root) + "\\" + path, nullptr, nullptr});
    impl->Update([](regfile::Key&) {});
    return RegistryKey(std::move(impl));
}

void RegistryKey::DeleteTree(RegistryRoot root, const std::string& path)
{
    if (path.find_first_not_of('\\') == std::string::npos)
    {
        throw RegistryError("a registry root cannot be deleted");
    }
    const std::string file = FilePath();
    const std::string full = RootName(root) + "\\" + path;
    if (ReadTree(file)->Find(full) != nullptr)
    {
        Change(file, [&](regfile::Key& tree) { tree.DeleteTree(full); });
    }
}

std::optional<std::string> RegistryKey::StringValue(const std::string& name) const
{
    const regfile::Value* value = m_impl->key->FindValue(name);
    std::optional<std::string> text = value == nullptr ? std::nullopt : value->AsText();
    return text && value->IsExpandable() ? Expanded(*text) : text;
}

std::optional<std::vector<unsigned char>> RegistryKey::BinaryValue(const std::string& name) const
{
    const regfile::Value* value = m_impl->key->FindValue(name);
    return value == nullptr ? std::nullopt : value->AsBinary();
}

std::optional<std::string> RegistryKey::SubKeyName(unsigned long index) const
{
    const auto& keys = m_impl->key->keys;
    return index < keys.size() ? std::optional<std::string>(keys[index]->name) : std::nullopt;
}

void RegistryKey::SetStringValue(const std::string& name, const std::string& value)
{
    CheckName(name, "value");
    m_impl->Update([&](regfile::Key& key) { key.SetValue(regfile::TextValue(name, value)); });
}

void RegistryKey::SetBinaryValue(const std::string& name, const std::vector<unsigned char>& value)
{
    CheckName(name, "value");
    m_impl->Update([&](regfile::Key& key) { key.SetValue(regfile::BinaryValue(name, value)); });
}

void RegistryKey::DeleteValue(const std::string& name)
{
    m_impl->Update([&](regfile::Key& key) { key.DeleteValue(name); });
}

void RegistryKey::CopyValue(const std::string& from, const std::string& to)
{
    CheckName(to, "value");
    m_impl->Update([&](regfile::Key& key)
    {
        const regfile::Value* found = key.FindValue(from);
        if (found == nullptr)
        {
            throw RegistryError("the registry value '" + from + "' to copy does not exist");
        }
        regfile::Value copy = *found;
        copy.name = to;
        key.SetValue(std::move(copy));
    });
}

} // namespace zeb::platform
