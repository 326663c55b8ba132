// The library's exception, the check that converts a MAPI result to it, and the guard that stops it.
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
/// Created on the heap and thrown by pointer; the catcher (as CZebException*, CException* or CObject*) calls Delete().
/// Creating one with a file name writes one line to the log, level 1: "THROW Exception 0x%08x (%s), File %s, line %d".
/// Threads: objects are independent of each other.
class ZEBAPI_EXPORT CZebException : public zeb::CException
{
    ZEB_DECLARE_DYNAMIC(CZebException)

public:
    /// The description is the MAPI name of `result`, or "0x%08X" for a code that has none.
    /// @param file the source file of the failing call; null writes no log line
    CZebException(LONG result, const char* file, int line);

    /// The description is the extended error of the object on which the failing call was made
    /// (Object::GetLastError(result, 0, ...), 8-bit texts), or the name of `result` when the object gives
    /// none. The MAPIERROR that the object returns is not freed.
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
    /// only when the copy is shorter than that. Sets `*helpContext`, if not null, to 0.
    /// @return TRUE
    BOOL GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext) override;

    /// The MAPI result code.
    virtual HRESULT GetResult();

    /// What failed: the operation and, if known, its object ("CreateFolder 'Projects'", "operator[] row 7 of 3"). Empty
    /// for an exception that was not thrown by Throw.
    zeb::CStringA GetContext() const;

    /// Adds an object to the context. The default log sink shows the context in a line after that of the throw.
    void AddContext(const char* thing);

    /// Throws a new exception, or, when out of memory, a preallocated one: MAPI_E_NOT_ENOUGH_MEMORY.
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
        catch (CZebException*) // the preallocated one for out of memory; writes no log line
        {
            ThrowOutOfMemory(file, line);
        }
        exception->SetOperation(operation);
        throw exception;
    }

    /// As above, with the library's own text as the extended error.
    [[noreturn]] static void ThrowWithError(LONG result, const char* error, const char* file = ZEB_FILE,
                                            int line = ZEB_LINE, const char* operation = ZEB_CALLER);

protected:
    /// Common part of the constructors: stores the result, creates the description, writes the log line.
    /// @param error may be null; stays the caller's
    void Construct(LONG result, LPMAPIERROR error, const char* file, int line);

private:
    struct Reserve
    {
    };
    explicit CZebException(Reserve);
    /// Begins the context; empty when out of memory.
    void SetOperation(const char* operation) noexcept;
    [[noreturn]] static void ThrowOutOfMemory(const char* file, int line);

    /// Created when the library is loaded, for out of memory. Threads share it; it is never modified.
    static CZebException s_outOfMemory;
    static const bool s_hasOwnOutOfMemory;

    zeb::CStringA m_description;
    HRESULT m_result;
    zeb::CStringA m_context;
};

/// The text of `e->GetErrorMessage`, at most 1024 bytes. Works for any CException.
ZEBAPI_EXPORT zeb::CStringA Zeb_GetExceptionDescription(zeb::CException* e);

/// The description of a result code: its MAPI name, or "0x%08X" for a code that has none.
ZEBAPI_EXPORT zeb::CStringA Zeb_GetResultDescription(HRESULT result);

/// Inside a catch block: one line that describes the current exception, of any type that the library throws: a
/// CException (which is deleted), _com_error of an empty wrapper, std::bad_alloc. "operation: description" if the
/// operation is known.
///
/// For the end of a host's main function:
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

/// As above, for a call on a MAPI object: the description is the object's extended error if it has one.
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

/// As above, for a call through a counted pointer; an empty one has no extended error.
template <class Object>
HRESULT ThrowIfFailed(HRESULT result, const zeb::CComPtr<Object>& object, const char* file = ZEB_FILE,
                      int line = ZEB_LINE, const char* operation = ZEB_CALLER)
{
    return ThrowIfFailed(result, object.Get(), file, line, operation);
}

namespace zeb
{

/// Inside a catch block: writes a line about the current exception (level 1) with the catch site's file and line, and
/// deletes a CException. Throws nothing.
void LogCaught(const char* file = ZEB_FILE, int line = ZEB_LINE) noexcept;

/// Runs `body`; adds the object's text to the context of a CZebException that leaves it. @param thing returns the text;
/// called only on failure @return the result of `body`
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
            // Out of memory: the exception matters more than its context.
        }
        throw;
    }
}

/// Runs `body` and stops all exceptions: LogCaught logs them.
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
