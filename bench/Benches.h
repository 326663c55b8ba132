// The measurements. Each prepares its data when its function is called, and keeps it until it is destroyed.
#pragma once

#include "bench/Harness.h"

#include <memory>

namespace bench
{

struct Options
{
    /// The folder of stores, registry and results.
    std::string folder;
    /// Few messages and few pairs.
    bool brief = false;
    /// The messages of find-text.
    unsigned texts = 100000;
};

Measurement InboxRead(const Options& options);
Measurement ValueRead(const Options& options);
Measurement StoreWrite(const Options& options);
Measurement StoreOpen(const Options& options);
Measurement StoreWindow(const Options& options);
Measurement StoreSort(const Options& options);
Measurement StoreMemory(const Options& options);
Measurement ValueText(const Options& options);
Measurement ArrayBuild(const Options& options);
Measurement NameLookup(const Options& options);
Measurement EidDump(const Options& options);
Measurement AddressBookOpen(const Options& options);
Measurement StoreNotify(const Options& options);
Measurement CachedScroll(const Options& options);
Measurement CachedHit(const Options& options);
Measurement CachedRandom(const Options& options);
Measurement StoreRestrict(const Options& options);
Measurement LoadGrowth(const Options& options);
Measurement Attachments(const Options& options);
Measurement RestrictWide(const Options& options);
Measurement MessageWrite(const Options& options);
Measurement StartUp(const Options& options);
Measurement SearchText(const Options& options);
Measurement WriteIndexed(const Options& options);
Measurement SaveLoad(const Options& options);
Measurement ImportMbox(const Options& options);
Measurement ImportPeer(const Options& options);
Measurement HugeOpen(const Options& options);
Measurement HugeWindow(const Options& options);
Measurement HugeSort(const Options& options);
Measurement HugeNotify(const Options& options);

} // namespace bench
