// The two kinds of JSON value.
#pragma once

#include <nlohmann/json.hpp>

namespace zeb::tools
{

/// What commands print: objects keep their members in the order in which they were set.
using Json = nlohmann::ordered_json;

/// What files of messages hold, as "zeb load" reads and "zeb save" writes them: members are found by name.
using FileJson = nlohmann::json;

} // namespace zeb::tools
