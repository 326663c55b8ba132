// The base of every property object of the store.
#pragma once

#include "zebstore/base/Locks.h"
#include "zebstore/objects/Access.h"
#include "zebstore/objects/PropStream.h"
#include "zebstore/objects/StoreContext.h"

#include <functional>
#include <memory>
#include <vector>

namespace zebstore
{

/// The properties of one object, independent of its interface. Derived classes define where they are stored. Threads:
/// any; each public method runs under the object's own recursive lock.
class PropBase : public StreamOwner
{
public:
    PropBase(StorePtr store, Access access)
        : m_store(std::move(store))
        , m_access(access)
    {
    }
    PropBase(const PropBase&) = delete;
    PropBase& operator=(const PropBase&) = delete;

    ObjectLock& Lock() override { return m_lock; }
    const StorePtr& Store() const { return m_store; }
    StoreFile& File() const override { return m_store->File(); }
    Access AccessGiven() const { return m_access; }

    HRESULT GetPropsOf(const SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values);
    void GetPropListOf(ULONG flags, SPropTagArray** tags);
    void SetPropsOf(ULONG count, const SPropValue* values, SPropProblemArray** problems);
    void DeletePropsOf(const SPropTagArray* tags, SPropProblemArray** problems);
    void OpenPropertyOf(ULONG tag, const IID* iid, ULONG options, ULONG flags, IUnknown** object);

    void PutStreamValue(ULONG tag, const std::shared_ptr<StagedValue>& value) override;
    /// Passes the values that open streams have written so far to the object; called before it is saved.
    void FlushStreams();

protected:
    ~PropBase() override = default;

    /// All stored properties, including unsaved changes.
    virtual const PropertySet& Stored() = 0;
    /// Adds the computed property with the identifier of `tag` to `out`; it hides a stored one. @return false: no
    /// computed property
    virtual bool Compute(ULONG tag, PropertySet& out) = 0;
    /// The tags of all computed properties; these cannot be written.
    virtual const std::vector<ULONG>& ComputedTags() = 0;
    /// False for a computed property that is returned only when it is requested by its tag.
    virtual bool Lists(ULONG) { return true; }
    /// Adds the default value of a property that is neither stored nor computed. It is not listed and can be written.
    /// @return false: nothing
    virtual bool Default(ULONG, PropertySet&) { return false; }
    /// True for a property that callers cannot write or delete, or can no longer.
    virtual bool IsFixed(ULONG tag);
    /// Changes the stored properties through `change`; an object without a transaction saves them at once.
    virtual void Edit(const std::function<void(PropertySet&)>& change) = 0;
    /// Called for each property that a caller has set or deleted.
    virtual void Written(ULONG) {}
    /// Opens properties that are not streams: tables of a container, recipients, an embedded message. @return an
    /// interface owned by the caller @throws Error MAPI_E_INTERFACE_NOT_SUPPORTED
    virtual IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags);
    /// PT_OBJECT properties, for GetPropList.
    virtual std::vector<ULONG> ObjectTags() { return {}; }

    /// @throws Error MAPI_E_NO_ACCESS
    void RequireWrite() const;
    void LowerAccess() { m_access = Access::Read; }

private:
    std::vector<ULONG> AllTags(bool unicode);
    void AddDefaults(const ULONG* asked, size_t count, const PropertySet& stored, PropertySet& computed);
    void RequireWritable(ULONG tag);
    /// @return MAPI_E_COMPUTED, MAPI_E_UNEXPECTED_ID, or S_OK for a property that can be written
    HRESULT WhyFixed(ULONG tag);
    HRESULT SetOne(PropertySet& properties, const SPropValue& value);

    const StorePtr m_store;
    Access m_access;
    ObjectLock m_lock;
    std::vector<std::weak_ptr<PropertyBytes>> m_streams;
};

} // namespace zebstore
