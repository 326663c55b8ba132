// Changes to objects that are stored already: all or nothing.
#pragma once

#include "tools/common/PropertyWriter.h"

namespace zeb::tools
{

/// @throws ToolError naming the first property refused and why; does nothing when there is none
void RefuseProblems(const std::vector<Refusal>& refusals);

/// Writes `properties` to a stored object and saves it; a property that is marked as removed is deleted.
/// Either all of it is done, or, with an exception, nothing: objects that write at once (folders, stores)
/// get back what they had.
/// @throws CZebException*, ToolError
void ChangeProperties(CZebIProp& object, Properties& properties, NameResolver& names);

} // namespace zeb::tools
