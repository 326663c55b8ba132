#include "tests/framework/probe/ProbeException.h"

#include <cstdio>

IMPLEMENT_DYNAMIC(ProbeException, CException)

namespace
{

int alive = 0;

} // namespace

ProbeException::ProbeException(int number)
    : m_number(number)
{
    ++alive;
}

ProbeException::~ProbeException()
{
    --alive;
}

BOOL ProbeException::GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext)
{
    if (helpContext != nullptr)
    {
        *helpContext = 0;
    }
    std::snprintf(buffer, maxChars, "probe %d", m_number);
    return TRUE;
}

int ProbeException::GetNumber()
{
    return m_number;
}

int ProbeException::Alive()
{
    return alive;
}

void ThrowProbe(int number)
{
    throw new ProbeException(number);
}
