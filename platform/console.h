// The terminal and the standard streams.
#pragma once

namespace zeb::platform
{

enum class OutputStream
{
    Output, ///< standard output
    Error,  ///< standard error
};

/// Sets the three standard streams to raw UTF-8: no translation of line ends, and a console in UTF-8 until the program
/// ends. Call it once, before any input or output.
void PrepareConsole();

bool IsTerminal(OutputStream stream);

/// Whether standard input is a terminal, so a user can answer a question.
bool InputIsTerminal();

/// Lets control sequences for colours take effect. @return false when `stream` is not a terminal that has them
bool EnableColors(OutputStream stream);

/// The columns of the terminal of `stream`; 0 when it is not a terminal or the width is unknown.
int TerminalColumns(OutputStream stream);

/// True when standard output probably displays UTF-8: a console on Windows, a UTF-8 locale on Linux.
bool OutputShowsUtf8();

} // namespace zeb::platform
