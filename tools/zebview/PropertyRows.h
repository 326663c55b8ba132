// The properties of an object as rows of a list, and whole values as text.
#pragma once

#include "tools/common/Property.h"

#include <string>
#include <vector>

namespace zeb::view
{

/// A property with the texts of its row. A value that MAPI gives through a stream only is not read until it is opened.
struct PropertyRow
{
    tools::Property property;
    std::string name, type, value;
};

/// All properties of an object, by name. @throws CZebException*
std::vector<PropertyRow> ReadPropertyRows(CZebIProp& object);

/// The whole value, with line ends: an entry identifier decoded, other binaries as lines of hexadecimal digits with their
/// characters. Reads the stream of a streamed value to its end. UTF-8. @throws CZebException*, ToolError
std::string WholeValue(tools::Property& property);

} // namespace zeb::view
