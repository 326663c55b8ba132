// Loading libraries at run time.
#pragma once

#include <string>

namespace zeb::platform
{

/// A loaded library; null when there is none.
using ModuleHandle = void*;

/// How LoadModule loads; the bits of CDllLoader's modes. On Linux they change nothing: there are no boxes, and a
/// library finds its dependencies by the run path that it was linked with. On Windows, whatever the mode, they come
/// from the library's own folder, the application's or the system's, never from the current folder or the search path.
enum ModuleMode : long
{
    ModuleKeep = 2,           ///< for the process's calls
    ModuleQuiet = 4,          ///< no error box
    ModuleOwnFolderDeps = 16, ///< dependencies come from the library's own folder
};

/// Loads a library. A bare name is looked for beside this binary, then in the system folder; never in the current
/// folder or on a search path. A path with a folder names exactly that file. An empty path loads nothing. On Linux a
/// path may be written with backslashes: where the literal file is absent they are taken as slashes.
/// @return null when nothing was loaded; `reason`, when given, then says why in the system's words.
ModuleHandle LoadModule(const std::string& path, long mode, std::string* reason = nullptr);

/// Whether a path is a bare file name, or names one file whatever the current folder is. What is neither may be loaded
/// when the user names it, not when it was found in the registry.
bool IsBareOrAbsolutePath(const std::string& path);

/// The address of an export of the library itself, not of one that it depends on; or null.
void* FindExport(ModuleHandle module, const char* name);

void UnloadModule(ModuleHandle module);

/// The file that LoadModule(path) would load: `path` itself, or where a bare name was found; empty when nowhere.
std::string ResolveModulePath(const std::string& path);

/// The folder of the binary (library or program) that holds this code, with a trailing separator.
std::string OwnFolder();

/// The system's library folder, without a trailing separator; empty when the system does not tell.
std::string SystemFolder();

} // namespace zeb::platform
