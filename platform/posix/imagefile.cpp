#include "platform/imagefile.h"

namespace zeb::platform
{

std::string FileVersion(const std::string&)
{
    return {};
}

} // namespace zeb::platform
