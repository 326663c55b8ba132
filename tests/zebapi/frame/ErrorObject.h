// An object with MAPI's GetLastError and nothing else.
#pragma once

#include "tests/support/MapiMemory.h"

namespace zeb::test
{

/// Returns the extended error that the test sets, and records the call.
struct ErrorObject
{
    MAPIERROR* error = nullptr;
    HRESULT answer = S_OK; ///< what GetLastError returns, with or without an error

    int calls = 0;
    HRESULT askedFor = 0;
    ULONG askedFlags = 0xFFFFFFFF;

    HRESULT GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* mapiError)
    {
        ++calls;
        askedFor = result;
        askedFlags = flags;
        *mapiError = error;
        return answer;
    }
};

} // namespace zeb::test
