#include "zebapi/tables/RowSet.h"

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/MEM.h"
#include "zebapi/frame/internal/Subject.h"

#include <memory>
#include <utility>

CZebRowSet::CZebRowSet() = default;

CZebRowSet::CZebRowSet(const CZebRowSet& other) = default;

CZebRowSet& CZebRowSet::operator=(const CZebRowSet& other) = default;

CZebRowSet::~CZebRowSet()
{
    Empty();
}

void CZebRowSet::CheckValid() const
{
    if (m_rows == nullptr)
    {
        CZebException::Throw(MAPI_E_BAD_VALUE);
    }
}

void CZebRowSet::Empty()
{
    if (SRowSet* rows = std::exchange(m_rows, nullptr))
    {
        Zeb_FreeProws(rows);
    }
    m_neverHandedOut = true;
}

ULONG CZebRowSet::Count() const
{
    CheckValid();
    return m_rows->cRows;
}

bool CZebRowSet::IsValid() const
{
    return m_rows != nullptr && m_rows->cRows != 0;
}

SRowSet** CZebRowSet::operator&()
{
    Empty();
    m_neverHandedOut = false;
    return &m_rows;
}

CZebRowSet* CZebRowSet::DetachToNew()
{
    if (m_rows == nullptr)
    {
        CZebException::Throw(m_neverHandedOut ? MAPI_E_NO_SUPPORT : MAPI_E_BAD_VALUE);
    }
    auto detached = zeb::framework::WithMemory([] { return std::make_unique<CZebRowSet>(); });
    detached->m_rows = std::exchange(m_rows, nullptr);
    detached->m_neverHandedOut = std::exchange(m_neverHandedOut, true);
    return detached.release();
}

CZebRow CZebRowSet::operator[](ULONG index) const
{
    if (m_rows == nullptr)
    {
        CZebException::Throw(m_neverHandedOut ? MAPI_E_NO_SUPPORT : MAPI_E_BAD_VALUE);
    }
    if (index >= m_rows->cRows)
    {
        zeb::ThrowIndex(m_neverHandedOut ? MAPI_E_NO_SUPPORT : E_INVALIDARG, "row", static_cast<LONG>(index),
                        m_rows->cRows);
    }
    return CZebRow(&m_rows->aRow[index], m_rows);
}

CZebRowSetArray::CZebRowSetArray() = default;

CZebRowSetArray::~CZebRowSetArray()
{
    RemoveAll();
}

void CZebRowSetArray::RemoveAt(INT_PTR index)
{
    delete static_cast<CZebRowSet*>(GetAt(index));
    CPtrArray::RemoveAt(index);
}

void CZebRowSetArray::RemoveAll()
{
    for (INT_PTR i = 0; i < GetSize(); ++i)
    {
        delete static_cast<CZebRowSet*>(GetAt(i));
    }
    CPtrArray::RemoveAll();
}
