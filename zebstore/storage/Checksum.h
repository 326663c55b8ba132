// The checksums by which damage to stored bytes is noticed (XXH3, 64 bits).
#pragma once

#include <cstdint>
#include <string_view>

namespace zebstore
{

/// The same on both targets.
/// @param seed where the bytes belong, so that bytes in the wrong place are noticed too; 0: anywhere
std::uint64_t Checksum(std::string_view bytes, std::uint64_t seed = 0);

} // namespace zebstore
