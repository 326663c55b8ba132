// Changes the rows and bytes of a store file as fuzzed bytes say.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

/// What was changed.
struct StoreDamage
{
    bool rows = false;  ///< cells, rows, the version: the database itself stays sound
    bool bytes = false; ///< bytes of the file, of any page
};

/// Damages the file in up to a few places, past all of its rules; with checksums that match or not.
StoreDamage DamageStore(const std::string& path, FuzzedDataProvider& input);
