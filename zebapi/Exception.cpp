#include "zebapi/Exception.h"

#include "qorlog/QorLog.h"
#include "zebapi/tables/ErrorNames.h"

#include <algorithm>
#include <cstring>

IMPLEMENT_DYNAMIC(CZebException, CException)

CZebException CZebException::s_outOfMemory{Reserve()};

namespace
{

const char* OrNull(const char* text)
{
    return text != nullptr ? text : "(null)";
}

CStringA ErrorNameOf(LONG result)
{
    const zeb::ErrorName* end = zeb::ErrorNames + zeb::ErrorNameCount;
    const zeb::ErrorName* row = std::find_if(zeb::ErrorNames, end,
                                             [result](const zeb::ErrorName& candidate)
                                             { return candidate.code == static_cast<ULONG>(result); });
    CStringA name;
    if (row != end)
    {
        name = row->name;
    }
    else
    {
        name.Format("0x%08X", static_cast<unsigned int>(result));
    }
    return name;
}

void LogThrow(LONG result, const char* description, const char* file, int line)
{
    LLog(1, "ZebAPI", "THROW Exception 0x%08x (%s), File %s, line %d", static_cast<unsigned int>(result),
         description, file, line);
}

} // namespace

CZebException::CZebException(LONG result, const char* file, int line)
    : m_result(result)
{
    Construct(result, nullptr, file, line);
}

CZebException::CZebException(Reserve)
    : CException(false)
    , m_description("MAPI_E_NOT_ENOUGH_MEMORY")
    , m_result(MAPI_E_NOT_ENOUGH_MEMORY)
{
}

CZebException::~CZebException() = default;

void CZebException::Construct(LONG result, LPMAPIERROR error, const char* file, int line)
{
    m_result = result;
    if (error != nullptr)
    {
        m_description.Format("Ver:%d, Error:%s, Component:%s, LowLewelError:%d, Context:%d \n",
                             static_cast<int>(error->ulVersion), OrNull(error->lpszError),
                             OrNull(error->lpszComponent), static_cast<int>(error->ulLowLevelError),
                             static_cast<int>(error->ulContext));
    }
    else
    {
        m_description = ErrorNameOf(result);
    }
    if (file != nullptr)
    {
        LogThrow(result, m_description, file, line);
    }
}

BOOL CZebException::GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext)
{
    if (helpContext != nullptr)
    {
        *helpContext = 0;
    }
    if (buffer != nullptr)
    {
        const size_t length = std::min<size_t>(m_description.GetLength(), maxChars);
        std::memcpy(buffer, static_cast<const char*>(m_description), length);
        if (length < maxChars)
        {
            buffer[length] = '\0';
        }
    }
    return TRUE;
}

HRESULT CZebException::GetResult()
{
    return m_result;
}

void CZebException::Throw(LONG result, const char* file, int line)
{
    CZebException* exception = nullptr;
    try
    {
        exception = new CZebException(result, file, line);
    }
    catch (const std::bad_alloc&)
    {
        ThrowOutOfMemory(file, line);
    }
    throw exception;
}

void CZebException::ThrowOutOfMemory(const char* file, int line)
{
    if (file != nullptr)
    {
        try
        {
            LogThrow(s_outOfMemory.m_result, s_outOfMemory.m_description, file, line);
        }
        catch (const std::bad_alloc&)
        {
            // The line is lost, the failure is not.
        }
    }
    throw &s_outOfMemory;
}

CStringA Zeb_GetExceptionDescription(CException* e)
{
    // GetErrorMessage does not terminate a text that fills the buffer: one byte more is always zero.
    char buffer[1024 + 1] = {};
    e->GetErrorMessage(buffer, sizeof buffer - 1, nullptr);
    return CStringA(buffer);
}

namespace zeb
{

namespace
{

void LogException(CException* e, const char* file, int line)
{
    LLog(1, "ZebAPI", "EXCEPTION: Description: \"%s\", File: \"%s\", Line: %d",
         static_cast<const char*>(Zeb_GetExceptionDescription(e)), file, line);
}

void LogRethrown(const char* file, int line)
{
    try
    {
        throw;
    }
    catch (CException* e)
    {
        struct Deleter
        {
            CException* exception;
            ~Deleter() { exception->Delete(); }
        } deleter{e};
        LogException(e, file, line);
    }
    catch (const _com_error& e)
    {
        LLog(1, "ZebAPI", "EXCEPTION: _com_error: 0x%08X, File: \"%s\", Line: %d",
             static_cast<unsigned int>(e.Error()), file, line);
    }
    catch (...)
    {
        LLog(1, "ZebAPI", "EXCEPTION: Description: <Unknown>, File: \"%s\", Line: %d", file, line);
    }
}

} // namespace

void LogCaught(const char* file, int line) noexcept
{
    try
    {
        LogRethrown(file, line);
    }
    catch (...)
    {
        // No memory for the line: what was caught stays caught.
    }
}

} // namespace zeb
