// MAPI's entry points, called in the loaded provider.
#pragma once

#include "platform/mapi.h"
#include "zebapi/constants/internal/EntryPoints.h"

namespace zeb
{

/// Sets the address that calls of an entry point go to; null when no provider is loaded.
void SetEntryPoint(EntryPoint slot, void* address);

// Each forwards its arguments unchanged. While its slot is null it returns MAPI_E_CALL_FAILED, or does
// nothing where there is no result.
HRESULT MAPIInitialize(void* init);
void MAPIUninitialize();
HRESULT MAPILogonEx(ULONG_PTR uiParam, LPTSTR profileName, LPTSTR password, ULONG flags, LPMAPISESSION* session);
HRESULT MAPIAdminProfiles(ULONG flags, LPPROFADMIN* profAdmin);
HRESULT HrGetOneProp(LPMAPIPROP object, ULONG propTag, LPSPropValue* value);
HRESULT HrSetOneProp(LPMAPIPROP object, LPSPropValue value);
HRESULT HrValidateIPMSubtree(LPMDB store, ULONG flags, ULONG* count, LPSPropValue* values, LPMAPIERROR* error);
void FreeProws(LPSRowSet rows);
HRESULT HrQueryAllRows(LPMAPITABLE table, LPSPropTagArray tags, LPSRestriction restriction, LPSSortOrderSet order,
                       LONG maxRows, LPSRowSet* rows);
SCODE PropCopyMore(LPSPropValue dest, LPSPropValue src, ALLOCATEMORE* allocateMore, void* parent);

} // namespace zeb
