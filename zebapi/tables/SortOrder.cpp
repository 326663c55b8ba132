#include "zebapi/tables/SortOrder.h"

#include "zebapi/frame/internal/Blocks.h"

#include <climits>
#include <cstddef>
#include <cstring>

namespace
{

ULONG SetSize(std::uint64_t count)
{
    return zeb::BlockSize(offsetof(SSortOrderSet, aSort), count, sizeof(SSortOrder));
}

} // namespace

CZebSortOrder::CZebSortOrder(ULONG propTag, ULONG order)
{
    if (propTag != 0)
    {
        Add(propTag, order);
    }
}

CZebSortOrder::CZebSortOrder(const CZebSortOrder& other)
{
    *this = other;
}

CZebSortOrder::~CZebSortOrder()
{
    Empty();
}

void CZebSortOrder::Allocate(int count)
{
    // A negative count is refused as too large.
    const ULONG size = SetSize(static_cast<std::uint64_t>(count));
    const ULONG oldSize = m_sortSet == nullptr ? 0 : SetSize(m_sortSet->cSorts);
    m_sortSet = static_cast<SSortOrderSet*>(Zeb_MemReallocate(m_sortSet, size, oldSize));
}

void CZebSortOrder::Empty()
{
    zeb::FreeBlock(m_sortSet);
}

int CZebSortOrder::GetCount() const
{
    return m_sortSet == nullptr ? 0 : static_cast<int>(m_sortSet->cSorts);
}

bool CZebSortOrder::IsValid() const
{
    return m_sortSet != nullptr;
}

void CZebSortOrder::Add(ULONG propTag, ULONG order)
{
    const std::int64_t count = std::int64_t{GetCount()} + 1;
    if (count > INT_MAX)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    Allocate(static_cast<int>(count));
    if (m_sortSet->cSorts == 0)
    {
        order &= ~ULONG{TABLE_SORT_COMBINE};
    }
    m_sortSet->aSort[m_sortSet->cSorts++] = {propTag, order};
}

CZebSortOrder& CZebSortOrder::operator=(const CZebSortOrder& other)
{
    Empty();
    if (other.m_sortSet != nullptr)
    {
        const ULONG size = SetSize(other.m_sortSet->cSorts);
        m_sortSet = zeb::Allocate<SSortOrderSet>(size, nullptr);
        std::memcpy(m_sortSet, other.m_sortSet, size);
    }
    return *this;
}

CZebSortOrder::operator SSortOrderSet*()
{
    if (!IsValid())
    {
        CZebException::Throw(E_INVALIDARG);
    }
    return m_sortSet;
}

SSortOrderSet** CZebSortOrder::operator&()
{
    Empty();
    return &m_sortSet;
}
