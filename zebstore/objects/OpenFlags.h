// Flags of MAPI that the platform's headers do not have.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// Client-side cache modes; a store in a local file has no cache.
constexpr ULONG MapiNoCache = 0x200;
constexpr ULONG MapiCacheOnly = 0x4000;
/// OpenMsgStore: bypass the client's cache; this provider always opens the store itself.
constexpr ULONG MdbOnline = 0x100;
/// Recoverable deleted rows or objects; this provider has none.
constexpr ULONG ShowSoftDeletes = 0x2;
/// Deletions: permanent, as all deletions of this provider are.
constexpr ULONG DeleteHardDelete = 0x10;

/// SaveChanges and CreateMessage: what a store does with newly delivered mail before others are notified.
constexpr ULONG SpamFilterOnSave = 0x80;
constexpr ULONG ItemProcForce = 0x800;
constexpr ULONG NonEmsXpSave = 0x1000;
constexpr ULONG ArrivalFlags = SpamFilterOnSave | ItemProcForce | NonEmsXpSave;

/// All calls that open an entry.
constexpr ULONG OpenEntryFlags = MAPI_MODIFY | MAPI_BEST_ACCESS | MAPI_DEFERRED_ERRORS | MapiNoCache | MapiCacheOnly;

} // namespace zebstore
