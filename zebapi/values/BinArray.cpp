#include "zebapi/values/BinArray.h"

#include "zebapi/frame/internal/Blocks.h"

namespace
{

/// Runs the part of a constructor that may throw; then nothing stays allocated, the block of entries included.
template <class Fill>
void Construct(SBinaryArray*& array, Fill fill)
{
    try
    {
        fill();
    }
    catch (...)
    {
        if (array != nullptr)
        {
            zeb::FreeBlock(array->lpbin);
            zeb::FreeBlock(array);
        }
        throw;
    }
}

} // namespace

CZebBinArray::CZebBinArray(ULONG n)
{
    Allocate(n);
}

CZebBinArray::CZebBinArray(int n)
    : CZebBinArray(static_cast<ULONG>(n))
{
}

CZebBinArray::CZebBinArray(const SBinary& value)
{
    Construct(m_array, [&]
    {
        Allocate(1);
        SetAt(0, value);
    });
}

CZebBinArray::CZebBinArray(const char* hex)
{
    Construct(m_array, [&]
    {
        Allocate(1);
        SetAt(0, hex);
    });
}

CZebBinArray::~CZebBinArray()
{
    Empty();
}

void CZebBinArray::CheckValid(ULONG index) const
{
    if (!IsValid())
    {
        CZebException::Throw(MAPI_E_INVALID_OBJECT);
    }
    if (m_array->cValues == 0)
    {
        CZebException::Throw(MAPI_E_BAD_VALUE);
    }
    if (index != 0 && index >= m_array->cValues)
    {
        CZebException::Throw(MAPI_E_NOT_FOUND);
    }
}

void CZebBinArray::Allocate(ULONG n)
{
    if (n == 0)
    {
        CZebException::Throw(E_INVALIDARG);
    }
    Empty();
    zeb::Block<SBinaryArray> array(zeb::Allocate<SBinaryArray>(sizeof(SBinaryArray), nullptr));
    array->lpbin = zeb::AllocateArray<SBinary>(n, nullptr);
    array->cValues = n;
    m_array = array.release();
}

void CZebBinArray::Empty()
{
    zeb::FreeBlock(m_array);
}

bool CZebBinArray::IsValid() const
{
    return m_array != nullptr;
}

void CZebBinArray::SetAt(ULONG index, const char* hex)
{
    CheckValid(index);
    const CZebBinary value(hex);
    CZebBinary::CopyTo(m_array->lpbin[index], value, m_array);
}

void CZebBinArray::SetAt(ULONG index, const SBinary& value)
{
    CheckValid(index);
    CZebBinary::CopyTo(m_array->lpbin[index], value, m_array);
}

CZebBinary CZebBinArray::GetAt(ULONG index)
{
    CheckValid(index);
    return CZebBinary(m_array->lpbin[index]);
}

CZebBinArray::operator SBinaryArray*() const
{
    CheckValid(0);
    return m_array;
}
