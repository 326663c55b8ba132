// The library's one failure type, the check that turns a MAPI result into it, and the guard that keeps it in.
#pragma once

#include "framework/CString.h"
#include "framework/ComPtr.h"
#include "framework/Exception.h"
#include "platform/export.h"
#include "platform/mapi.h"

#include <new>
#include <utility>

/// A failed MAPI call: its result code and a readable description.
///
/// Made on the heap and thrown by pointer; whoever catches it (as CZebException*, CException* or CObject*)
/// calls Delete(). Making one with a file name writes one line to the log, level 1: "THROW Exception 0x%08x
/// (%s), File %s, line %d". Threads: objects are independent of each other.
class ZEBAPI_EXPORT CZebException : public CException
{
    DECLARE_DYNAMIC(CZebException)

public:
    /// The description is the MAPI name of `result`, or "0x%08X" for a code that has none.
    /// @param file where the failing call stands; null writes no log line
    CZebException(LONG result, const char* file, int line);

    /// The description is the extended error of the object on which the failing call was made
    /// (Object::GetLastError(result, 0, ...), 8-bit texts), or the name of `result` when the object gives
    /// none. The MAPIERROR that the object hands out is not freed.
    /// @param object any interface with MAPI's GetLastError; may be null
    template <class Object>
    CZebException(LONG result, Object* object, const char* file, int line)
        : m_result(result)
    {
        LPMAPIERROR error = nullptr;
        if (object != nullptr)
        {
            object->GetLastError(result, 0, &error);
        }
        Construct(result, error, file, line);
    }

    ~CZebException() override;

    /// Copies at most `maxChars` bytes of the description into `buffer`; a terminator follows only where the
    /// description is shorter than that. Sets `*helpContext`, when given, to 0.
    /// @return TRUE
    BOOL GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext) override;

    /// The MAPI result code.
    virtual HRESULT GetResult();

    /// Throws a new exception, or, when memory for it is out, one kept for the case:
    /// MAPI_E_NOT_ENOUGH_MEMORY.
    [[noreturn]] static void Throw(LONG result, const char* file, int line);

    /// As above, with the extended error of the object that failed.
    template <class Object>
    [[noreturn]] static void Throw(LONG result, Object* object, const char* file, int line)
    {
        CZebException* exception = nullptr;
        try
        {
            exception = new CZebException(result, object, file, line);
        }
        catch (const std::bad_alloc&)
        {
            ThrowOutOfMemory(file, line);
        }
        throw exception;
    }

protected:
    /// What the constructors have in common: keeps the result, makes the description, writes the log line.
    /// @param error may be null; stays the caller's
    void Construct(LONG result, LPMAPIERROR error, const char* file, int line);

private:
    struct Reserve
    {
    };
    explicit CZebException(Reserve);
    [[noreturn]] static void ThrowOutOfMemory(const char* file, int line);

    /// Made when the library is loaded, so that it is there when memory is not. Threads share it unchanged.
    static CZebException s_outOfMemory;

    CStringA m_description;
    HRESULT m_result;
};

/// The text that `e->GetErrorMessage` gives, up to 1024 bytes of it. Works for any CException.
ZEBAPI_EXPORT CStringA Zeb_GetExceptionDescription(CException* e);

/// Throws a failing result (severity bit set) as a CZebException*; success and warnings are returned
/// unchanged.
inline HRESULT ThrowIfFailed(HRESULT result, const char* file, int line)
{
    if (result < 0)
    {
        CZebException::Throw(result, file, line);
    }
    return result;
}

/// As above, for a call on a MAPI object: the description is the object's extended error where it gives one.
template <class Object>
HRESULT ThrowIfFailed(HRESULT result, Object* object, const char* file, int line)
{
    if (result < 0)
    {
        CZebException::Throw(result, object, file, line);
    }
    return result;
}

/// As above, for a call through a counted pointer; an empty one gives no extended error.
template <class Object>
HRESULT ThrowIfFailed(HRESULT result, const CComPtr<Object>& object, const char* file, int line)
{
    return ThrowIfFailed(result, object.Get(), file, line);
}

namespace zeb
{

/// Inside a catch block: writes the line of the exception in flight (level 1) with the catch site's file and
/// line, and deletes a CException. Nothing leaves it.
void LogCaught(const char* file, int line) noexcept;

/// Runs `body` and lets no exception out: what it throws is logged by LogCaught.
/// @return whether `body` ended without an exception
template <class Body>
bool Guarded(const char* file, int line, Body&& body)
{
    try
    {
        std::forward<Body>(body)();
        return true;
    }
    catch (...)
    {
        LogCaught(file, line);
        return false;
    }
}

} // namespace zeb
