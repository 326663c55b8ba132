#include "tests/abi/Dump.h"

#include <cstdio>

int main()
{
    std::fputs(abidump::All().c_str(), stdout);
}
