// The terminal, and what a program prints.
#pragma once

namespace zeb::platform
{

enum class OutputStream
{
    Output, ///< standard output
    Error,  ///< standard error
};

/// Makes the three standard streams carry UTF-8 bytes as they are: no translation of line ends, and a console that
/// shows and gives UTF-8 until the program ends. Call it once, before anything is printed or read.
void PrepareConsole();

bool IsTerminal(OutputStream stream);

/// Whether somebody at a terminal can answer a question: standard input is one.
bool InputIsTerminal();

/// The columns of the terminal behind `stream`; 0 when it is none or does not tell.
int TerminalColumns(OutputStream stream);

/// True when whoever reads standard output can be taken to show UTF-8: a console on Windows, a UTF-8 locale
/// on Linux.
bool OutputShowsUtf8();

} // namespace zeb::platform
