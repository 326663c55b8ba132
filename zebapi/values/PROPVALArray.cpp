#include "zebapi/values/PROPVALArray.h"

#include "zebapi/frame/internal/Blocks.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/values/internal/RealValue.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace
{

constexpr ULONG ProblemsHead = offsetof(SPropProblemArray, aProblem);

ULONG ProblemsSize(std::uint64_t count)
{
    return zeb::BlockSize(ProblemsHead, count, sizeof(SPropProblem));
}

} // namespace

CZebPropValArray::CZebPropValArray(ULONG n)
{
    if (n != 0)
    {
        Allocate(n);
    }
}

CZebPropValArray::~CZebPropValArray()
{
    Empty();
}

void CZebPropValArray::Allocate(ULONG n)
{
    if (n <= m_count)
    {
        m_count = n;
        return;
    }
    zeb::Block<SPropValue> grown(zeb::AllocateArray<SPropValue>(n, nullptr));
    for (ULONG i = 0; m_values != nullptr && i < m_count; ++i)
    {
        if (PROP_ID(m_values[i].ulPropTag) != 0)
        {
            CZebOnePropVal(grown.get() + i, grown.get()) = m_values[i];
        }
    }
    zeb::FreeBlock(m_values);
    m_values = grown.release();
    m_count = n;
}

int CZebPropValArray::FindTag(ULONG tag) const
{
    return m_values == nullptr ? -1 : zeb::FindPropID(m_values, m_count, tag);
}

void CZebPropValArray::Empty()
{
    zeb::FreeBlock(m_values);
    m_count = 0;
    m_growable = true;
}

ULONG CZebPropValArray::GetCount() const
{
    return m_count;
}

bool CZebPropValArray::IsValid() const
{
    return m_count != 0 && m_values != nullptr;
}

ULONG* CZebPropValArray::CountPtr()
{
    return &m_count;
}

SPropValue** CZebPropValArray::operator&()
{
    Empty();
    m_growable = false;
    return &m_values;
}

ULONG CZebPropValArray::Count() const
{
    return m_count;
}

CZebPropValArray::operator SPropValue*() const
{
    if (m_values == nullptr)
    {
        CZebException::Throw(E_INVALIDARG);
    }
    return m_values;
}

CZebOnePropVal CZebPropValArray::operator[](ULONG tag)
{
    int i = FindTag(tag);
    if (i < 0)
    {
        if (!m_growable)
        {
            zeb::ThrowTag(MAPI_E_UNEXPECTED_ID, tag);
        }
        i = FindTag(0);
        if (i < 0)
        {
            // The count may be one that a caller wrote.
            if (m_count >= INT_MAX)
            {
                CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
            }
            i = static_cast<int>(m_count);
            Allocate(m_count + 1);
        }
        m_values[i].ulPropTag = tag;
    }
    return CZebOnePropVal(m_values + i, m_values);
}

CZebOnePropVal CZebPropValArray::GetAt(ULONG index)
{
    if (m_values == nullptr || index >= m_count)
    {
        zeb::ThrowIndex(MAPI_E_UNEXPECTED_ID, "value", static_cast<LONG>(index), m_count);
    }
    return CZebOnePropVal(m_values + index, m_values);
}

void CZebPropValArray::TruncateToExisting()
{
    const int firstFree = FindTag(0);
    if (firstFree >= 0)
    {
        m_count = static_cast<ULONG>(firstFree);
    }
}

bool CZebPropValArray::IsExists(ULONG tag) const
{
    return FindTag(tag) >= 0;
}

bool CZebPropValArray::hasRealValue(ULONG tag) const
{
    const int i = FindTag(tag);
    return i >= 0 && zeb::HasRealValue(m_values[i].ulPropTag, m_values[i]);
}

CZebPropProblemArray::CZebPropProblemArray() = default;

CZebPropProblemArray::CZebPropProblemArray(const CZebPropProblemArray& source)
{
    *this = source;
}

CZebPropProblemArray::~CZebPropProblemArray()
{
    Empty();
}

void CZebPropProblemArray::Allocate(int n)
{
    // A negative count is refused as too large.
    const ULONG size = ProblemsSize(static_cast<std::uint64_t>(n));
    const ULONG oldSize = m_problems == nullptr ? 0 : ProblemsSize(m_problems->cProblem);
    m_problems = static_cast<SPropProblemArray*>(Zeb_MemReallocate(m_problems, size, oldSize));
    m_problems->cProblem = std::min<ULONG>(m_problems->cProblem, static_cast<ULONG>(n));
}

void CZebPropProblemArray::Empty()
{
    zeb::FreeBlock(m_problems);
}

int CZebPropProblemArray::GetCount() const
{
    return m_problems == nullptr ? 0 : static_cast<int>(m_problems->cProblem);
}

bool CZebPropProblemArray::IsValid() const
{
    return m_problems != nullptr;
}

CZebPropProblemArray& CZebPropProblemArray::operator=(const CZebPropProblemArray& source)
{
    Empty();
    if (source.m_problems != nullptr)
    {
        const ULONG size = ProblemsSize(source.m_problems->cProblem);
        m_problems = zeb::Allocate<SPropProblemArray>(size, nullptr);
        std::memcpy(m_problems, source.m_problems, size);
    }
    return *this;
}

SPropProblem& CZebPropProblemArray::operator[](int i)
{
    return m_problems->aProblem[i];
}

CZebPropProblemArray::operator SPropProblemArray*()
{
    return m_problems;
}

SPropProblemArray** CZebPropProblemArray::operator&()
{
    Empty();
    return &m_problems;
}
