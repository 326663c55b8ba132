// Properties as a text table and as JSON.
#pragma once

#include "tools/common/Lister.h"
#include "tools/common/PropertyWriter.h"
#include "tools/common/Times.h"

#include <string>

namespace zeb::tools
{

/// How properties are shown.
struct TableStyle
{
    size_t columns = 0; ///< terminal width; 0 without a terminal
    bool full = false;  ///< show complete values, text with line breaks
    Zone zone = Zone::Local;
};

/// Prints properties in columns: name, type, value; named properties below, grouped by set.
void PrintProperties(const Properties& properties, const std::string& indent, const TableStyle& style);

/// The same as an array of objects; complete values in the form of a .jsonl file.
Json PropertiesForMachines(const Properties& properties);

/// The values of one property, in one line; empty when it has none.
std::string ShownValues(const Property& property, Zone zone);

} // namespace zeb::tools
