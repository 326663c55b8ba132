// The measurements by name; each target has a list of its own.
#pragma once

#include "bench/Benches.h"

#include <string>
#include <vector>

namespace bench
{

enum class Group
{
    Usual,
    Huge,
    Peers,
};

struct Entry
{
    const char* name;
    Measurement (*make)(const Options&);
    Group group = Group::Usual;
};

extern const std::vector<Entry> Entries;
/// Ends the name of the file of the usual measurements' results.
extern const std::string UsualKind;

} // namespace bench
