// PropCopyMore: copies a property value with its data.
#include "zebstore/base/Guard.h"
#include "zebstore/exports/CopyValue.h"

using zebstore::Guarded;
using zebstore::Require;

SCODE WINAPI PropCopyMore(LPSPropValue dest, LPSPropValue source, ALLOCATEMORE* allocateMore, LPVOID parent)
{
    return Guarded("PropCopyMore", [&]
    {
        Require(dest != nullptr && source != nullptr, "the source or the target value is null");
        return zebstore::CopyValue(*dest, *source, allocateMore, parent);
    });
}
