// A table of named constants.
#pragma once

#include "platform/mapi.h"

/// One constant of a table: its value and its name.
struct ZebNamedValue
{
    /// The constant.
    ULONG value;
    /// Its name; static storage.
    const char* name;
};

/// A table of constants, in its fixed order.
struct ZebNameTable
{
    /// The table's name; static storage.
    const char* name;
    /// The number of rows.
    ULONG count;
    /// The rows; static storage.
    const ZebNamedValue* rows;
};
