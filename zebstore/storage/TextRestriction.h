// What the text index is asked for a restriction.
#pragma once

#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/TextPlan.h"

#include <optional>

namespace zebstore
{

/// Nothing when the restriction lets messages through about which the index says nothing: no text of at least three
/// characters is asked for, or only as an alternative to something else.
std::optional<TextPlan> MakeTextPlan(const RestrictionNode& node);

} // namespace zebstore
