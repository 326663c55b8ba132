#include "zebapi/frame/internal/EntryPoints.h"

#include <atomic>

namespace zeb
{

namespace
{

std::atomic<void*> g_slots[EntryPointCount];

template <class Function>
Function Loaded(EntryPoint slot)
{
    return reinterpret_cast<Function>(g_slots[static_cast<size_t>(slot)].load(std::memory_order_acquire));
}

template <class Function, class... Args>
HRESULT Call(EntryPoint slot, Args... args)
{
    const auto function = Loaded<Function>(slot);
    return function != nullptr ? function(args...) : MAPI_E_CALL_FAILED;
}

template <class Function, class... Args>
void CallVoid(EntryPoint slot, Args... args)
{
    if (const auto function = Loaded<Function>(slot))
    {
        function(args...);
    }
}

} // namespace

void SetEntryPoint(EntryPoint slot, void* address)
{
    g_slots[static_cast<size_t>(slot)].store(address, std::memory_order_release);
}

HRESULT MAPIInitialize(void* init)
{
    return Call<LPMAPIINITIALIZE>(EntryPoint::MAPIInitialize, init);
}

void MAPIUninitialize()
{
    CallVoid<LPMAPIUNINITIALIZE>(EntryPoint::MAPIUninitialize);
}

HRESULT MAPILogonEx(ULONG_PTR uiParam, LPTSTR profileName, LPTSTR password, ULONG flags, LPMAPISESSION* session)
{
    return Call<LPMAPILOGONEX>(EntryPoint::MAPILogonEx, uiParam, profileName, password, flags, session);
}

HRESULT MAPIAdminProfiles(ULONG flags, LPPROFADMIN* profAdmin)
{
    return Call<LPMAPIADMINPROFILES>(EntryPoint::MAPIAdminProfiles, flags, profAdmin);
}

HRESULT HrGetOneProp(LPMAPIPROP object, ULONG propTag, LPSPropValue* value)
{
    return Call<decltype(&::HrGetOneProp)>(EntryPoint::HrGetOneProp, object, propTag, value);
}

HRESULT HrSetOneProp(LPMAPIPROP object, LPSPropValue value)
{
    return Call<decltype(&::HrSetOneProp)>(EntryPoint::HrSetOneProp, object, value);
}

HRESULT HrValidateIPMSubtree(LPMDB store, ULONG flags, ULONG* count, LPSPropValue* values, LPMAPIERROR* error)
{
    return Call<decltype(&::HrValidateIPMSubtree)>(EntryPoint::HrValidateIPMSubtree, store, flags, count, values,
                                                   error);
}

void FreeProws(LPSRowSet rows)
{
    CallVoid<decltype(&::FreeProws)>(EntryPoint::FreeProws, rows);
}

HRESULT HrQueryAllRows(LPMAPITABLE table, LPSPropTagArray tags, LPSRestriction restriction, LPSSortOrderSet order,
                       LONG maxRows, LPSRowSet* rows)
{
    return Call<decltype(&::HrQueryAllRows)>(EntryPoint::HrQueryAllRows, table, tags, restriction, order, maxRows,
                                             rows);
}

SCODE PropCopyMore(LPSPropValue dest, LPSPropValue src, ALLOCATEMORE* allocateMore, void* parent)
{
    return Call<decltype(&::PropCopyMore)>(EntryPoint::PropCopyMore, dest, src, allocateMore, parent);
}

} // namespace zeb
