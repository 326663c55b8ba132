// The base of every exception that is thrown by pointer.
#pragma once

#include "framework/Object.h"
#include "platform/mapi.h"

#include <cstdio>

namespace zeb
{

/// An exception made on the heap and thrown by pointer; whoever catches it calls Delete().
///
/// Slots after CObject's five: GetErrorMessage, ReportError, Dispose.
class CException : public CObject
{
public:
    /// `autoDelete` false: the object is not on the heap (one kept for the case that memory is out); Delete()
    /// leaves it alone.
    explicit CException(bool autoDelete = true)
        : m_autoDelete(autoDelete)
    {
    }

    static CRuntimeClass* GetThisClass()
    {
        static CRuntimeClass record = {"CException", static_cast<int>(sizeof(CException)), &CObject::GetThisClass};
        return &record;
    }
    CRuntimeClass* GetRuntimeClass() const override { return GetThisClass(); }

    /// Copies a description into `buffer`, at most `maxChars` bytes, and sets `*helpContext`, when given, to
    /// 0.
    /// @return FALSE when there is no description; the base has none and writes an empty text.
    virtual BOOL GetErrorMessage(char* buffer, unsigned int maxChars, unsigned int* helpContext)
    {
        if (helpContext != nullptr)
        {
            *helpContext = 0;
        }
        if (buffer != nullptr && maxChars > 0)
        {
            *buffer = '\0';
        }
        return FALSE;
    }

    /// Writes the description, or the class's name when there is none, to standard error.
    /// @return 1, as a message box would whose only button was pressed.
    virtual int ReportError(unsigned int /*type*/ = 0, unsigned int /*messageId*/ = 0)
    {
        char text[1024 + 1] = {};
        const BOOL described = GetErrorMessage(text, sizeof text - 1, nullptr);
        std::fprintf(stderr, "%s\n", described ? text : GetRuntimeClass()->m_lpszClassName);
        return 1;
    }

    /// Deletes the object, or, when it is not on the heap, leaves it.
    void Delete() { Dispose(); }

protected:
    /// How Delete() gets rid of the object: in the binary that made it.
    virtual void Dispose()
    {
        if (m_autoDelete)
        {
            delete this;
        }
    }

    bool IsAutoDelete() const { return m_autoDelete; }

private:
    bool m_autoDelete;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CException;
#endif
