// Property values that hold several: writing and reading them.
#include "zebapi/values/OnePROPVAL.h"

#include "zebapi/values/internal/PropValWrite.h"
#include "zebapi/values/internal/Received.h"

#include <algorithm>
#include <utility>

namespace
{

template <class Text>
auto CopyTexts(const CArray<Text>& texts, void* parent)
{
    using Char = typename Text::XCHAR;
    const auto count = static_cast<std::uint64_t>(texts.GetSize());
    Char** copies = zeb::AllocateArray<Char*>(count, parent, __FILE__, __LINE__);
    for (std::uint64_t i = 0; i < count; ++i)
    {
        const Text& text = texts[static_cast<INT_PTR>(i)];
        copies[i] = zeb::CopyText(text.GetString(), static_cast<std::uint64_t>(text.GetLength()), parent);
    }
    return copies;
}

template <class T>
T* CopyNumbers(const CArray<T>& numbers, void* parent)
{
    const auto count = static_cast<std::uint64_t>(numbers.GetSize());
    T* copies = zeb::AllocateArray<T>(count, parent, __FILE__, __LINE__);
    std::copy(numbers.begin(), numbers.end(), copies);
    return copies;
}

template <class Element>
const Element& AsReceived(const Element& element)
{
    return element;
}

SBinary AsReceived(const SBinary& element)
{
    return zeb::Received(element);
}

template <class T, class Element>
void CopyOut(CArray<T>& values, const Element* elements, ULONG claimed)
{
    const ULONG count = zeb::CountOf(elements, claimed);
    // Into an array aside: the elements may lie in what the array holds.
    CArray<T> copies;
    copies.Reserve(static_cast<INT_PTR>(count));
    for (ULONG i = 0; i < count; ++i)
    {
        copies.Add(T(AsReceived(elements[i])));
    }
    values = std::move(copies);
}

} // namespace

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<CZebBinary>& values)
{
    CheckType(PT_MV_BINARY);
    zeb::CheckParent(m_parent, __FILE__, __LINE__);
    const auto count = static_cast<std::uint64_t>(values.GetSize());
    SBinary* entries = zeb::AllocateArray<SBinary>(count, m_parent, __FILE__, __LINE__);
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
    zeb::CheckParent(m_parent, __FILE__, __LINE__);
    m_value->Value.MVszW.lppszW = CopyTexts(values, m_parent);
    m_value->Value.MVszW.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<CStringA>& values)
{
    CheckType(PT_MV_STRING8);
    zeb::CheckParent(m_parent, __FILE__, __LINE__);
    m_value->Value.MVszA.lppszA = CopyTexts(values, m_parent);
    m_value->Value.MVszA.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<SHORT>& values)
{
    CheckType(PT_MV_I2);
    zeb::CheckParent(m_parent, __FILE__, __LINE__);
    m_value->Value.MVi.lpi = CopyNumbers(values, m_parent);
    m_value->Value.MVi.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

CZebOnePropVal& CZebOnePropVal::operator=(const CArray<LONG>& values)
{
    CheckType(PT_MV_LONG);
    zeb::CheckParent(m_parent, __FILE__, __LINE__);
    m_value->Value.MVl.lpl = CopyNumbers(values, m_parent);
    m_value->Value.MVl.cValues = static_cast<ULONG>(values.GetSize());
    return *this;
}

void CZebOnePropVal::GetMV(CArray<CZebBinary>& values) const
{
    CheckType(PT_MV_BINARY);
    CopyOut(values, m_value->Value.MVbin.lpbin, m_value->Value.MVbin.cValues);
}

void CZebOnePropVal::GetMV(CArray<CStringW>& values) const
{
    CheckType(PT_MV_UNICODE);
    CopyOut(values, m_value->Value.MVszW.lppszW, m_value->Value.MVszW.cValues);
}

void CZebOnePropVal::GetMV(CArray<CStringA>& values) const
{
    CheckType(PT_MV_STRING8);
    CopyOut(values, m_value->Value.MVszA.lppszA, m_value->Value.MVszA.cValues);
}

void CZebOnePropVal::GetMV(CArray<SHORT>& values) const
{
    CheckType(PT_MV_I2);
    CopyOut(values, m_value->Value.MVi.lpi, m_value->Value.MVi.cValues);
}

void CZebOnePropVal::GetMV(CArray<LONG>& values) const
{
    CheckType(PT_MV_LONG);
    CopyOut(values, m_value->Value.MVl.lpl, m_value->Value.MVl.cValues);
}
