#include "platform/processor.h"

namespace zeb::platform
{

bool HasAvx2()
{
    return __builtin_cpu_supports("avx2") != 0;
}

} // namespace zeb::platform
