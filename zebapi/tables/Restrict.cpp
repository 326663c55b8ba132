#include "zebapi/tables/Restrict.h"

#include "zebapi/frame/internal/Blocks.h"
#include "zebapi/values/internal/Received.h"

namespace
{

/// A content restriction over a copy of `text`; only the tree's allocation chain changes.
template <class Char>
SContentRestriction ContentOf(ULONG propTag, const Char* text, ULONG fuzzyLevel, void* base)
{
    SContentRestriction content = {};
    content.ulFuzzyLevel = fuzzyLevel;
    content.ulPropTag = propTag;
    content.lpProp = zeb::Allocate<SPropValue>(sizeof(SPropValue), base);
    content.lpProp->ulPropTag = propTag;
    CZebOnePropVal(content.lpProp, base) = text;
    return content;
}

} // namespace

CZebRestriction::CZebRestriction()
    : CZebRestriction(nullptr, nullptr)
{
}

CZebRestriction::CZebRestriction(SRestriction* node, void* base)
    : m_base(base)
    , m_node(node)
{
}

CZebRestriction::CZebRestriction(const CZebRestriction& other) = default;

CZebRestriction::~CZebRestriction() = default;

CZebRestriction& CZebRestriction::operator=(const CZebRestriction& other) = default;

void CZebRestriction::CheckValid() const
{
    if (m_node == nullptr)
    {
        CZebException::Throw(MAPI_E_INVALID_OBJECT);
    }
    if (m_base == nullptr)
    {
        CZebException::Throw(MAPI_E_INVALID_OBJECT);
    }
}

bool CZebRestriction::IsEmpty()
{
    return m_node == nullptr;
}

void CZebRestriction::CreateAnd(ULONG count)
{
    CheckValid();
    m_node->res.resAnd.lpRes = zeb::AllocateArray<SRestriction>(count, m_base);
    m_node->res.resAnd.cRes = count;
    m_node->rt = RES_AND;
}

void CZebRestriction::CreateOr(ULONG count)
{
    CheckValid();
    m_node->res.resOr.lpRes = zeb::AllocateArray<SRestriction>(count, m_base);
    m_node->res.resOr.cRes = count;
    m_node->rt = RES_OR;
}

CZebRestriction CZebRestriction::CreateNot()
{
    CheckValid();
    auto* child = zeb::Allocate<SRestriction>(sizeof(SRestriction), m_base);
    m_node->res.resNot.lpRes = child;
    m_node->rt = RES_NOT;
    return CZebRestriction(child, m_base);
}

CZebRestriction CZebRestriction::CreateSubRestriction(ULONG subObject)
{
    CheckValid();
    auto* child = zeb::Allocate<SRestriction>(sizeof(SRestriction), m_base);
    m_node->res.resSub.ulSubObject = subObject;
    m_node->res.resSub.lpRes = child;
    m_node->rt = RES_SUBRESTRICTION;
    return CZebRestriction(child, m_base);
}

CZebOnePropVal CZebRestriction::CreateProp(ULONG propTag, ULONG relop)
{
    CheckValid();
    auto* value = zeb::Allocate<SPropValue>(sizeof(SPropValue), m_base);
    value->ulPropTag = propTag;
    m_node->res.resProperty.relop = relop;
    m_node->res.resProperty.ulPropTag = propTag;
    m_node->res.resProperty.lpProp = value;
    m_node->rt = RES_PROPERTY;
    return CZebOnePropVal(value, m_base);
}

void CZebRestriction::CreateExist(ULONG propTag)
{
    CheckValid();
    m_node->res.resExist.ulPropTag = propTag;
    m_node->rt = RES_EXIST;
}

void CZebRestriction::CreateCompareProps(ULONG propTag1, ULONG propTag2, ULONG relop)
{
    CheckValid();
    m_node->res.resCompareProps.relop = relop;
    m_node->res.resCompareProps.ulPropTag1 = propTag1;
    m_node->res.resCompareProps.ulPropTag2 = propTag2;
    m_node->rt = RES_COMPAREPROPS;
}

void CZebRestriction::CreateContentA(ULONG propTag, const char* text, ULONG fuzzyLevel)
{
    CheckValid();
    m_node->res.resContent = ContentOf(propTag, text, fuzzyLevel, m_base);
    m_node->rt = RES_CONTENT;
}

void CZebRestriction::CreateContentW(ULONG propTag, const WCHAR* text, ULONG fuzzyLevel)
{
    CheckValid();
    m_node->res.resContent = ContentOf(propTag, text, fuzzyLevel, m_base);
    m_node->rt = RES_CONTENT;
}

void CZebRestriction::CreateContent(ULONG propTag, const char* text, ULONG fuzzyLevel)
{
    CreateContentA(propTag, text, fuzzyLevel);
}

void CZebRestriction::CreateBitMask(ULONG propTag, ULONG mask, ULONG relBMR)
{
    CheckValid();
    m_node->res.resBitMask.relBMR = relBMR;
    m_node->res.resBitMask.ulPropTag = propTag;
    m_node->res.resBitMask.ulMask = mask;
    m_node->rt = RES_BITMASK;
}

CZebRestriction CZebRestriction::operator[](int index)
{
    CheckValid();
    if (index < 0)
    {
        CZebException::Throw(E_INVALIDARG);
    }
    return (*this)[static_cast<ULONG>(index)];
}

CZebRestriction CZebRestriction::operator[](ULONG index)
{
    CheckValid();
    if (m_node->rt != RES_AND && m_node->rt != RES_OR)
    {
        CZebException::Throw(MAPI_E_INVALID_OBJECT);
    }
    // AND and OR have the same layout: a count and the children.
    const SAndRestriction& children = m_node->res.resAnd;
    if (index >= zeb::CountOf(children.lpRes, children.cRes))
    {
        CZebException::Throw(E_INVALIDARG);
    }
    return CZebRestriction(children.lpRes + index, m_base);
}

CZebRestriction::operator SRestriction*()
{
    CheckValid();
    return m_node;
}

CZebRestrictionAllocator::CZebRestrictionAllocator() = default;

CZebRestrictionAllocator::~CZebRestrictionAllocator()
{
    Free();
}

CZebRestriction& CZebRestrictionAllocator::operator=(const CZebRestriction&)
{
    CZebException::Throw(E_INVALIDARG);
}

CZebRestrictionAllocator& CZebRestrictionAllocator::operator=(const CZebRestrictionAllocator& other)
{
    *this = static_cast<const CZebRestriction&>(other);
    return *this;
}

void CZebRestrictionAllocator::Allocate()
{
    Free();
    m_node = zeb::Allocate<SRestriction>(sizeof(SRestriction), nullptr);
    m_base = m_node;
}

void CZebRestrictionAllocator::Free()
{
    zeb::FreeBlock(m_node);
    m_base = nullptr;
}
