// The command line in UTF-8.
#pragma once

#include <string>
#include <vector>

namespace zeb::platform
{

/// The arguments without the program's name. On Linux those of main unchanged; on Windows those of the process's
/// command line as UTF-8, because main has them in the ANSI code page, which cannot represent every text.
std::vector<std::string> Arguments(int argc, char** argv);

} // namespace zeb::platform
