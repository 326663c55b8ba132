#include "zebstore/objects/Interfaces.h"

namespace zebstore
{

IUnknown* Answer(IUnknown* object, const IID* iid)
{
    if (iid == nullptr)
    {
        object->AddRef();
        return object;
    }
    void* asked = nullptr;
    if (FAILED(object->QueryInterface(*iid, &asked)))
    {
        throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "the object does not support the requested interface");
    }
    return static_cast<IUnknown*>(asked);
}

} // namespace zebstore
