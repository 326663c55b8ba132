#include "zebapi/values/OnePROPVAL.h"

#include "platform/datetime.h"
#include "platform/text.h"
#include "qorth/Text.h"
#include "zebapi/values/internal/HexText.h"
#include "zebapi/values/internal/MultiValue.h"
#include "zebapi/values/internal/PropValWrite.h"
#include "zebapi/values/internal/Received.h"
#include "zebapi/values/internal/SameValue.h"

#include <charconv>
#include <cstring>

namespace
{

void CheckText(const void* text, const char* file = ZEB_FILE, int line = ZEB_LINE)
{
    if (text == nullptr)
    {
        CZebException::Throw(MAPI_E_INVALID_PARAMETER, file, line);
    }
}

CStringA NumberText(std::int64_t number)
{
    char text[24];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, number);
    return CStringA(text, static_cast<int>(end.ptr - text));
}

CStringA DateText(const FILETIME& time)
{
    return zeb::framework::WithMemory([&]
    {
        const std::optional<std::string> text = zeb::platform::LocalDateText(time);
        return text ? CStringA(*text) : CStringA("Invalid DateTime");
    });
}

/// A deep copy of `source`, whose allocations are chained to `parent`; `target` is written last.
/// @throws CZebException* the result of PropCopyMore
void CopyValue(SPropValue& target, const SPropValue& source, void* parent)
{
    SPropValue copy = source;
    if (!zeb::PointsNowhere(source))
    {
        Zeb_PropCopyMore(&copy, const_cast<SPropValue*>(&source), parent);
    }
    target = copy;
}

} // namespace

void CZebOnePropVal::CheckValid() const
{
    if (m_value == nullptr)
    {
        CZebException::Throw(MAPI_E_BAD_VALUE);
    }
}

void CZebOnePropVal::CheckType(ULONG type) const
{
    CheckValid();
    if (PROP_TYPE(m_value->ulPropTag) != type)
    {
        CZebException::Throw(MAPI_E_INVALID_TYPE);
    }
}

bool CZebOnePropVal::StringConversionPossible() const
{
    if (m_value == nullptr)
    {
        return false;
    }
    switch (PROP_TYPE(m_value->ulPropTag))
    {
    case PT_I2:
    case PT_LONG:
    case PT_BOOLEAN:
    case PT_I8:
    case PT_STRING8:
    case PT_UNICODE:
    case PT_SYSTIME:
    case PT_BINARY:
        return true;
    default:
        return false;
    }
}

CStringA CZebOnePropVal::String(bool errorAsText) const
{
    CheckValid();
    switch (PROP_TYPE(m_value->ulPropTag))
    {
    case PT_I2:
        return NumberText(m_value->Value.i);
    case PT_LONG:
        return NumberText(m_value->Value.l);
    case PT_I8:
        return NumberText(m_value->Value.li.QuadPart);
    case PT_BOOLEAN:
        return m_value->Value.b != 0 ? "true" : "false";
    case PT_STRING8:
        return m_value->Value.lpszA;
    case PT_UNICODE:
        return QorConvertStringByANSITable(m_value->Value.lpszW);
    case PT_SYSTIME:
        return DateText(m_value->Value.ft);
    case PT_BINARY:
        return zeb::HexText(m_value->Value.bin.lpb, m_value->Value.bin.cb);
    case PT_ERROR:
        if (errorAsText)
        {
            return "<error>";
        }
        break;
    }
    CZebException::Throw(MAPI_E_NO_SUPPORT);
}

CStringW CZebOnePropVal::StringW(bool errorAsText) const
{
    CheckValid();
    if (PROP_TYPE(m_value->ulPropTag) == PT_UNICODE)
    {
        return m_value->Value.lpszW;
    }
    const CStringA text = String(errorAsText);
    return zeb::framework::WithMemory([&]
    { return CStringW(zeb::platform::WideFromNarrow(text.GetString(), static_cast<size_t>(text.GetLength()))); });
}

void CZebOnePropVal::Set(const CZebOnePropVal& other)
{
    *this = static_cast<const SPropValue&>(other);
}

CZebOnePropVal& CZebOnePropVal::operator=(SHORT value)
{
    CheckType(PT_I2);
    m_value->Value.i = value;
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(ULONG value)
{
    CheckType(PT_LONG);
    m_value->Value.l = static_cast<LONG>(value);
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(LONG value)
{
    CheckType(PT_LONG);
    m_value->Value.l = value;
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(LONGLONG value)
{
    CheckType(PT_I8);
    m_value->Value.li.QuadPart = value;
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(bool value)
{
    CheckType(PT_BOOLEAN);
    m_value->Value.b = value ? 1 : 0;
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const FILETIME& value)
{
    CheckType(PT_SYSTIME);
    m_value->Value.ft = value;
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CStringW& text)
{
    return *this = text.GetString();
}

CZebOnePropVal& CZebOnePropVal::operator=(const CStringA& text)
{
    return *this = text.GetString();
}

CZebOnePropVal& CZebOnePropVal::operator=(const WCHAR* text)
{
    CheckType(PT_UNICODE);
    zeb::CheckParent(m_parent);
    CheckText(text);
    m_value->Value.lpszW = zeb::CopyText(text, zeb::platform::WideLength(text), m_parent);
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const char* text)
{
    CheckType(PT_STRING8);
    zeb::CheckParent(m_parent);
    CheckText(text);
    m_value->Value.lpszA = zeb::CopyText(text, std::strlen(text), m_parent);
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const SBinary& value)
{
    CheckType(PT_BINARY);
    zeb::CheckParent(m_parent);
    CZebBinary::CopyTo(m_value->Value.bin, value, m_parent);
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const SPropValue& value)
{
    CheckValid();
    CopyValue(*m_value, value, m_parent);
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CZebOnePropVal& other) = default;

CZebOnePropVal::operator bool() const
{
    CheckType(PT_BOOLEAN);
    return m_value->Value.b != 0;
}

CZebOnePropVal::operator const char*() const
{
    CheckType(PT_STRING8);
    return m_value->Value.lpszA;
}

CZebOnePropVal::operator const WCHAR*() const
{
    CheckType(PT_UNICODE);
    return m_value->Value.lpszW;
}

CZebOnePropVal::operator CStringA() const
{
    CheckValid();
    switch (PROP_TYPE(m_value->ulPropTag))
    {
    case PT_STRING8:
        return m_value->Value.lpszA;
    case PT_UNICODE:
        return QorConvertStringByANSITable(m_value->Value.lpszW);
    }
    CZebException::Throw(MAPI_E_INVALID_TYPE);
}

CZebOnePropVal::operator CStringW() const
{
    CheckValid();
    switch (PROP_TYPE(m_value->ulPropTag))
    {
    case PT_UNICODE:
        return m_value->Value.lpszW;
    case PT_STRING8:
        return QorConvertStringByANSITable(m_value->Value.lpszA);
    }
    CZebException::Throw(MAPI_E_INVALID_TYPE);
}

CZebOnePropVal::operator const FILETIME&() const
{
    CheckType(PT_SYSTIME);
    return m_value->Value.ft;
}

CZebOnePropVal::operator const SBinary&() const
{
    CheckType(PT_BINARY);
    return m_value->Value.bin;
}

CZebOnePropVal::operator const SPropValue&() const
{
    CheckValid();
    return *m_value;
}

CZebOnePropVal::operator LONGLONG() const
{
    CheckType(PT_I8);
    return m_value->Value.li.QuadPart;
}

CZebOnePropVal::operator LONG() const
{
    CheckType(PT_LONG);
    return m_value->Value.l;
}

CZebOnePropVal::operator ULONG() const
{
    CheckType(PT_LONG);
    return static_cast<ULONG>(m_value->Value.l);
}

CZebOnePropVal::operator SHORT() const
{
    CheckType(PT_I2);
    return m_value->Value.i;
}

CStringW CZebOnePropVal::UseDefault(const CStringW& defaultValue) const
{
    return HoldsError() ? defaultValue : operator CStringW();
}

CStringA CZebOnePropVal::UseDefault(const CStringA& defaultValue) const
{
    return HoldsError() ? defaultValue : operator CStringA();
}

ULONG CZebOnePropVal::UseDefault(ULONG defaultValue) const
{
    return HoldsError() ? defaultValue : operator ULONG();
}

LONG CZebOnePropVal::UseDefault(LONG defaultValue) const
{
    return HoldsError() ? defaultValue : operator LONG();
}

LONGLONG CZebOnePropVal::UseDefault(LONGLONG defaultValue) const
{
    return HoldsError() ? defaultValue : operator LONGLONG();
}

const WCHAR* CZebOnePropVal::UseDefault(const WCHAR* defaultValue) const
{
    return HoldsError() ? defaultValue : operator const WCHAR*();
}

const char* CZebOnePropVal::UseDefault(const char* defaultValue) const
{
    return HoldsError() ? defaultValue : operator const char*();
}

bool CZebOnePropVal::UseDefault(bool defaultValue) const
{
    return HoldsError() ? defaultValue : operator bool();
}

bool CZebOnePropVal::HoldsError() const
{
    return m_value != nullptr && PROP_TYPE(m_value->ulPropTag) == PT_ERROR;
}

bool CZebOnePropVal::operator!=(const CZebOnePropVal& other) const
{
    return !(*this == other);
}

bool CZebOnePropVal::IsEmpty() const
{
    return m_value == nullptr || HoldsError();
}

ULONG CZebOnePropVal::GetType() const
{
    return PROP_TYPE(GetTag());
}

ULONG CZebOnePropVal::GetTag() const
{
    CheckValid();
    return m_value->ulPropTag;
}

ULONG CZebOnePropVal::GetPropID() const
{
    return PROP_ID(GetTag());
}

CZebPropVal::CZebPropVal()
    : CZebOnePropVal(nullptr, nullptr)
{
}

CZebPropVal::~CZebPropVal()
{
    Empty();
}

void CZebPropVal::Empty()
{
    zeb::FreeBlock(m_value);
}

SPropValue** CZebPropVal::operator&()
{
    Empty();
    return &m_value;
}

CZebOnePropVal& CZebPropVal::operator=(const CZebOnePropVal& other)
{
    const SPropValue* source = ValueOf(other);
    if (source == m_value)
    {
        return *this;
    }
    zeb::Block<SPropValue> copy;
    if (source != nullptr)
    {
        copy.reset(zeb::Allocate<SPropValue>(sizeof(SPropValue), nullptr));
        CopyValue(*copy, *source, copy.get());
    }
    // After copying: the source may be part of the current value.
    Empty();
    m_value = copy.release();
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<CZebBinary>& values)
{
    CheckType(PT_MV_BINARY);
    zeb::CheckParent(m_parent);
    const auto count = static_cast<std::uint64_t>(values.GetSize());
    SBinary* entries = zeb::AllocateArray<SBinary>(count, m_parent);
    for (std::uint64_t i = 0; i < count; ++i)
    {
        entries[i] = static_cast<const SBinary&>(values[static_cast<INT_PTR>(i)]);
    }
    m_value->Value.MVbin.cValues = static_cast<ULONG>(count);
    m_value->Value.MVbin.lpbin = entries;
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<CStringW>& values)
{
    CheckType(PT_MV_UNICODE);
    zeb::CheckParent(m_parent);
    m_value->Value.MVszW.lppszW = zeb::CopyTexts(values, m_parent);
    m_value->Value.MVszW.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<CStringA>& values)
{
    CheckType(PT_MV_STRING8);
    zeb::CheckParent(m_parent);
    m_value->Value.MVszA.lppszA = zeb::CopyTexts(values, m_parent);
    m_value->Value.MVszA.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<SHORT>& values)
{
    CheckType(PT_MV_I2);
    zeb::CheckParent(m_parent);
    m_value->Value.MVi.lpi = zeb::CopyNumbers(values, m_parent);
    m_value->Value.MVi.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<LONG>& values)
{
    CheckType(PT_MV_LONG);
    zeb::CheckParent(m_parent);
    m_value->Value.MVl.lpl = zeb::CopyNumbers(values, m_parent);
    m_value->Value.MVl.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

void CZebOnePropVal::GetMV(CArray<CZebBinary>& values) const
{
    CheckType(PT_MV_BINARY);
    zeb::CopyOut(values, m_value->Value.MVbin.lpbin, m_value->Value.MVbin.cValues);
}

void CZebOnePropVal::GetMV(CArray<CStringW>& values) const
{
    CheckType(PT_MV_UNICODE);
    zeb::CopyOut(values, m_value->Value.MVszW.lppszW, m_value->Value.MVszW.cValues);
}

void CZebOnePropVal::GetMV(CArray<CStringA>& values) const
{
    CheckType(PT_MV_STRING8);
    zeb::CopyOut(values, m_value->Value.MVszA.lppszA, m_value->Value.MVszA.cValues);
}

void CZebOnePropVal::GetMV(CArray<SHORT>& values) const
{
    CheckType(PT_MV_I2);
    zeb::CopyOut(values, m_value->Value.MVi.lpi, m_value->Value.MVi.cValues);
}

void CZebOnePropVal::GetMV(CArray<LONG>& values) const
{
    CheckType(PT_MV_LONG);
    zeb::CopyOut(values, m_value->Value.MVl.lpl, m_value->Value.MVl.cValues);
}

CStringA CZebOnePropVal::StringUtf8(bool errorAsText) const
{
    const CStringW text = StringW(errorAsText);
    return zeb::framework::WithMemory([&]
    {
        const std::string utf8 = zeb::platform::Utf8FromWide(text, static_cast<size_t>(text.GetLength()));
        return CStringA(utf8.data(), static_cast<int>(utf8.size()));
    });
}

void CZebOnePropVal::SetUtf8(const char* text)
{
    CheckEither(PT_UNICODE, PT_STRING8);
    CheckText(text);
    zeb::framework::WithMemory([&]
    {
        const zeb::platform::WideString wide = zeb::platform::WideFromUtf8(text, std::strlen(text));
        if (PROP_TYPE(m_value->ulPropTag) == PT_UNICODE)
        {
            *this = wide.c_str();
        }
        else
        {
            *this = zeb::platform::NarrowFromWide(wide.c_str(), wide.size()).c_str();
        }
    });
}

bool CZebOnePropVal::IsOfType(ULONG type) const
{
    return m_value != nullptr && PROP_TYPE(m_value->ulPropTag) == type;
}

void CZebOnePropVal::CheckEither(ULONG type, ULONG orElse) const
{
    CheckValid();
    if (PROP_TYPE(m_value->ulPropTag) != orElse)
    {
        CheckType(type);
    }
}

CZebOnePropVal& CZebOnePropVal::operator=(const GUID& value)
{
    CheckType(PT_CLSID);
    zeb::CheckParent(m_parent);
    GUID* const copy = zeb::Allocate<GUID>(sizeof value, m_parent);
    *copy = value;
    m_value->Value.lpguid = copy;
    return *this;
}

void CZebOnePropVal::SetElements(ULONG type, ULONG orElse, const void* elements, INT_PTR count, ULONG size)
{
    CheckEither(type, orElse);
    zeb::CheckParent(m_parent);
    auto* const copy = zeb::Allocate<BYTE>(zeb::BlockSize(0, static_cast<std::uint64_t>(count), size), m_parent);
    if (count != 0)
    {
        std::memcpy(copy, elements, static_cast<size_t>(count) * size);
    }
    // Every array is a count and a pointer.
    m_value->Value.MVl = {static_cast<ULONG>(count), reinterpret_cast<LONG*>(copy)};
}

const void* CZebOnePropVal::Elements(ULONG type, ULONG orElse, ULONG& count) const
{
    CheckEither(type, orElse);
    count = zeb::CountOf(m_value->Value.MVl.lpl, m_value->Value.MVl.cValues);
    return m_value->Value.MVl.lpl;
}

bool CZebOnePropVal::operator==(const CZebOnePropVal& other) const
{
    CheckValid();
    other.CheckValid();
    if (m_value == other.m_value)
    {
        return true;
    }
    return zeb::SameValue(*m_value, *other.m_value);
}
