// Facts of Unicode that comparison needs: simple case folding, and letters without their accents.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zebstore
{

/// Every `step`-th code point of `first` to `last` folds to itself plus `delta`. Sorted by `first`; runs of
/// step 2 do not overlap with others. ASCII is not in here.
struct CaseRun
{
    std::uint32_t first;
    std::uint32_t last;
    std::int32_t step;
    std::int32_t delta;
};
extern const CaseRun g_caseRuns[];
extern const size_t g_caseRunCount;

/// The code points of `first` to `last` are `base` with combining marks of the general block. Sorted.
struct MarkRun
{
    std::uint16_t first;
    std::uint16_t last;
    std::uint16_t base;
};
extern const MarkRun g_markRuns[];
extern const size_t g_markRunCount;

} // namespace zebstore
