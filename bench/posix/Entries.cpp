#include "bench/Entries.h"

namespace bench
{

const std::string UsualKind;

const std::vector<Entry> Entries = {
    {"inbox-read", InboxRead},
    {"value-read", ValueRead},
    {"store-write", StoreWrite},
    {"store-open", StoreOpen},
    {"store-window", StoreWindow},
    {"store-sort", StoreSort},
    {"store-memory", StoreMemory},
    {"value-text", ValueText},
    {"array-build", ArrayBuild},
    {"name-lookup", NameLookup},
    {"eid-dump", EidDump},
    {"store-notify", StoreNotify},
    {"cached-scroll", CachedScroll},
    {"cached-hit", CachedHit},
    {"cached-random", CachedRandom},
    {"ab-open", AddressBookOpen},
    {"store-restrict", StoreRestrict},
    {"load-growth", LoadGrowth},
    {"attachments", Attachments},
    {"restrict-wide", RestrictWide},
    {"message-write", MessageWrite},
    {"start-up", StartUp},
    {"find-text", SearchText},
    {"write-indexed", WriteIndexed},
    {"save-load", SaveLoad},
    {"import-mbox", ImportMbox},
    {"import-peer", ImportPeer, Group::Peers},
    {"store-huge-open", HugeOpen, Group::Huge},
    {"store-huge-window", HugeWindow, Group::Huge},
    {"store-huge-sort", HugeSort, Group::Huge},
    {"store-huge-notify", HugeNotify, Group::Huge},
};

} // namespace bench
