#include "zebapi/values/TAGS.h"

#include "zebapi/frame/internal/Blocks.h"
#include "zebapi/objects/IProp.h"

#include <climits>
#include <cstddef>
#include <cstring>

namespace
{

ULONG TagsSize(std::uint64_t count)
{
    return zeb::BlockSize(offsetof(SPropTagArray, aulPropTag), count, sizeof(ULONG));
}

/// The number of tags in an argument list before the first 0.
ULONG CountTags(va_list& args)
{
    ULONG count = 0;
    va_list counted;
    va_copy(counted, args);
    while (va_arg(counted, ULONG) != 0)
    {
        ++count;
    }
    va_end(counted);
    return count;
}

} // namespace

CZebPropTagArray::CZebPropTagArray() = default;

CZebPropTagArray::CZebPropTagArray(const CZebPropTagArray& source)
{
    *this = source;
}

CZebPropTagArray::~CZebPropTagArray()
{
    Empty();
}

void CZebPropTagArray::Allocate(int n)
{
    // A negative count is refused as too large.
    const ULONG size = TagsSize(static_cast<std::uint64_t>(n));
    const ULONG oldSize = m_tags == nullptr ? 0 : TagsSize(m_tags->cValues);
    m_tags = static_cast<SPropTagArray*>(Zeb_MemReallocate(m_tags, size, oldSize));
}

void CZebPropTagArray::Empty()
{
    zeb::FreeBlock(m_tags);
}

int CZebPropTagArray::GetCount() const
{
    return m_tags == nullptr ? 0 : static_cast<int>(m_tags->cValues);
}

bool CZebPropTagArray::IsValid() const
{
    return m_tags != nullptr;
}

void CZebPropTagArray::AddOne(ULONG tag)
{
    Grow(1);
    m_tags->aulPropTag[m_tags->cValues++] = tag;
}

void CZebPropTagArray::Add(ULONG tag, va_list& args)
{
    Grow(std::uint64_t{1} + CountTags(args));
    do
    {
        m_tags->aulPropTag[m_tags->cValues++] = tag;
        tag = va_arg(args, ULONG);
    } while (tag != 0);
}

void CZebPropTagArray::Add(ULONG tag, ...)
{
    va_list args;
    va_start(args, tag);
    try
    {
        Add(tag, args);
    }
    catch (...)
    {
        va_end(args);
        throw;
    }
    va_end(args);
}

CZebPropTagArray& CZebPropTagArray::operator=(const CZebPropTagArray& source)
{
    Empty();
    if (source.m_tags != nullptr)
    {
        const ULONG size = TagsSize(source.m_tags->cValues);
        m_tags = zeb::Allocate<SPropTagArray>(size, nullptr);
        std::memcpy(m_tags, source.m_tags, size);
    }
    return *this;
}

ULONG CZebPropTagArray::operator[](int i) const
{
    return m_tags->aulPropTag[i];
}

CZebPropTagArray::operator SPropTagArray*()
{
    if (!IsValid())
    {
        CZebException::Throw(E_INVALIDARG);
    }
    return m_tags;
}

SPropTagArray** CZebPropTagArray::operator&()
{
    Empty();
    return &m_tags;
}

void CZebPropTagArray::ApplyTo(CZebIProp& object)
{
    if (!IsValid())
    {
        CZebException::Throw(E_INVALIDARG);
    }
    // Into a copy first: an object that refuses a tag must not leave half of them converted.
    CZebPropTagArray applied(*this);
    for (ULONG i = 0; i < applied.m_tags->cValues; ++i)
    {
        applied.m_tags->aulPropTag[i] = object.GetRealTag(applied.m_tags->aulPropTag[i], true);
    }
    std::memcpy(m_tags, applied.m_tags, TagsSize(applied.m_tags->cValues));
}

void CZebPropTagArray::Reserve(ULONG count)
{
    Grow(count);
}

void CZebPropTagArray::Fill(ULONG count, va_list& args)
{
    for (ULONG i = 0; i < count; ++i)
    {
        m_tags->aulPropTag[m_tags->cValues++] = va_arg(args, ULONG);
    }
}

void CZebPropTagArray::AddList(ULONG tag, va_list args)
{
    va_list list;
    va_copy(list, args);
    try
    {
        Add(tag, list);
    }
    catch (...)
    {
        va_end(list);
        throw;
    }
    va_end(list);
}

void CZebPropTagArray::Grow(std::uint64_t more)
{
    const std::uint64_t count = static_cast<std::uint64_t>(GetCount()) + more;
    if (count > INT_MAX)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    Allocate(static_cast<int>(count));
}
