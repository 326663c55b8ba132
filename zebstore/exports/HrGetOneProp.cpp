// HrGetOneProp: reads one property of an object of any provider.
#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"

using zebstore::Buffer;
using zebstore::Guarded;
using zebstore::Require;

HRESULT WINAPI HrGetOneProp(LPMAPIPROP object, ULONG tag, LPSPropValue* value)
{
    return Guarded("HrGetOneProp", [&]() -> HRESULT
    {
        Require(object != nullptr && value != nullptr, "the object or the output pointer is null");
        *value = nullptr;
        SizedSPropTagArray(1, tags) = {1, {tag}};
        ULONG count = 0;
        LPSPropValue got = nullptr;
        const ULONG flags = PROP_TYPE(tag) == PT_UNICODE ? MAPI_UNICODE : 0;
        const HRESULT result = object->GetProps(reinterpret_cast<LPSPropTagArray>(&tags), flags, &count, &got);
        Buffer<SPropValue> owner(got);
        if (FAILED(result))
        {
            return result;
        }
        if (count != 1 || got == nullptr)
        {
            return MAPI_E_CALL_FAILED;
        }
        if (PROP_TYPE(got->ulPropTag) == PT_ERROR && PROP_TYPE(tag) != PT_ERROR)
        {
            return got->Value.err;
        }
        *value = owner.Detach();
        return S_OK;
    });
}
