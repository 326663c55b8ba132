// A table of named constants.
#pragma once

#include "platform/mapi.h"

/// One constant of a table: its value and its name.
struct ZebNamedValue
{
    ULONG value;
    const char* name;
};

/// A table of constants, in its fixed order.
struct ZebNameTable
{
    const char* name;
    ULONG count;
    const ZebNamedValue* rows;
};
