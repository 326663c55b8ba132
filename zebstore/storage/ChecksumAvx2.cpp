#include "zebstore/storage/ChecksumAvx2.h"

// For compilers whose intrin.h lacks the types of AVX2.
#include <immintrin.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace zebstore
{

uint64_t ChecksumAvx2(const void* bytes, size_t size, uint64_t seed)
{
    return XXH3_64bits_withSeed(bytes, size, seed);
}

} // namespace zebstore
