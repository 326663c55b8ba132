// What a call through the library costs, under Wine in each C++ ABI. What the disk takes there says nothing of Windows.
#include "bench/Entries.h"

namespace bench
{
namespace
{

template <Measurement (*Make)(const Options&)>
Measurement OfAbi(const Options& options, double goal)
{
    Measurement measurement = Make(options);
    measurement.name += "-" ZEB_BENCH_ABI;
    measurement.goal = goal;
    return measurement;
}

} // namespace

const std::string UsualKind = "-" ZEB_BENCH_ABI;

const std::vector<Entry> Entries = {
    {"inbox-read-" ZEB_BENCH_ABI, [](const Options& options) { return OfAbi<InboxRead>(options, 1.05); }},
    {"value-read-" ZEB_BENCH_ABI, [](const Options& options) { return OfAbi<ValueRead>(options, 2); }},
    {"cached-hit-" ZEB_BENCH_ABI, [](const Options& options) { return OfAbi<CachedHit>(options, 2.5); }},
};

} // namespace bench
