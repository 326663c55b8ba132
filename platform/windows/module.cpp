// Libraries of the Windows loader.
#include "platform/module.h"

#include "platform/windows/error.h"

#include <vector>

namespace zeb::platform
{
namespace
{

const char HereMark = 0;

/// Calls a function that fills a buffer with a path and returns its length, with a buffer that is long enough.
template <class Fill>
std::string PathFrom(Fill fill)
{
    std::vector<char> buffer(MAX_PATH);
    for (;;)
    {
        const DWORD length = fill(buffer.data(), static_cast<DWORD>(buffer.size()));
        if (length < buffer.size())
        {
            return std::string(buffer.data(), length);
        }
        buffer.resize(buffer.size() * 2 > length ? buffer.size() * 2 : length + 1);
    }
}

bool IsFile(const std::string& path)
{
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool IsBareName(const std::string& path)
{
    return path.find_first_of("\\/:") == std::string::npos;
}

/// The name with the extension that the loader would add.
std::string WithExtension(const std::string& name)
{
    return name.find('.') == std::string::npos ? name + ".dll" : name;
}

std::string FullPath(const std::string& path)
{
    return PathFrom([&](char* to, DWORD size) { return GetFullPathNameA(path.c_str(), size, to, nullptr); });
}

/// Suppresses the system's error boxes in this thread for a scope.
class QuietErrors
{
public:
    explicit QuietErrors(bool quiet)
        : m_quiet(quiet && SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &m_old))
    {
    }
    ~QuietErrors()
    {
        if (m_quiet)
        {
            SetThreadErrorMode(m_old, nullptr);
        }
    }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    DWORD m_old = 0;
    bool m_quiet;
};

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
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, &HereMark,
                       &module);
    const std::string file = PathFrom([&](char* to, DWORD size) { return GetModuleFileNameA(module, to, size); });
    return file.substr(0, file.find_last_of("\\/") + 1);
}

std::string SystemFolder()
{
    return PathFrom([](char* to, DWORD size) { return GetSystemDirectoryA(to, size); });
}

bool IsBareOrAbsolutePath(const std::string& path)
{
    const auto isSeparator = [&path](size_t at) { return path.size() > at && (path[at] == '\\' || path[at] == '/'); };
    const bool hasDrive = path.size() > 2 && path[1] == ':' && isSeparator(2);
    const bool hasServer = isSeparator(0) && isSeparator(1);
    return !path.empty() && (IsBareName(path) || hasDrive || hasServer);
}

std::string ResolveModulePath(const std::string& path)
{
    if (path.empty() || !IsBareName(path))
    {
        return path;
    }
    const std::string name = WithExtension(path);
    for (const std::string& folder : {OwnFolder(), SystemFolder() + "\\"})
    {
        if (IsFile(folder + name))
        {
            return folder + name;
        }
    }
    return {};
}

ModuleHandle LoadModule(const std::string& path, long mode, std::string* reason)
{
    if (path.empty())
    {
        SetReason(reason, "the file name is empty");
        return nullptr;
    }
    const std::string file = ResolveModulePath(path);
    if (file.empty())
    {
        SetReason(reason, path + ": the file does not exist in " + OwnFolder() + " or " + SystemFolder() + "\\");
        return nullptr;
    }
    const QuietErrors quiet((mode & ModuleQuiet) != 0);
    constexpr DWORD Flags =
        LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;
    // Always a full path with backslashes: for anything else the loader uses its search path.
    const HMODULE module = LoadLibraryExA(FullPath(file).c_str(), nullptr, Flags);
    SetReason(reason, module == nullptr ? file + ": " + SystemMessage(GetLastError(), file) : "");
    return module;
}

void* FindExport(ModuleHandle module, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void UnloadModule(ModuleHandle module)
{
    FreeLibrary(static_cast<HMODULE>(module));
}

} // namespace zeb::platform
