// HrSetOneProp: sets one property of an object of any provider.
#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"

using zebstore::Buffer;
using zebstore::Guarded;
using zebstore::Require;

HRESULT WINAPI HrSetOneProp(LPMAPIPROP object, LPSPropValue value)
{
    return Guarded("HrSetOneProp", [&]() -> HRESULT
    {
        Require(object != nullptr && value != nullptr, "the object or the value is null");
        LPSPropProblemArray problems = nullptr;
        const HRESULT result = object->SetProps(1, value, &problems);
        Buffer<SPropProblemArray> owner(problems);
        if (FAILED(result))
        {
            return result;
        }
        return problems != nullptr && problems->cProblem ? problems->aProblem[0].scode : S_OK;
    });
}
