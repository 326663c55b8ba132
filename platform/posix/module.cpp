// Libraries of the dynamic loader.
#include "platform/module.h"

#include <cstdlib>
#include <memory>

#include <dlfcn.h>
#include <gnu/libc-version.h>
#include <link.h>
#include <sys/stat.h>

namespace zeb::platform
{
namespace
{

std::string FolderOf(const std::string& file)
{
    const size_t slash = file.rfind('/');
    return slash == std::string::npos ? std::string() : file.substr(0, slash);
}

bool IsFile(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::string RealPath(const char* path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path, nullptr), &std::free);
    return real ? real.get() : path;
}

/// The file of the library or program that contains `address`.
std::string FileHolding(const void* address)
{
    Dl_info info = {};
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr)
    {
        return {};
    }
    // The program's own entry has no name; dladdr returns the name with which it was called.
    return RealPath(map->l_name == nullptr || *map->l_name == '\0' ? "/proc/self/exe" : map->l_name);
}

const char HereMark = 0;

std::string WithSlashes(std::string path)
{
    for (char& character : path)
    {
        character = character == '\\' ? '/' : character;
    }
    return path;
}

bool IsBareName(const std::string& path)
{
    return path.find_first_of("/\\") == std::string::npos;
}

/// A Windows path does not name a file here.
bool HasDrive(const std::string& path)
{
    return path.size() > 1 && path[1] == ':';
}

void SetReason(std::string* reason, const std::string& text)
{
    if (reason != nullptr)
    {
        *reason = text;
    }
}

} // namespace

std::string OwnFolder()
{
    static const std::string folder = FolderOf(FileHolding(&HereMark)) + "/";
    return folder;
}

std::string SystemFolder()
{
    static const std::string folder = FolderOf(FileHolding(reinterpret_cast<const void*>(&gnu_get_libc_version)));
    return folder;
}

bool IsBareOrAbsolutePath(const std::string& path)
{
    return !path.empty() && (IsBareName(path) || path.front() == '/' || path.front() == '\\') && !HasDrive(path);
}

std::string ResolveModulePath(const std::string& path)
{
    if (path.empty())
    {
        return {};
    }
    if (!IsBareName(path))
    {
        const std::string mapped = WithSlashes(path);
        return IsFile(path) || !IsFile(mapped) ? path : mapped;
    }
    for (const std::string& folder : {OwnFolder(), SystemFolder() + "/"})
    {
        if (IsFile(folder + path))
        {
            return folder + path;
        }
    }
    return {};
}

ModuleHandle LoadModule(const std::string& path, long, std::string* reason)
{
    if (path.empty())
    {
        SetReason(reason, "the file name is empty");
        return nullptr;
    }
    std::string file = ResolveModulePath(path);
    if (file.empty())
    {
        SetReason(reason, path + ": the file does not exist in " + OwnFolder() + " or " + SystemFolder() + "/");
        return nullptr;
    }
    if (file.find('/') == std::string::npos)
    {
        // A literal name with backslashes: without a slash the loader would use its search path.
        file.insert(0, "./");
    }
    void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    const char* error = module == nullptr ? dlerror() : nullptr;
    SetReason(reason, error == nullptr ? "" : error);
    return module;
}

void* FindExport(ModuleHandle module, const char* name)
{
    void* address = dlsym(module, name);
    // dlsym also searches the library's dependencies, whose exports do not belong to the library.
    link_map* own = nullptr;
    link_map* holder = nullptr;
    Dl_info info = {};
    const bool isOwn = address != nullptr && dlinfo(module, RTLD_DI_LINKMAP, &own) == 0 &&
                       dladdr1(address, &info, reinterpret_cast<void**>(&holder), RTLD_DL_LINKMAP) != 0 &&
                       holder == own;
    return isOwn ? address : nullptr;
}

void UnloadModule(ModuleHandle module)
{
    dlclose(module);
}

} // namespace zeb::platform
