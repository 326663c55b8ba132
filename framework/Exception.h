// The base of every exception that is thrown by pointer.
#pragma once

#include "framework/Object.h"
#include "platform/mapi.h"

#include <cstdio>

namespace zeb
{

/// An exception allocated on the heap and thrown by pointer; the catcher calls Delete().
///
/// Slots after CObject's five: GetErrorMessage, ReportError, Dispose.
class CException : public CObject
{
public:
    /// `autoDelete` false: the object is not on the heap (such as the reserve for out of memory); Delete() does
    /// nothing.
    explicit CException(bool autoDelete = true)
        : m_autoDelete(autoDelete)
    {
    }

    /// The class's record.
    static CRuntimeClass* GetThisClass()
    {
        static CRuntimeClass record = {"CException", static_cast<int>(sizeof(CException)), &CObject::GetThisClass};
        return &record;
    }
    /// The record of the object's class.
    CRuntimeClass* GetRuntimeClass() const override { return GetThisClass(); }

    /// Copies the description to `buffer`, at most `maxChars` bytes, and sets `*helpContext`, if not null, to 0.
    /// @return FALSE when there is no description; the base class has none and writes an empty text.
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
    /// @return 1, like a message box with an OK button
    virtual int ReportError(unsigned int /*type*/ = 0, unsigned int /*messageId*/ = 0)
    {
        char text[1024 + 1] = {};
        const BOOL described = GetErrorMessage(text, sizeof text - 1, nullptr);
        std::fprintf(stderr, "%s\n", described ? text : GetRuntimeClass()->m_lpszClassName);
        return 1;
    }

    /// Deletes the object if it is on the heap.
    void Delete() { Dispose(); }

protected:
    /// The deleter for Delete(): runs in the binary that created the object.
    virtual void Dispose()
    {
        if (m_autoDelete)
        {
            delete this;
        }
    }

    /// Whether Delete() deletes the object.
    bool IsAutoDelete() const { return m_autoDelete; }

private:
    bool m_autoDelete;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CException;
#endif
