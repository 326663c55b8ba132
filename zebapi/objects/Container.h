// MAPI containers.
#pragma once

#include "zebapi/objects/IProp.h"
#include "zebapi/tables/Table.h"

/// Any MAPI container: a folder, an address book container, a distribution list.
///
/// Ownership as in CZebIProp; it also caches the container's address book provider identifier after the first query.
/// Threads: none of its own; use one object from one thread at a time.
class ZEBAPI_EXPORT CZebContainer : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// 0: any type of object is accepted.
    ULONG GetMAPIType() override;

protected:
    /// The object's IMAPIContainer. An object of the Windows Address Book is used directly, without a query.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IMAPIContainer> GetContainer();

public:
    /// This object.
    virtual operator CZebContainer*();
    /// This object.
    virtual operator const CZebContainer*() const;
    /// Shares the object of other and takes its provider identifier. Never throws.
    virtual CZebContainer& operator=(const CZebContainer& other);
    /// Opens an entry by IMAPIContainer::OpenEntry, asking for the target's interface; the target takes this
    /// object's WAB marking.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the target does not accept the object's type; the
    /// target is
    ///         empty then
    virtual void OpenEntry(const SBinary& entryID, CZebIProp& target, ULONG flags);
    /// IMAPIContainer::GetContentsTable.
    virtual CZebTable GetContentsTable(ULONG flags);
    /// IMAPIContainer::GetHierarchyTable.
    virtual CZebTable GetHierarchyTable(ULONG flags);
    /// Whether the container belongs to the Exchange address book provider. PR_AB_PROVIDER_ID is read at the
    /// first call only; when that fails, it is logged and the result is false from then on.
    virtual bool IsExchange();
    /// The tag under which this container's items carry their display name.
    virtual ULONG GetABItemDisplayNameTagForContainer(bool unicode) const;

    /// Adds a reference on prop, which may be null.
    explicit CZebContainer(IMAPIProp* prop = nullptr);
    /// Shares the object of other and takes its provider identifier.
    CZebContainer(const CZebContainer& other);

    /// Whether id is the Exchange address book provider's identifier; false when it holds nothing.
    static bool IsExchangeProviderID(CZebBinary& id);
    /// Whether a container is a mobile one by its name: it contains "(mobile)" in any letter case.
    static bool IsMobileContainer(const zeb::CStringA& name);

private:
    CZebBinary m_providerID;
    bool m_providerChecked = false;
};
