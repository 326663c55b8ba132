// Ctrl-C.
#pragma once

namespace zeb::platform
{

/// From now on Ctrl-C ends the process at once with exit code 1, after writing `text` on standard error. What is
/// buffered for standard output is lost.
/// @param text must live as long as the process
void EndOnInterrupt(const char* text);

/// From now on Ctrl-C does not end the process but is noted. Call it before the work that it may interrupt.
void CatchInterrupt();

/// Whether Ctrl-C was pressed since CatchInterrupt.
bool Interrupted();

} // namespace zeb::platform
