// Ctrl-C.
#pragma once

namespace zeb::platform
{

/// From now on Ctrl-C does not end the process but is noted. Call it before the work that it may interrupt.
void CatchInterrupt();

/// Whether Ctrl-C was pressed since CatchInterrupt.
bool Interrupted();

} // namespace zeb::platform
