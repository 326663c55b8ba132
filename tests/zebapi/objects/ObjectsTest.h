// What the tests of property objects have in common.
#pragma once

#include "framework/ComError.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"
#include "tests/support/doubles/Journal.h"
#include "tests/support/doubles/RowTable.h"
#include "zebapi/Exception.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace zeb::test
{

/// The code of the CZebException that `body` throws; 0 when it throws none.
template <class Body>
HRESULT Thrown(Body&& body)
{
    return ThrownBy(std::forward<Body>(body));
}

/// Its description; empty when none is thrown.
template <class Body>
std::string Described(Body&& body)
{
    try
    {
        body();
    }
    catch (CZebException* exception)
    {
        const std::string text(static_cast<const char*>(Zeb_GetExceptionDescription(exception)));
        exception->Delete();
        return text;
    }
    return "";
}

/// The code of the _com_error that `body` raises; 0 when it raises none.
template <class Body>
HRESULT Raised(Body&& body)
{
    return ComErrorThrownBy(std::forward<Body>(body));
}

class ObjectsTest : public ::testing::Test
{
protected:
    Lines Calls() { return m_journal.Take(); }
    /// Catch-site lines and throw lines so far.
    size_t Caught() const { return m_log.CountBeginning("EXCEPTION: "); }
    size_t ThrowLines() const { return m_log.CountBeginning("THROW "); }

    MapiMemory m_memory;
    TableEntryPoints m_entryPoints;
    LogCapture m_log;
    Journal m_journal;
};

/// An identifier of the bytes of `text`.
inline SBinary ID(const char* text)
{
    return {static_cast<ULONG>(std::strlen(text)), reinterpret_cast<BYTE*>(const_cast<char*>(text))};
}

/// Texts in a form that GoogleTest compares and prints.
inline std::string Str(const CStringA& text)
{
    return static_cast<const char*>(text);
}
inline std::u16string Str(const CStringW& text)
{
    return std::u16string(text.GetString(), text.GetString() + text.GetLength());
}

} // namespace zeb::test
