// Atomic changes to stored objects.
#pragma once

#include "tools/common/PropertyWriter.h"

namespace zeb::tools
{

/// @throws ToolError naming the first property refused and why; does nothing when there is none
void RefuseProblems(const std::vector<Refusal>& refusals);

/// Writes `properties` to a stored object and saves it; a property that is marked as removed is deleted.
/// All changes are made, or, with an exception, none: on failure objects that write immediately (folders, stores) get
/// their old values back.
/// @throws CZebException*, ToolError
void ChangeProperties(CZebIProp& object, Properties& properties, NameResolver& names);

} // namespace zeb::tools
