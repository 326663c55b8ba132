// Ctrl-C.
#pragma once

namespace zeb::platform
{

/// After this call Ctrl-C ends the process immediately with exit code 1, after writing `text` to standard error.
/// Buffered standard output is lost. @param text must stay valid until the process ends
void EndOnInterrupt(const char* text);

/// After this call Ctrl-C only sets a flag. Call it before the work that it may interrupt.
void CatchInterrupt();

/// Whether Ctrl-C was pressed since CatchInterrupt.
bool Interrupted();

} // namespace zeb::platform
