// The library's application object.
#pragma once

#include "framework/App.h"

/// Writes a line when the library is loaded. Internal; one static instance exists.
class CZebAPIApp : public CWinApp
{
public:
    /// Logs the start at level 1. @return the result of the base class
    BOOL InitInstance() override;
};
