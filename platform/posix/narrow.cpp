#include "platform/narrow.h"

namespace zeb::platform
{

std::string NarrowFromUtf8(const std::string& text)
{
    return text;
}

std::string Utf8FromNarrow(const std::string& text)
{
    return text;
}

std::optional<std::string> NarrowablePath(const std::string& path)
{
    return path;
}

} // namespace zeb::platform
