// Reads the header of a library file without loading it.
#pragma once

#include <string>

namespace zeb::platform
{

/// The header of a library file. Texts are UTF-8.
struct ImageFile
{
    bool exists = false;
    /// The processor it was built for: "x86", "x64", "ARM64"; empty when the file is not a library or for another
    /// processor.
    std::string machine;
    unsigned bits = 0;   ///< 32 or 64; 0 when the machine is empty
    std::string version; ///< of the file, "16.0.17932.20700"; empty when it has none (as on Linux)
};

/// Reads the header of the file at `path` (UTF-8). Throws only std::bad_alloc: an unreadable file counts as missing.
ImageFile ReadImageFile(const std::string& path);

/// The version in the resources of a Windows library; empty when it has none, and always on Linux.
std::string FileVersion(const std::string& path);

} // namespace zeb::platform
