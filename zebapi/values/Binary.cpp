#include "zebapi/values/Binary.h"

#include "qorth/Hex.h"
#include "zebapi/entryid/EntryIDInfo.h"
#include "zebapi/frame/internal/Blocks.h"
#include "zebapi/values/internal/HexText.h"

#include <cstring>

namespace
{

using Header = zeb::Block<SBinary>;

Header NewHeader()
{
    return Header(zeb::Allocate<SBinary>(sizeof(SBinary), nullptr));
}

Header HeaderOf(ULONG cb, const void* bytes)
{
    Header header = NewHeader();
    if (cb != 0)
    {
        header->lpb = zeb::Allocate<BYTE>(cb, header.get());
        std::memcpy(header->lpb, bytes, cb);
        header->cb = cb;
    }
    return header;
}

Header HeaderOf(const char* hex)
{
    Header header = NewHeader();
    const ULONG cb = String2BinBuffLen(hex);
    if (cb != 0)
    {
        header->lpb = zeb::Allocate<BYTE>(cb, header.get());
        header->cb = String2Bin(hex, header->lpb, cb);
    }
    return header;
}

/// @throws CZebException* MAPI_E_INVALID_PARAMETER for a count without bytes
void CheckBytes(ULONG cb, const void* bytes, int line = ZEB_LINE)
{
    if (cb != 0 && bytes == nullptr)
    {
        CZebException::Throw(MAPI_E_INVALID_PARAMETER, __FILE__, line);
    }
}

/// Replaces the header with the result of `make`. The new one is created first, because the source may be in the old
/// one; a failure leaves the object empty.
template <class Make>
void Replace(CZebBinary& binary, SBinary*& held, Make make)
{
    Header header;
    try
    {
        header = make();
    }
    catch (...)
    {
        binary.Empty();
        throw;
    }
    binary.Empty();
    held = header.release();
}

} // namespace

CZebBinary::CZebBinary() = default;

CZebBinary::CZebBinary(const CZebBinary& source)
{
    *this = source;
}

CZebBinary::CZebBinary(const SBinary& source)
{
    *this = source;
}

CZebBinary::CZebBinary(ULONG cb, void* bytes)
{
    SetBinary(cb, bytes);
}

CZebBinary::CZebBinary(ULONG cb, ENTRYID* id)
{
    SetEntryId(cb, id);
}

CZebBinary::CZebBinary(CStringA& hex)
{
    String(hex.GetString());
}

CZebBinary::CZebBinary(const char* hex)
{
    if (hex != nullptr)
    {
        String(hex);
    }
}

CZebBinary::~CZebBinary()
{
    Empty();
}

void CZebBinary::CheckValid() const
{
    if (!IsValid())
    {
        CZebException::Throw(MAPI_E_INVALID_OBJECT);
    }
}

void CZebBinary::Empty()
{
    zeb::FreeBlock(m_binary);
}

bool CZebBinary::IsEmpty() const
{
    CheckValid();
    return m_binary->cb == 0;
}

bool CZebBinary::IsValid() const
{
    return m_binary != nullptr;
}

void CZebBinary::SetBinary(ULONG cb, void* bytes)
{
    CheckBytes(cb, bytes);
    Replace(*this, m_binary, [&] { return HeaderOf(cb, bytes); });
}

void CZebBinary::SetEntryId(ULONG cb, ENTRYID* id)
{
    SetBinary(cb, id);
}

void CZebBinary::String(const char* hex)
{
    Replace(*this, m_binary, [&] { return HeaderOf(hex); });
}

CStringA CZebBinary::String() const
{
    CheckValid();
    return zeb::HexText(m_binary->lpb, m_binary->cb);
}

CZebBinary& CZebBinary::operator=(const SBinary& source)
{
    SetBinary(source.cb, source.lpb);
    return *this;
}

CZebBinary& CZebBinary::operator=(const CZebBinary& source)
{
    if (source.m_binary != nullptr)
    {
        return *this = *source.m_binary;
    }
    Empty();
    return *this;
}

SBinary** CZebBinary::operator&()
{
    Empty();
    return &m_binary;
}

CZebBinary::operator ULONG() const
{
    CheckValid();
    return m_binary->cb;
}

CZebBinary::operator unsigned char*() const
{
    CheckValid();
    return m_binary->lpb;
}

CZebBinary::operator ENTRYID*() const
{
    CheckValid();
    return reinterpret_cast<ENTRYID*>(m_binary->lpb);
}

CZebBinary::operator const SBinary&() const
{
    CheckValid();
    return *m_binary;
}

CZebBinary::operator CStringA()
{
    return String();
}

CZebBinary::operator CZebBinary*()
{
    return this;
}

bool CZebBinary::operator==(const CZebBinary& other) const
{
    if (!IsValid() || !other.IsValid() || m_binary->cb != other.m_binary->cb)
    {
        return false;
    }
    return m_binary->cb == 0 || std::memcmp(m_binary->lpb, other.m_binary->lpb, m_binary->cb) == 0;
}

bool CZebBinary::operator!=(const CZebBinary& other) const
{
    return !(*this == other);
}

void CZebBinary::CopyTo(SBinary& target, const SBinary& source, void* parent)
{
    const ULONG cb = source.cb;
    CheckBytes(cb, source.lpb);
    BYTE* bytes = zeb::Allocate<BYTE>(cb, parent);
    if (cb != 0)
    {
        std::memcpy(bytes, source.lpb, cb);
    }
    target.cb = cb;
    target.lpb = bytes;
}

CStringA CZebBinary::DumpEntryID(CStringA& hex)
{
    return Zeb_DumpEntryID(hex.GetString());
}

CStringA Zeb_DumpEntryID(const char* hex)
{
    return hex == nullptr || *hex == 0 ? CStringA()
                                       : zeb::framework::WithMemory([hex] { return zeb::CEntryIDInfo(hex).Dump(""); });
}

CZebEntryIDRequest::CZebEntryIDRequest() = default;

CZebEntryIDRequest::CZebEntryIDRequest(const CZebEntryIDRequest& source)
    : CZebBinary()
{
    CZebBinary::operator=(source);
}

CZebEntryIDRequest::~CZebEntryIDRequest()
{
    Empty();
}

void CZebEntryIDRequest::Empty()
{
    ClearEntryID();
    zeb::FreeBlock(m_binary);
}

void CZebEntryIDRequest::SetBinary(ULONG, void*)
{
    CZebException::Throw(E_FAIL);
}

void CZebEntryIDRequest::String(const char*)
{
    CZebException::Throw(E_FAIL);
}

CZebBinary& CZebEntryIDRequest::operator=(const SBinary& source)
{
    CheckBytes(source.cb, source.lpb);
    Replace(*this, m_binary, [&]
    {
        Header header = NewHeader();
        if (source.cb != 0)
        {
            // Not chained: the buffer of a request is freed separately.
            CopyTo(*header, source, nullptr);
        }
        return header;
    });
    return *this;
}

CZebEntryIDRequest& CZebEntryIDRequest::operator=(const CZebEntryIDRequest& source)
{
    CZebBinary::operator=(source);
    return *this;
}

void CZebEntryIDRequest::PreAllocate()
{
    ClearEntryID();
    if (m_binary == nullptr)
    {
        m_binary = NewHeader().release();
    }
}

void CZebEntryIDRequest::ClearEntryID()
{
    if (m_binary != nullptr)
    {
        zeb::FreeBlock(m_binary->lpb);
        m_binary->cb = 0;
    }
}

CZebEntryIDRequest::operator ENTRYID**()
{
    PreAllocate();
    return reinterpret_cast<ENTRYID**>(&m_binary->lpb);
}

CZebEntryIDRequest::operator ULONG*()
{
    PreAllocate();
    return &m_binary->cb;
}
