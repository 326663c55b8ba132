// An exception class of another binary.
#pragma once

#include "framework/Exception.h"
#include "platform/export.h"

class ZEBAPI_EXPORT ProbeException : public CException
{
    DECLARE_DYNAMIC(ProbeException)

public:
    explicit ProbeException(int number);
    ~ProbeException() override;
    BOOL GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext) override;
    virtual int GetNumber();

    /// The number of live objects.
    static int Alive();

private:
    int m_number;
};

/// @throws ProbeException*
ZEBAPI_EXPORT void ThrowProbe(int number);
