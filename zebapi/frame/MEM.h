// MAPI memory: the binding to the provider's allocator, and the library's allocation functions.
//
// The binding is set by CZebAPI when a provider is loaded and dropped when it is unloaded. It is read without
// a lock: do not allocate or free while a provider is being loaded or unloaded.
#pragma once

#include "platform/export.h"
#include "platform/mapi.h"

/// Binds MAPI's allocator; any of the three may be null. When both are bound, MAPI's has priority over the WAB's, for
/// each operation.
ZEBAPI_EXPORT void Zeb_MemInitialize(LPALLOCATEBUFFER allocateBuffer, LPALLOCATEMORE allocateMore,
                                     LPFREEBUFFER freeBuffer);

/// Binds the allocator of a WAB object, on which a reference is kept; null drops the one that is bound. An
/// object that does not give the interface leaves none bound.
/// @param wabObject an IUnknown
/// @throws _com_error when QueryInterface fails otherwise; then none is bound
ZEBAPI_EXPORT void Zeb_MemInitialize(void* wabObject);

/// Unbinds both allocators and releases the WAB object.
ZEBAPI_EXPORT void Zeb_MemUninitialize();

namespace zeb
{

/// Unbinds both allocators without releasing the WAB object: the provider may have been unloaded.
void AbandonMem();

} // namespace zeb

/// A block of `size` bytes, all zero: a new root block, or with a `parent` one that is freed with it.
/// @return never null; free a root block with Zeb_MemFree
/// @throws CZebException* MAPI_E_NOT_INITIALIZED when no provider is loaded, MAPI_E_NOT_ENOUGH_MEMORY, or
/// what MAPIAllocateBuffer or MAPIAllocateMore returned
ZEBAPI_EXPORT void* Zeb_MemAllocate(ULONG size, void* parent);

/// A new root block of `newSize` bytes with the first min(newSize, oldSize) bytes of `old`, followed by zeros; `old` (a
/// root block, may be null) is then freed. When it throws, `old` is unchanged.
/// @throws CZebException* as Zeb_MemAllocate
ZEBAPI_EXPORT void* Zeb_MemReallocate(void* old, ULONG newSize, ULONG oldSize);

/// Frees a root block and what was allocated under it (MAPIFreeBuffer). Does nothing when no provider is loaded.
ZEBAPI_EXPORT void Zeb_MemFree(void* block);

/// Frees a root block and sets the pointer to null; null is allowed.
ZEBAPI_EXPORT void Zeb_MemExFree(void*& block);

/// Copies one property value (PropCopyMore); what the value points to is allocated under `parent`.
/// @throws CZebException* what PropCopyMore returned; MAPI_E_CALL_FAILED when no MAPI provider is loaded
ZEBAPI_EXPORT void Zeb_PropCopyMore(SPropValue* dest, SPropValue* src, void* parent);

/// Frees a row set and its rows (FreeProws). Does nothing when no MAPI provider is loaded.
ZEBAPI_EXPORT void Zeb_FreeProws(SRowSet* rows);
