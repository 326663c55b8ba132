// The journal of the doubles of MAPI objects: one line per call, in the order of all calls.
#pragma once

#include "platform/mapi.h"
#include "tests/support/ProviderScope.h"
#include "tests/support/doubles/Refusals.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

namespace zeb::test
{

/// Threads: lines may come from any.
class Journal
{
public:
    void Write(const std::string& line)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.push_back(line);
    }
    /// The lines since the last Take.
    std::vector<std::string> Take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::move(m_lines);
    }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

using Lines = std::vector<std::string>;

inline std::string Number(unsigned long long value)
{
    char text[32];
    std::snprintf(text, sizeof(text), "0x%llX", value);
    return text;
}

/// Bytes as hexadecimal text; "-" for none.
inline std::string Hex(const void* bytes, size_t count)
{
    if (count == 0)
    {
        return bytes == nullptr ? "-" : "empty";
    }
    std::string text;
    for (size_t i = 0; i < count; ++i)
    {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02X", static_cast<const unsigned char*>(bytes)[i]);
        text += digits;
    }
    return text;
}

inline std::string Text(const char* text)
{
    return text != nullptr ? "'" + std::string(text) + "'" : "null";
}

/// Only for ASCII.
inline std::string Text(const WCHAR* text)
{
    std::string narrow;
    for (; text != nullptr && *text != 0; ++text)
    {
        narrow += static_cast<char>(*text);
    }
    return text != nullptr ? "'" + narrow + "'" : "null";
}

/// Text whose width the flags of the call tell.
inline std::string Text(LPTSTR text, ULONG flags)
{
    return (flags & MAPI_UNICODE) != 0 ? Text(reinterpret_cast<const WCHAR*>(text))
                                       : Text(reinterpret_cast<const char*>(text));
}

inline std::string Null(const void* pointer)
{
    return pointer != nullptr ? "given" : "null";
}

inline std::string Tags(const SPropTagArray* tags)
{
    if (tags == nullptr)
    {
        return "all";
    }
    std::string text;
    for (ULONG i = 0; i < tags->cValues; ++i)
    {
        text += (i != 0 ? "," : "") + Number(tags->aulPropTag[i]);
    }
    return "[" + text + "]";
}

inline std::string List(const SBinaryArray* list)
{
    if (list == nullptr)
    {
        return "null";
    }
    std::string text;
    for (ULONG i = 0; i < list->cValues; ++i)
    {
        text += (i != 0 ? "," : "") + Hex(list->lpbin[i].lpb, list->lpbin[i].cb);
    }
    return "[" + text + "]";
}

/// One value as "tag=value".
inline std::string Value(const SPropValue& value)
{
    std::string text = Number(value.ulPropTag) + "=";
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_STRING8:
        return text + Text(value.Value.lpszA);
    case PT_UNICODE:
        if (value.Value.lpszW == nullptr)
        {
            return text + "null";
        }
        for (const WCHAR* c = value.Value.lpszW; *c != 0; ++c)
        {
            text += static_cast<char>(*c);
        }
        return text;
    case PT_BOOLEAN:
        return text + (value.Value.b != 0 ? "true" : "false");
    case PT_BINARY:
        return text + Hex(value.Value.bin.lpb, value.Value.bin.cb);
    default:
        return text + Number(static_cast<ULONG>(value.Value.l));
    }
}

inline std::string Name(const IID* iid)
{
    static const struct
    {
        const IID* iid;
        const char* name;
    } names[] = {
        {&IID_IUnknown, "IUnknown"},         {&IID_IMAPIProp, "IMAPIProp"},  {&IID_IMsgStore, "IMsgStore"},
        {&IID_IMAPIFolder, "IMAPIFolder"},   {&IID_IMessage, "IMessage"},    {&IID_IMAPIContainer, "IMAPIContainer"},
        {&IID_IAddrBook, "IAddrBook"},       {&IID_IDistList, "IDistList"},  {&IID_IStream, "IStream"},
        {&IID_IMAPISession, "IMAPISession"}, {&IID_IMAPITable, "IMAPITable"}};
    if (iid == nullptr)
    {
        return "null";
    }
    for (const auto& known : names)
    {
        if (*known.iid == *iid)
        {
            return known.name;
        }
    }
    return "other interface";
}

/// IUnknown of a double that lives on the test's stack: references are counted, and none may be left at the end.
/// QueryInterface supports the given interfaces.
template <class Interface>
class Counted : public Interface
{
public:
    Counted(Journal& journal, std::string name, std::vector<const IID*> interfaces)
        : m_journal(journal)
        , m_name(std::move(name))
        , m_interfaces(std::move(interfaces))
    {
    }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    virtual ~Counted() { EXPECT_EQ(m_references, 0u) << m_name << ": references are left"; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** result) override
    {
        const ProviderScope inside;
        *result = nullptr;
        if (m_queries)
        {
            Note("QueryInterface(" + Name(&iid) + ")");
        }
        for (const IID* known : m_interfaces)
        {
            if (*known == iid)
            {
                *result = static_cast<Interface*>(this);
                AddRef();
                return S_OK;
            }
        }
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        EXPECT_GT(m_references, 0u) << m_name << ": released once too often";
        return --m_references;
    }

    ULONG References() const { return m_references; }
    /// Records queries too.
    void NoteQueries() { m_queries = true; }
    /// Supports only IUnknown and IMAPIProp.
    void RefuseInterfaces() { m_interfaces = {&IID_IUnknown, &IID_IMAPIProp}; }

    /// Returned by the method of that name from now on, after its line is recorded.
    void Fail(const std::string& method, HRESULT result) { m_failures.push_back({method, result}); }
    /// The text of the extended error; empty for none.
    std::string m_error;

protected:
    void Note(const std::string& call) { m_journal.Write(m_name + ": " + call); }
    /// Records the call; returns the test's result for it, or `otherwise`.
    HRESULT Called(const std::string& method, const std::string& arguments, HRESULT otherwise = S_OK)
    {
        Note(method + "(" + arguments + ")");
        m_stops = false;
        if (const std::optional<ProviderAnswer> answer = FailingCalls::Next())
        {
            m_stops = answer->givesNothing;
            if (std::is_base_of_v<IStream, Interface>)
            {
                FailingCalls::ForgetText();
            }
            return answer->result;
        }
        for (const auto& failure : m_failures)
        {
            if (failure.method == method)
            {
                return failure.result;
            }
        }
        return otherwise;
    }
    /// Whether the method that has called Called ends here and leaves what it gives out empty.
    bool Stops(HRESULT result) const { return FAILED(result) || m_stops; }
    /// The same of a method that gives out an object.
    bool GivesNoObject(HRESULT result) const
    {
        if (SUCCEEDED(result) && m_stops)
        {
            FailingCalls::NoteWithheld();
        }
        return Stops(result);
    }
    HRESULT Unexpected(const char* method)
    {
        ADD_FAILURE() << m_name << ": " << method << " was not to be called";
        return MAPI_E_NO_SUPPORT;
    }
    /// GetLastError, of an error that the caller does not free.
    HRESULT LastError(HRESULT result, ULONG flags, LPMAPIERROR* error)
    {
        *error = nullptr;
        const std::string& text = FailingCalls::Text().empty() ? m_error : FailingCalls::Text();
        if (!text.empty())
        {
            Note("GetLastError(" + Number(static_cast<ULONG>(result)) + "," + Number(flags) + ")");
            m_mapiError = {1, const_cast<char*>(text.c_str()), const_cast<char*>(m_name.c_str()), 2, 3};
            *error = &m_mapiError;
        }
        return S_OK;
    }
    template <class Object>
    static HRESULT HandOut(Object* object, Object** out)
    {
        *out = object;
        if (object != nullptr)
        {
            object->AddRef();
        }
        return S_OK;
    }

    Journal& m_journal;
    std::string m_name;

private:
    struct Failure
    {
        std::string method;
        HRESULT result;
    };
    std::vector<const IID*> m_interfaces;
    std::vector<Failure> m_failures;
    MAPIERROR m_mapiError = {};
    ULONG m_references = 0;
    bool m_queries = false;
    bool m_stops = false;
};

} // namespace zeb::test
