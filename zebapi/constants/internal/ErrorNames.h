// MAPI's result codes by name, as the descriptions of exceptions print them.
#pragma once

#include "platform/mapi.h"

#include <cstddef>

namespace zeb
{

struct ErrorName
{
    ULONG code;
    char name[48]; ///< padded with zeros
};

/// Searched in order: the first row of a code has its name.
extern const ErrorName ErrorNames[];
extern const size_t ErrorNameCount;

} // namespace zeb
