#include "platform/processor.h"

#include <windows.h>

namespace zeb::platform
{
namespace
{

// PF_AVX2_INSTRUCTIONS_AVAILABLE, which older headers lack. A system too old to know it answers FALSE.
constexpr DWORD Avx2Feature = 40;

} // namespace

bool HasAvx2()
{
    return IsProcessorFeaturePresent(Avx2Feature) != FALSE;
}

} // namespace zeb::platform
