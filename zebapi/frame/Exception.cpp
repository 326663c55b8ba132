#include "zebapi/frame/Exception.h"

#include "platform/text.h"
#include "qorlog/QorLog.h"
#include "zebapi/constants/internal/ErrorNames.h"

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
    const zeb::ErrorName* row = std::find_if(zeb::ErrorNames, end, [result](const zeb::ErrorName& candidate)
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
    LLog(1, "ZebAPI", "THROW Exception 0x%08x (%s), File %s, line %d", static_cast<unsigned int>(result), description,
         file, line);
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
                             static_cast<int>(error->ulVersion), OrNull(error->lpszError), OrNull(error->lpszComponent),
                             static_cast<int>(error->ulLowLevelError), static_cast<int>(error->ulContext));
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
        const size_t length =
            zeb::platform::NarrowPrefix(m_description, static_cast<size_t>(m_description.GetLength()), maxChars);
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

CStringA CZebException::GetContext() const
{
    return m_context;
}

void CZebException::SetOperation(const char* operation) noexcept
{
    try
    {
        // A lambda has no name, and template arguments mean nothing to a host.
        const bool isNamed = operation != nullptr && std::strcmp(operation, "operator()") != 0;
        const bool isOperator = isNamed && std::strncmp(operation, "operator", 8) == 0;
        m_context = isNamed ? operation : "";
        const int arguments = m_context.Find('<');
        if (!isOperator && arguments > 0)
        {
            m_context = m_context.Left(arguments);
        }
    }
    catch (...) // the only possible failure is out of memory
    {
        m_context.Empty();
    }
}

void CZebException::AddContext(const char* thing)
{
    if (!IsAutoDelete())
    {
        return; // kept for all threads
    }
    try
    {
        m_context += m_context.IsEmpty() ? "" : " ";
        m_context += thing;
        LDetail("ZebAPI", "CONTEXT %s", static_cast<const char*>(m_context));
    }
    catch (...)
    {
        // Out of memory: the exception matters more than its context.
    }
}

void CZebException::Throw(LONG result, const char* file, int line, const char* operation)
{
    Throw(result, static_cast<IMAPIProp*>(nullptr), file, line, operation);
}

void CZebException::ThrowWithError(LONG result, const char* error, const char* file, int line, const char* operation)
{
    /// Returns the text in the form of an object's extended error.
    struct Source
    {
        MAPIERROR error;
        void GetLastError(HRESULT, ULONG, LPMAPIERROR* out) { *out = &error; }
    } source = {{0, const_cast<char*>(error), const_cast<char*>("ZebAPI"), 0, 0}};
    Throw(result, &source, file, line, operation);
}

void CZebException::ThrowOutOfMemory(const char* file, int line)
{
    if (file != nullptr)
    {
        try
        {
            LogThrow(s_outOfMemory.m_result, s_outOfMemory.m_description, file, line);
        }
        catch (...)
        {
            // Out of memory: the log line is lost, the exception is kept.
        }
    }
    throw &s_outOfMemory;
}

/// From here on the library's strings and containers report out of memory as a CZebException.
const bool CZebException::s_hasOwnOutOfMemory = []
{
    zeb::framework::g_throwOutOfMemory = [] { ThrowOutOfMemory(nullptr, 0); };
    return true;
}();

CStringA Zeb_GetExceptionDescription(CException* e)
{
    // GetErrorMessage does not terminate a text that fills the buffer: one byte more is always zero.
    char buffer[1024 + 1] = {};
    e->GetErrorMessage(buffer, sizeof buffer - 1, nullptr);
    return CStringA(buffer);
}

CStringA Zeb_GetResultDescription(HRESULT result)
{
    return ErrorNameOf(result);
}

CStringA Zeb_DescribeException(CException* e)
{
    CStringA text = Zeb_GetExceptionDescription(e);
    int length = text.GetLength();
    while (length > 0 && (text[length - 1] == ' ' || text[length - 1] == '\n'))
    {
        --length;
    }
    text = text.Left(length);
    const auto* own = dynamic_cast<CZebException*>(e);
    const CStringA context = own != nullptr ? own->GetContext() : CStringA();
    return context.IsEmpty() ? text : context + ": " + text;
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
        LLog(1, "ZebAPI", "EXCEPTION: _com_error: 0x%08X, File: \"%s\", Line: %d", static_cast<unsigned int>(e.Error()),
             file, line);
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
        // No memory for the line: the exception is still handled.
    }
}

} // namespace zeb
