// The exceptions that code throws.
#pragma once

#include "zebapi/Exception.h"

namespace zeb::test
{

/// The result code of the CZebException* that `body` throws; S_OK when it throws nothing. Other exceptions pass.
template <class Body>
HRESULT ThrownBy(Body&& body)
{
    try
    {
        body();
    }
    catch (CZebException* exception)
    {
        const HRESULT result = exception->GetResult();
        exception->Delete();
        return result;
    }
    return S_OK;
}

/// The result code of the _com_error that `body` throws; S_OK when it throws nothing. Other exceptions pass.
template <class Body>
HRESULT ComErrorThrownBy(Body&& body)
{
    try
    {
        body();
    }
    catch (const _com_error& error)
    {
        return error.Error();
    }
    return S_OK;
}

} // namespace zeb::test
