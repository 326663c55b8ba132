// Loading libraries at run time.
#pragma once

#include <string>

namespace zeb::platform
{

/// A loaded library; null when there is none.
using ModuleHandle = void*;

/// How LoadModule loads; the bits of CDllLoader's modes. On Linux they have no effect: there are no error boxes, and a
/// library finds its dependencies by its run path. On Windows dependencies come, in every mode, from the library's own
/// folder, the application's or the system's, never from the current folder or the search path.
enum ModuleMode : long
{
    ModuleKeep = 2,           ///< for the process's calls
    ModuleQuiet = 4,          ///< no error box
    ModuleOwnFolderDeps = 16, ///< dependencies come from the library's own folder
};

/// Loads a library. A bare name is searched in the folder of this binary, then in the system folder; never in the
/// current folder or on a search path. A path with a folder names exactly that file. An empty path loads nothing. On
/// Linux a path may be written with backslashes: when the literal file does not exist they count as slashes. @return
/// null when nothing was loaded; `reason`, if not null, then gets the system's error text.
ModuleHandle LoadModule(const std::string& path, long mode, std::string* reason = nullptr);

/// Whether a path is a bare file name, or independent of the current folder. Other paths may be loaded when the user
/// gives them, but not when they come from the registry.
bool IsBareOrAbsolutePath(const std::string& path);

/// The address of an export of the library itself, not of its dependencies; null when it does not exist.
void* FindExport(ModuleHandle module, const char* name);

void UnloadModule(ModuleHandle module);

/// The file that LoadModule(path) would load: `path` itself, or the location of a bare name; empty when it was not
/// found.
std::string ResolveModulePath(const std::string& path);

/// The folder of the binary (library or program) that holds this code, with a trailing separator.
std::string OwnFolder();

/// The system's library folder, without a trailing separator; empty when unknown.
std::string SystemFolder();

} // namespace zeb::platform
