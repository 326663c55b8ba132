// Asks objects for their interfaces.
#pragma once

#include "zebstore/base/Object.h"

namespace zebstore
{

/// The object's interface `Interface`. @return empty when the object does not support it
/// @throws Error on any failure other than E_NOINTERFACE
template <class Interface>
Ref<Interface> Ask(IUnknown* object, const IID& iid)
{
    void* asked = nullptr;
    const HRESULT result = object ? object->QueryInterface(iid, &asked) : E_NOINTERFACE;
    if (result != E_NOINTERFACE)
    {
        Check(result, "the object's QueryInterface failed");
    }
    return FAILED(result) ? Ref<Interface>() : Ref<Interface>::Adopt(static_cast<Interface*>(asked));
}

/// The result of IMAPIFolder::OpenEntry and the other OpenEntry methods: the requested interface of `object`; null: its
/// own interface.
/// @throws Error MAPI_E_INTERFACE_NOT_SUPPORTED
IUnknown* Answer(IUnknown* object, const IID* iid);

} // namespace zebstore
