// The context of an exception.
#pragma once

#include "zebapi/Exception.h"

#include <string>

namespace zeb::test
{

/// The context of the CZebException* that `body` throws: "operation thing". Other exceptions pass.
template <class Body>
std::string ContextOf(Body&& body)
{
    try
    {
        body();
    }
    catch (CZebException* exception)
    {
        const std::string context(exception->GetContext());
        exception->Delete();
        return context;
    }
    return "nothing was thrown";
}

} // namespace zeb::test
