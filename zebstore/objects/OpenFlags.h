// Flags of MAPI that the platform's headers do not have.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// How a client may keep copies of what it opens; a store in a file of its own has nothing to keep.
constexpr ULONG MapiNoCache = 0x200;
constexpr ULONG MapiCacheOnly = 0x4000;
/// Of OpenMsgStore: past a client's copies to the store itself, which is what is always opened.
constexpr ULONG MdbOnline = 0x100;
/// Rows or objects that were deleted and can still be got back; nothing is here.
constexpr ULONG ShowSoftDeletes = 0x2;
/// Of deletions: for good, as all are.
constexpr ULONG DeleteHardDelete = 0x10;

/// Of SaveChanges and CreateMessage: what a store does with mail that has just come, before others hear of it.
constexpr ULONG SpamFilterOnSave = 0x80;
constexpr ULONG ItemProcForce = 0x800;
constexpr ULONG NonEmsXpSave = 0x1000;
constexpr ULONG ArrivalFlags = SpamFilterOnSave | ItemProcForce | NonEmsXpSave;

/// Of every call that opens an entry.
constexpr ULONG OpenEntryFlags = MAPI_MODIFY | MAPI_BEST_ACCESS | MAPI_DEFERRED_ERRORS | MapiNoCache | MapiCacheOnly;

} // namespace zebstore
