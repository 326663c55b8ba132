// What a store file holds, in lines that do not depend on numbers and times.
#pragma once

#include <string>
#include <vector>

namespace zebstore::test
{

/// Sorted lines: each folder, message (with its parts), name of a property and entry of the address book, with a checksum of all
/// of its values. Opens the file for reading and writing, as a host does. @throws Error what opening or reading throws
/// @param problems receives what the store's check finds
std::vector<std::string> DumpStore(const std::string& path, std::vector<std::string>& problems);

} // namespace zebstore::test
