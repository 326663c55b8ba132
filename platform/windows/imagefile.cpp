#include "platform/imagefile.h"

#include "platform/text.h"

#include <winver.h>

#include <vector>

namespace zeb::platform
{

std::string FileVersion(const std::string& path)
{
    const WideString wide = WideFromUtf8(path.data(), path.size());
    const DWORD size = GetFileVersionInfoSizeW(wide.c_str(), nullptr);
    std::vector<unsigned char> block(size);
    void* found = nullptr;
    UINT length = 0;
    if (size == 0 || !GetFileVersionInfoW(wide.c_str(), 0, size, block.data()) ||
        !VerQueryValueW(block.data(), L"\\", &found, &length) || length < sizeof(VS_FIXEDFILEINFO))
    {
        return {};
    }
    const auto* info = static_cast<const VS_FIXEDFILEINFO*>(found);
    return std::to_string(HIWORD(info->dwFileVersionMS)) + "." + std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(info->dwFileVersionLS)) + "." + std::to_string(LOWORD(info->dwFileVersionLS));
}

} // namespace zeb::platform
