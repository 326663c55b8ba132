// The library's one failure type, the check that turns a MAPI result into it, and the guard that keeps it in.
#pragma once

#include "framework/CString.h"
#include "framework/ComPtr.h"
#include "framework/Exception.h"
#include "platform/caller.h"
#include "platform/export.h"
#include "platform/mapi.h"

#include <exception>
#include <new>
#include <utility>

/// A failed MAPI call: its result code and a readable description.
///
/// Made on the heap and thrown by pointer; whoever catches it (as CZebException*, CException* or CObject*)
/// calls Delete(). Making one with a file name writes one line to the log, level 1: "THROW Exception 0x%08x
/// (%s), File %s, line %d". Threads: objects are independent of each other.
class ZEBAPI_EXPORT CZebException : public zeb::CException
{
    ZEB_DECLARE_DYNAMIC(CZebException)

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

    /// Copies at most `maxChars` bytes of the description into `buffer`, whole characters only; a terminator follows
    /// only where what was copied is shorter than that. Sets `*helpContext`, when given, to 0.
    /// @return TRUE
    BOOL GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext) override;

    /// The MAPI result code.
    virtual HRESULT GetResult();

    /// What failed, besides the code: the operation and, where one is known, the thing ("CreateFolder 'Projects'",
    /// "operator[] row 7 of 3"). Empty for an exception that was made, not thrown by Throw.
    zeb::CStringA GetContext() const;

    /// Adds a thing to the context. The default log sink shows the context in a line after that of the throw.
    void AddContext(const char* thing);

    /// Throws a new exception, or, when memory for it is out, one kept for the case:
    /// MAPI_E_NOT_ENOUGH_MEMORY.
    /// @param operation what GetContext() begins with: the calling function unless another is given
    [[noreturn]] static void Throw(LONG result, const char* file = ZEB_FILE, int line = ZEB_LINE,
                                   const char* operation = ZEB_CALLER);

    /// As above, with the extended error of the object that failed.
    template <class Object>
    [[noreturn]] static void Throw(LONG result, Object* object, const char* file = ZEB_FILE, int line = ZEB_LINE,
                                   const char* operation = ZEB_CALLER)
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
        catch (CZebException*) // the one for want of memory, without a line of the log
        {
            ThrowOutOfMemory(file, line);
        }
        exception->SetOperation(operation);
        throw exception;
    }

    /// As above, with a text of the library's own as the extended error.
    [[noreturn]] static void ThrowWithError(LONG result, const char* error, const char* file = ZEB_FILE,
                                            int line = ZEB_LINE, const char* operation = ZEB_CALLER);

protected:
    /// What the constructors have in common: keeps the result, makes the description, writes the log line.
    /// @param error may be null; stays the caller's
    void Construct(LONG result, LPMAPIERROR error, const char* file, int line);

private:
    struct Reserve
    {
    };
    explicit CZebException(Reserve);
    /// Begins the context; without memory for it there is none.
    void SetOperation(const char* operation) noexcept;
    [[noreturn]] static void ThrowOutOfMemory(const char* file, int line);

    /// Made when the library is loaded, so that it is there when memory is not. Threads share it unchanged.
    static CZebException s_outOfMemory;
    static const bool s_hasOwnOutOfMemory;

    zeb::CStringA m_description;
    HRESULT m_result;
    zeb::CStringA m_context;
};

/// The text that `e->GetErrorMessage` gives, up to 1024 bytes of it. Works for any CException.
ZEBAPI_EXPORT zeb::CStringA Zeb_GetExceptionDescription(zeb::CException* e);

/// The description of a result code: its MAPI name, or "0x%08X" for a code that has none.
ZEBAPI_EXPORT zeb::CStringA Zeb_GetResultDescription(HRESULT result);

/// Inside a catch block: one line that describes the exception in flight, whatever the library has
/// thrown: a CException (which is deleted), _com_error of an empty wrapper, std::bad_alloc.
/// "operation: description" where the operation is known.
///
/// A host ends with it:
///
///     catch (...)
///     {
///         std::fprintf(stderr, "%s\n", Zeb_DescribeCurrentException().GetString());
///     }
inline zeb::CStringA Zeb_DescribeCurrentException();

/// As Zeb_DescribeCurrentException, for an exception that was caught; it is not deleted.
ZEBAPI_EXPORT zeb::CStringA Zeb_DescribeException(zeb::CException* e);

inline zeb::CStringA Zeb_DescribeCurrentException()
{
    try
    {
        throw;
    }
    catch (zeb::CException* e)
    {
        struct Deleter
        {
            zeb::CException* exception;
            ~Deleter() { exception->Delete(); }
        } deleter{e};
        return Zeb_DescribeException(e);
    }
    catch (const _com_error& e)
    {
        return Zeb_GetResultDescription(e.Error());
    }
    catch (const std::bad_alloc&)
    {
        return Zeb_GetResultDescription(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    catch (const std::exception& e)
    {
        return zeb::CStringA(e.what());
    }
    catch (...)
    {
        return zeb::CStringA("unknown exception");
    }
}

/// Throws a failing result (severity bit set) as a CZebException*; success and warnings are returned unchanged.
/// @param operation what the exception's context begins with: the calling function unless another is given
inline HRESULT ThrowIfFailed(HRESULT result, const char* file = ZEB_FILE, int line = ZEB_LINE,
                             const char* operation = ZEB_CALLER)
{
    if (result < 0)
    {
        CZebException::Throw(result, file, line, operation);
    }
    return result;
}

/// As above, for a call on a MAPI object: the description is the object's extended error where it gives one.
template <class Object>
HRESULT ThrowIfFailed(HRESULT result, Object* object, const char* file = ZEB_FILE, int line = ZEB_LINE,
                      const char* operation = ZEB_CALLER)
{
    if (result < 0)
    {
        CZebException::Throw(result, object, file, line, operation);
    }
    return result;
}

/// As above, for a call through a counted pointer; an empty one gives no extended error.
template <class Object>
HRESULT ThrowIfFailed(HRESULT result, const zeb::CComPtr<Object>& object, const char* file = ZEB_FILE,
                      int line = ZEB_LINE, const char* operation = ZEB_CALLER)
{
    return ThrowIfFailed(result, object.Get(), file, line, operation);
}

namespace zeb
{

/// Inside a catch block: writes the line of the exception in flight (level 1) with the catch site's file and
/// line, and deletes a CException. Nothing leaves it.
void LogCaught(const char* file = ZEB_FILE, int line = ZEB_LINE) noexcept;

/// Runs `body`; a CZebException that leaves it is told the thing that it was about.
/// @param thing gives its text; called only then
/// @return what `body` returns
template <class Thing, class Body>
auto About(Thing&& thing, Body&& body) -> decltype(body())
{
    try
    {
        return std::forward<Body>(body)();
    }
    catch (CZebException* exception)
    {
        try
        {
            exception->AddContext(std::forward<Thing>(thing)());
        }
        catch (...)
        {
            // Memory is out. What was thrown is worth more than what it was about.
        }
        throw;
    }
}

/// Runs `body` and lets no exception out: what it throws is logged by LogCaught.
/// @return whether `body` ended without an exception
template <class Body>
bool Guarded(Body&& body, const char* file = ZEB_FILE, int line = ZEB_LINE)
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
