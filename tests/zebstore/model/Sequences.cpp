#include "tests/zebstore/model/Sequences.h"

#include <cstdlib>

namespace zebstore::model
{

namespace
{

int NumberFrom(const char* variable, int otherwise)
{
    const char* wanted = std::getenv(variable);
    return wanted != nullptr ? std::atoi(wanted) : otherwise;
}

} // namespace

int Sequences()
{
    return NumberFrom("ZEB_MODEL", 40);
}

unsigned FirstSeed()
{
    return static_cast<unsigned>(NumberFrom("ZEB_MODEL_SEED", 1));
}

} // namespace zebstore::model
