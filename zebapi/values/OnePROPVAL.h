// Single property values: a typed view of an SPropValue, and its owning variant.
#pragma once

#include "framework/Containers.h"
#include "platform/overloads.h"
#include "zebapi/values/Binary.h"

#include <cstdint>
#include <type_traits>
#include <utility>

namespace zeb
{

/// Maps an integer type that the platform spells differently to one of the value classes' integer types: `int` is LONG
/// where LONG is `long`, and the other way round. There is none for 64-bit unsigned integers.
template <class T>
using IntegerAs = std::conditional_t<sizeof(T) == sizeof(std::int64_t), std::int64_t,
                                     std::conditional_t<std::is_signed_v<T>, LONG, ULONG>>;

/// Enabled for integer types that are not one of the value classes' own, and have the size of one.
template <class T>
using IfOtherInteger =
    std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, LONG> && !std::is_same_v<T, ULONG> &&
                     !std::is_same_v<T, std::int64_t> &&
                     (sizeof(T) == sizeof(LONG) || (sizeof(T) == sizeof(std::int64_t) && std::is_signed_v<T>))>;

} // namespace zeb

/// A typed view of one SPropValue: reads, writes, prints, compares and copies it.
///
/// The view owns nothing: it is valid as long as the memory of the value. Memory that a write allocates is chained to
/// the allocation parent, the MAPI buffer that holds the value, and is freed with it; so is the memory of previous
/// values. A view without an allocation parent cannot be assigned text, binaries or arrays.
///
/// The type of a value is the low half of its tag. Every typed read or write checks, in this order: no value
/// MAPI_E_BAD_VALUE, other type MAPI_E_INVALID_TYPE, and, for a write that allocates, no allocation parent
/// MAPI_E_INVALID_OBJECT. So a value's tag must be set before a value is assigned. A failed check leaves the value
/// unchanged.
///
/// Narrow text is in the ANSI code page (UTF-8 on Linux). Null text in a received value reads as empty text,
/// except in the conversions to pointers, which return null. An array or binary that has a count and a null pointer
/// reads and compares as empty. Threads: none of its own.
class ZEBAPI_EXPORT CZebOnePropVal
{
protected:
    /// @throws CZebException* MAPI_E_BAD_VALUE without a value.
    virtual void CheckValid() const;
    /// @throws CZebException* MAPI_E_BAD_VALUE without a value, MAPI_E_INVALID_TYPE when its type is not `type`.
    virtual void CheckType(ULONG type) const;

public:
    virtual ~CZebOnePropVal() = default;
    /// Whether String(false) has a text for this type; false without a value.
    virtual bool StringConversionPossible() const;
    /// The value as text: numbers in decimal, "true" and "false", narrow text, dates as local date and time,
    /// binaries as hexadecimal text; PT_ERROR as "<error>" when `errorAsText` asks for it. An invalid date reads
    /// "Invalid DateTime".
    /// @throws CZebException* MAPI_E_BAD_VALUE, MAPI_E_NO_SUPPORT for any other type, MAPI_E_NOT_ENOUGH_MEMORY
    /// for a binary that is too large for a text.
    virtual zeb::CStringA String(bool errorAsText) const;
    /// String() in 16-bit characters; PT_UNICODE text unchanged.
    virtual zeb::CStringW StringW(bool errorAsText) const;
    /// Assigns a deep copy of another value, tag included (PropCopyMore).
    /// @throws CZebException* MAPI_E_BAD_VALUE for either side; the result of PropCopyMore.
    virtual void Set(const CZebOnePropVal& other);

    ZEB_OVERLOADS(
        /// PT_MV_BINARY. The entries point into the buffers of the array's binaries, which must outlive the
        /// value's use.
        virtual CZebOnePropVal& operator=(const zeb::CArray<CZebBinary>& values),
        /// PT_MV_UNICODE.
        virtual CZebOnePropVal& operator=(const zeb::CArray<zeb::CStringW>& values),
        /// PT_MV_STRING8.
        virtual CZebOnePropVal& operator=(const zeb::CArray<zeb::CStringA>& values),
        /// PT_MV_I2.
        virtual CZebOnePropVal& operator=(const zeb::CArray<SHORT>& values),
        /// PT_MV_LONG.
        virtual CZebOnePropVal& operator=(const zeb::CArray<LONG>& values),
        /// PT_I2.
        virtual CZebOnePropVal& operator=(SHORT value),
        /// PT_LONG.
        virtual CZebOnePropVal& operator=(ULONG value),
        /// PT_LONG.
        virtual CZebOnePropVal& operator=(LONG value),
        /// PT_I8.
        virtual CZebOnePropVal& operator=(LONGLONG value),
        /// PT_BOOLEAN, stored as 1 or 0.
        virtual CZebOnePropVal& operator=(bool value),
        /// PT_SYSTIME.
        virtual CZebOnePropVal& operator=(const FILETIME& value),
        /// PT_UNICODE, up to the first terminator.
        virtual CZebOnePropVal& operator=(const zeb::CStringW& text),
        /// PT_STRING8, up to the first terminator.
        virtual CZebOnePropVal& operator=(const zeb::CStringA& text),
        /// PT_UNICODE. @throws CZebException* MAPI_E_INVALID_PARAMETER for a null text.
        virtual CZebOnePropVal& operator=(const WCHAR* text),
        /// PT_STRING8. @throws CZebException* MAPI_E_INVALID_PARAMETER for a null text.
        virtual CZebOnePropVal& operator=(const char* text),
        /// PT_BINARY; the bytes are copied.
        virtual CZebOnePropVal& operator=(const SBinary& value),
        /// A deep copy of any value, tag included (PropCopyMore, chained to the allocation parent; without
        /// one only values that need no allocation can be copied).
        virtual CZebOnePropVal& operator=(const SPropValue& value),
        /// Refers to the value of `other`; nothing is copied. To copy the value, use Set. Only an owner, assigned
        /// through its base, makes a deep copy, and is unchanged when that fails.
        virtual CZebOnePropVal& operator=(const CZebOnePropVal& other));

    /// PT_BOOLEAN.
    virtual operator bool() const;
    /// PT_STRING8, borrowed.
    virtual operator const char*() const;
    /// PT_UNICODE, borrowed.
    virtual operator const WCHAR*() const;
    /// PT_STRING8, or PT_UNICODE narrowed. @throws CZebException* MAPI_E_INVALID_TYPE for other types.
    virtual operator zeb::CStringA() const;
    /// PT_UNICODE, or PT_STRING8 widened. @throws CZebException* MAPI_E_INVALID_TYPE for other types.
    virtual operator zeb::CStringW() const;
    /// PT_SYSTIME, borrowed; UTC.
    virtual operator const FILETIME&() const;
    /// PT_BINARY, borrowed.
    virtual operator const SBinary&() const;
    /// Any value, borrowed. @throws CZebException* MAPI_E_BAD_VALUE
    virtual operator const SPropValue&() const;
    /// PT_I8.
    virtual operator LONGLONG() const;
    /// PT_LONG.
    virtual operator LONG() const;
    /// PT_LONG.
    virtual operator ULONG() const;
    /// PT_I2.
    virtual operator SHORT() const;

    ZEB_OVERLOADS(
        /// Replaces the array's contents by copies of the elements of PT_MV_BINARY, which may lie in the
        /// array's own binaries. A failed read leaves the array unchanged.
        virtual void GetMV(zeb::CArray<CZebBinary>& values) const,
        /// PT_MV_UNICODE.
        virtual void GetMV(zeb::CArray<zeb::CStringW>& values) const,
        /// PT_MV_STRING8.
        virtual void GetMV(zeb::CArray<zeb::CStringA>& values) const,
        /// PT_MV_I2.
        virtual void GetMV(zeb::CArray<SHORT>& values) const,
        /// PT_MV_LONG.
        virtual void GetMV(zeb::CArray<LONG>& values) const);

    ZEB_OVERLOADS(
        /// UseDefault: the default for PT_ERROR (a property that could not be read), else the typed read of the
        /// default's type. @throws CZebException* MAPI_E_BAD_VALUE without a value, MAPI_E_INVALID_TYPE for another
        /// type.
        virtual zeb::CStringW UseDefault(const zeb::CStringW& defaultValue) const,
        /// 8-bit text.
        virtual zeb::CStringA UseDefault(const zeb::CStringA& defaultValue) const,
        /// PT_LONG.
        virtual ULONG UseDefault(ULONG defaultValue) const,
        /// PT_LONG.
        virtual LONG UseDefault(LONG defaultValue) const,
        /// PT_I8.
        virtual LONGLONG UseDefault(LONGLONG defaultValue) const,
        /// PT_UNICODE, borrowed.
        virtual const WCHAR* UseDefault(const WCHAR* defaultValue) const,
        /// PT_STRING8, borrowed.
        virtual const char* UseDefault(const char* defaultValue) const,
        /// PT_BOOLEAN.
        virtual bool UseDefault(bool defaultValue) const);

    /// The same SPropValue, or equal types and equal values; property identifiers do not count. Numbers
    /// compare as numbers, text and binaries by their bytes, arrays element by element. PT_ERROR, PT_OBJECT,
    /// PT_MV_BINARY and types without a comparison here are unequal. @throws CZebException* MAPI_E_BAD_VALUE
    /// without a value on a side.
    virtual bool operator==(const CZebOnePropVal& other) const;
    /// The opposite of ==.
    virtual bool operator!=(const CZebOnePropVal& other) const;
    /// True without a value and for PT_ERROR.
    virtual bool IsEmpty() const;
    /// The low half of the tag. @throws CZebException* MAPI_E_BAD_VALUE
    virtual ULONG GetType() const;
    /// @throws CZebException* MAPI_E_BAD_VALUE
    virtual ULONG GetTag() const;
    /// The high half of the tag. @throws CZebException* MAPI_E_BAD_VALUE
    virtual ULONG GetPropID() const;

    /// Refers to `value` (null: no value); allocations are chained to `allocationParent` (null: none possible).
    CZebOnePropVal(SPropValue* value, void* allocationParent)
        : m_parent(allocationParent)
        , m_value(value)
    {
    }
    /// Refers to the value of `other`.
    CZebOnePropVal(const CZebOnePropVal& other) = default;

    /// PT_BINARY; the bytes are copied.
    CZebOnePropVal& operator=(const CZebBinary& value) { return *this = static_cast<const SBinary&>(value); }
    /// Integers of other spellings (a plain `7` where LONG is not `int`) as the integer type of their size.
    template <class T, class = zeb::IfOtherInteger<T>>
    CZebOnePropVal& operator=(T value)
    {
        return *this = static_cast<zeb::IntegerAs<T>>(value);
    }
    /// Integers of other spellings, by the conversion of their size.
    template <class T, class = zeb::IfOtherInteger<T>>
    operator T() const
    {
        return static_cast<T>(operator zeb::IntegerAs<T>());
    }
    /// The same for integers of other spellings.
    template <class T, class = zeb::IfOtherInteger<T>>
    T UseDefault(T defaultValue) const
    {
        return static_cast<T>(UseDefault(static_cast<zeb::IntegerAs<T>>(defaultValue)));
    }

    /// String() in UTF-8, whatever the ANSI code page is.
    /// @throws CZebException* as StringW
    zeb::CStringA StringUtf8(bool errorAsText = true) const;
    /// Text given in UTF-8, for PT_UNICODE and, in the ANSI code page then, for PT_STRING8. What is no UTF-8 becomes
    /// U+FFFD.
    /// @throws CZebException* MAPI_E_BAD_VALUE, MAPI_E_INVALID_TYPE, MAPI_E_INVALID_OBJECT, MAPI_E_INVALID_PARAMETER
    /// for a null text
    void SetUtf8(const char* text);

    /// PT_DOUBLE, PT_APPTIME (days since 1899-12-30), PT_R4 (rounded).
    CZebOnePropVal& operator=(double value)
    {
        if (IsOfType(PT_R4))
        {
            m_value->Value.flt = static_cast<float>(value);
            return *this;
        }
        CheckEither(PT_DOUBLE, PT_APPTIME);
        m_value->Value.dbl = value;
        return *this;
    }
    /// PT_DOUBLE, PT_APPTIME, PT_R4.
    double GetDouble() const
    {
        if (IsOfType(PT_R4))
        {
            return static_cast<double>(m_value->Value.flt);
        }
        CheckEither(PT_DOUBLE, PT_APPTIME);
        return m_value->Value.dbl;
    }
    /// PT_CURRENCY, in ten-thousandths.
    void SetCurrency(LONGLONG value)
    {
        CheckType(PT_CURRENCY);
        m_value->Value.cur.int64 = value;
    }
    /// PT_CURRENCY, in ten-thousandths.
    LONGLONG GetCurrency() const
    {
        CheckType(PT_CURRENCY);
        return m_value->Value.cur.int64;
    }
    /// PT_CLSID; the value is copied.
    CZebOnePropVal& operator=(const GUID& value);
    /// PT_CLSID; all zero for a received value without one.
    GUID GetGuid() const
    {
        CheckType(PT_CLSID);
        return m_value->Value.lpguid != nullptr ? *m_value->Value.lpguid : GUID{};
    }
    /// PT_MV_I8, PT_MV_CURRENCY. Arrays are copied, in and out.
    CZebOnePropVal& operator=(const zeb::CArray<std::int64_t>& values)
    {
        return SetArray(PT_MV_I8, PT_MV_CURRENCY, values);
    }
    /// PT_MV_DOUBLE, PT_MV_APPTIME.
    CZebOnePropVal& operator=(const zeb::CArray<double>& values)
    {
        return SetArray(PT_MV_DOUBLE, PT_MV_APPTIME, values);
    }
    /// PT_MV_R4.
    CZebOnePropVal& operator=(const zeb::CArray<float>& values) { return SetArray(PT_MV_R4, PT_MV_R4, values); }
    /// PT_MV_SYSTIME.
    CZebOnePropVal& operator=(const zeb::CArray<FILETIME>& values)
    {
        return SetArray(PT_MV_SYSTIME, PT_MV_SYSTIME, values);
    }
    /// PT_MV_CLSID.
    CZebOnePropVal& operator=(const zeb::CArray<GUID>& values) { return SetArray(PT_MV_CLSID, PT_MV_CLSID, values); }
    /// PT_MV_I8, PT_MV_CURRENCY.
    void GetMV(zeb::CArray<std::int64_t>& values) const { GetArray(PT_MV_I8, PT_MV_CURRENCY, values); }
    /// PT_MV_DOUBLE, PT_MV_APPTIME.
    void GetMV(zeb::CArray<double>& values) const { GetArray(PT_MV_DOUBLE, PT_MV_APPTIME, values); }
    /// PT_MV_R4.
    void GetMV(zeb::CArray<float>& values) const { GetArray(PT_MV_R4, PT_MV_R4, values); }
    /// PT_MV_SYSTIME.
    void GetMV(zeb::CArray<FILETIME>& values) const { GetArray(PT_MV_SYSTIME, PT_MV_SYSTIME, values); }
    /// PT_MV_CLSID.
    void GetMV(zeb::CArray<GUID>& values) const { GetArray(PT_MV_CLSID, PT_MV_CLSID, values); }

private:
    bool IsOfType(ULONG type) const;
    template <class T>
    CZebOnePropVal& SetArray(ULONG type, ULONG orElse, const zeb::CArray<T>& values)
    {
        SetElements(type, orElse, values.begin(), values.GetSize(), sizeof(T));
        return *this;
    }
    template <class T>
    void GetArray(ULONG type, ULONG orElse, zeb::CArray<T>& values) const
    {
        ULONG count = 0;
        const T* const elements = static_cast<const T*>(Elements(type, orElse, count));
        zeb::CArray<T> copies;
        copies.Reserve(static_cast<INT_PTR>(count));
        for (ULONG i = 0; i < count; ++i)
        {
            copies.Add(elements[i]);
        }
        values = std::move(copies);
    }
    /// An array of `count` elements of `size` bytes, copied, for a value of either type.
    /// @throws CZebException* as every write that allocates
    void SetElements(ULONG type, ULONG orElse, const void* elements, INT_PTR count, ULONG size);
    /// The elements of a value of either type, and their count. @throws CZebException* as every read
    const void* Elements(ULONG type, ULONG orElse, ULONG& count) const;
    /// @throws CZebException* as CheckType, when the type is neither
    void CheckEither(ULONG type, ULONG orElse) const;
    bool HoldsError() const;

protected:
    /// The value of the view; null for no value.
    static const SPropValue* ValueOf(const CZebOnePropVal& view) { return view.m_value; }

    void* m_parent;      ///< the MAPI buffer that allocations are chained to; not owned
    SPropValue* m_value; ///< not owned by the view
};

/// Owns one SPropValue: a top-level MAPI buffer as MAPI calls return it.
///
/// It is filled completely, by a MAPI call through `&`. It has no allocation parent, so text, binaries and arrays
/// cannot be assigned to it. It cannot be copied; use Set of another value's view.
class ZEBAPI_EXPORT CZebPropVal : public CZebOnePropVal
{
public:
    ~CZebPropVal() override;
    using CZebOnePropVal::operator=;
    /// Frees the value.
    virtual void Empty();
    /// Empties the object and returns the address of its value pointer, for a MAPI call to fill.
    virtual SPropValue** operator&();

    CZebPropVal();
    CZebPropVal(const CZebPropVal&) = delete;
    CZebPropVal& operator=(const CZebPropVal&) = delete;

private:
    // Called through the base only. An owner that referred to another's value would free it, so it makes a deep copy; a
    // view without a value leaves it empty.
    CZebOnePropVal& operator=(const CZebOnePropVal& other) override;
};
