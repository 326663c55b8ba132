// What the processor can do.
#pragma once

namespace zeb::platform
{

/// Whether the processor has the AVX2 instructions and the system saves their registers.
bool HasAvx2();

} // namespace zeb::platform
