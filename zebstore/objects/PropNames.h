// Named properties of a store's objects.
#pragma once

#include "zebstore/storage/StoreFile.h"

namespace zebstore
{

/// Identifiers from here on belong to named properties.
constexpr ULONG FirstNamedId = 0x8000;

/// IMAPIProp::GetNamesFromIDs. @return MAPI_W_ERRORS_RETURNED when a name is missing
HRESULT NamesFromIds(StoreFile& file, SPropTagArray** tags, const GUID* set, ULONG flags, ULONG* count,
                     MAPINAMEID*** names);

/// IMAPIProp::GetIDsFromNames. @return MAPI_W_ERRORS_RETURNED when an identifier is missing
HRESULT IdsFromNames(StoreFile& file, ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags);

} // namespace zebstore
