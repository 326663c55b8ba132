// XXH3 for processors with AVX2. C types only: no inline function of this source's own headers may be one that other
// sources share, because the linker keeps one copy of each, and this source's would need AVX2.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace zebstore
{

/// REQUIRES: the processor has AVX2.
uint64_t ChecksumAvx2(const void* bytes, size_t size, uint64_t seed);

} // namespace zebstore
