#include "zebapi/objects/Container.h"

#include "zebapi/frame/Exception.h"
#include "zebapi/objects/internal/OpenEntry.h"

namespace
{

const char ExchangeProviderID[] = "DCA740C8C042101AB4B908002B2FE182";

} // namespace

CZebContainer::CZebContainer(IMAPIProp* prop)
    : CZebIProp(prop)
{
}

CZebContainer::CZebContainer(const CZebContainer& other)
    : CZebIProp(nullptr)
{
    CZebContainer::operator=(other);
}

const GUID* CZebContainer::GetInterfaceCIID()
{
    return &IID_IMAPIContainer;
}

ULONG CZebContainer::GetMAPIType()
{
    return 0;
}

CComPtr<IMAPIContainer> CZebContainer::GetContainer()
{
    if (IsWAB())
    {
        return CComPtr<IMAPIContainer>(static_cast<IMAPIContainer*>(Prop()));
    }
    return QueryFor<IMAPIContainer>(IID_IMAPIContainer);
}

CZebContainer::operator CZebContainer*()
{
    return this;
}

CZebContainer::operator const CZebContainer*() const
{
    return this;
}

CZebContainer& CZebContainer::operator=(const CZebContainer& other)
{
    CZebIProp::operator=(other);
    zeb::Guarded([&] { m_providerID = other.m_providerID; });
    m_providerChecked = other.m_providerChecked;
    return *this;
}

void CZebContainer::OpenEntry(const SBinary& entryID, CZebIProp& target, ULONG flags)
{
    CComPtr<IMAPIContainer> container = GetContainer();
    const bool isWAB = IsWAB();
    zeb::OpenEntry(container.Checked(), entryID, target, flags);
    PassWAB(isWAB, target);
}

CZebTable CZebContainer::GetContentsTable(ULONG flags)
{
    CComPtr<IMAPIContainer> container = GetContainer();
    CComPtr<IMAPITable> table;
    ThrowIfFailed(container->GetContentsTable(flags, table.Put()), container);
    zeb::RequireObject(static_cast<bool>(table));
    return CZebTable(table.Get());
}

CZebTable CZebContainer::GetHierarchyTable(ULONG flags)
{
    CComPtr<IMAPIContainer> container = GetContainer();
    CComPtr<IMAPITable> table;
    ThrowIfFailed(container->GetHierarchyTable(flags, table.Put()), container);
    zeb::RequireObject(static_cast<bool>(table));
    return CZebTable(table.Get());
}

bool CZebContainer::IsExchange()
{
    if (!m_providerChecked)
    {
        m_providerChecked = true;
        zeb::Guarded([&] { m_providerID = GetBinary(PR_AB_PROVIDER_ID); });
    }
    return IsExchangeProviderID(m_providerID);
}

ULONG CZebContainer::GetABItemDisplayNameTagForContainer(bool unicode) const
{
    return GetDisplayNameTag(unicode);
}

bool CZebContainer::IsExchangeProviderID(CZebBinary& id)
{
    const CZebBinary& checked = id;
    return checked.IsValid() && checked.String().CompareNoCase(ExchangeProviderID) == 0;
}

bool CZebContainer::IsMobileContainer(const CStringA& name)
{
    CStringA upper(name);
    return upper.MakeUpper().Find("(MOBILE)") >= 0;
}
