#include "platform/arguments.h"

namespace zeb::platform
{

std::vector<std::string> Arguments(int argc, char** argv)
{
    return argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

} // namespace zeb::platform
