// Properties as a table for people, and as JSON for machines.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/common/Times.h"

#include <nlohmann/json.hpp>

#include <string>

namespace zeb::tools
{

/// How properties are shown.
struct TableStyle
{
    size_t columns = 0; ///< of the terminal; 0 for none
    bool full = false;  ///< show every value whole, text with its line breaks
    Zone zone = Zone::Local;
};

/// Prints properties in columns: name, type, value; named ones below, by their set.
void PrintProperties(const Properties& properties, const std::string& indent, const TableStyle& style);

/// The same as an array of objects; values as in a .jsonl file, always whole.
nlohmann::ordered_json PropertiesForMachines(const Properties& properties);

} // namespace zeb::tools
