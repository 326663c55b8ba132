// What a library file is, read from the file itself: nothing is loaded.
#pragma once

#include <string>

namespace zeb::platform
{

/// The head of a library file. Texts are UTF-8.
struct ImageFile
{
    bool exists = false;
    /// The processor it was built for: "x86", "x64", "ARM64"; empty when the file
    /// is no library or of another processor.
    std::string machine;
    unsigned bits = 0;   ///< 32 or 64; 0 where the machine is empty
    std::string version; ///< of the file, "16.0.17932.20700"; empty when it has none (as on Linux)
};

/// Reads the head of the file at `path` (UTF-8). Never throws but std::bad_alloc: a
/// file that cannot be read does not exist.
ImageFile ReadImageFile(const std::string& path);

/// The version in the resources of a Windows library; empty when it has none, and on Linux.
std::string FileVersion(const std::string& path);

} // namespace zeb::platform
