// What the text index is asked.
#pragma once

#include "zebstore/storage/TextGrams.h"

#include <vector>

namespace zebstore
{

/// A condition over grams that every message fulfils which the restriction lets through; others may fulfil it too.
struct TextPlan
{
    /// All grams must be there.
    std::vector<Gram> grams;
    /// And all of these, or one of these, must hold; empty: no more conditions.
    std::vector<TextPlan> children;
    bool isAny = false;
};

} // namespace zebstore
