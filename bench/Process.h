// The tools as processes.
#pragma once

#include <string>
#include <vector>

namespace bench
{

/// Runs a program, which is searched in this program's folder first, and waits for its end; what it prints is dropped.
/// @throws std::runtime_error unless it ends with 0
void RunTool(const std::vector<std::string>& arguments);

} // namespace bench
