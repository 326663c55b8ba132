// The command line in UTF-8.
#pragma once

#include <string>
#include <vector>

namespace zeb::platform
{

/// The arguments without the program's name. On Linux those of main as they are; on Windows those of the process's own
/// command line as UTF-8, because main has them in the ANSI code page, which cannot say every text.
std::vector<std::string> Arguments(int argc, char** argv);

} // namespace zeb::platform
