// What a test program that replaces qorth's loader and system functions sees and says.
#pragma once

#include <string>
#include <vector>

bool QorIsWinVistaorHigher();

namespace zeb::test
{

struct Load
{
    std::string path;
    long mode;

    bool operator==(const Load& other) const { return path == other.path && mode == other.mode; }
};

/// Every load so far, in order.
std::vector<Load>& Loads();

/// What QorIsWinVistaorHigher answers.
extern bool isVista;

} // namespace zeb::test
