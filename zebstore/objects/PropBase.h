// The base of every property object of the store: the methods of IMAPIProp.
#pragma once

#include "zebstore/base/Memory.h"
#include "zebstore/base/Object.h"
#include "zebstore/objects/OpenFlags.h"
#include "zebstore/objects/PropStream.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/ValueBuilder.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace zebstore
{

/// Whether an object may be changed through an interface that was given to a client.
enum class Access
{
    Read,
    Write,
};

/// The access that the flags of an open ask for (MAPI_MODIFY, MAPI_BEST_ACCESS), at most `most`.
/// @throws Error MAPI_E_NO_ACCESS when MAPI_MODIFY asks for more
Access AccessFor(ULONG flags, Access most);

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

    std::recursive_mutex& Lock() override { return m_lock; }
    const StorePtr& Store() const { return m_store; }
    StoreFile& File() const override { return m_store->File(); }
    Access AccessGiven() const { return m_access; }

    HRESULT GetPropsOf(const SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values);
    void GetPropListOf(ULONG flags, SPropTagArray** tags);
    void SetPropsOf(ULONG count, const SPropValue* values, SPropProblemArray** problems);
    void DeletePropsOf(const SPropTagArray* tags, SPropProblemArray** problems);
    void OpenPropertyOf(ULONG tag, const IID* iid, ULONG options, ULONG flags, IUnknown** object);
    HRESULT NamesFromIds(SPropTagArray** tags, const GUID* set, ULONG flags, ULONG* count, MAPINAMEID*** names);
    HRESULT IdsFromNames(ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags);

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

    const StorePtr m_store;
    Access m_access;
    std::recursive_mutex m_lock;
    std::vector<std::weak_ptr<PropertyBytes>> m_streams;
};

/// Copies properties from one object to another through their interfaces, as IMAPIProp::CopyTo and CopyProps do.
struct CopyRequest
{
    IMAPIProp* source;
    IMAPIProp* target;
    const SPropTagArray* include; ///< null: all
    const SPropTagArray* exclude; ///< may be null
    ULONG flags;                  ///< MAPI_NOREPLACE, MAPI_MOVE
    bool parts;                   ///< false: only values; the interface of the parts is excluded
    IMAPIProgress* progress;      ///< may be null
};
/// @return the problems, null when there were none; owned by the caller.
SPropProblemArray* CopyProperties(const CopyRequest& request);

/// Collects property problems and builds the MAPI structure.
class Problems
{
public:
    void Add(ULONG index, ULONG tag, SCODE code) { m_problems.push_back({index, tag, code}); }
    bool IsEmpty() const { return m_problems.empty(); }
    /// @return null when there are none
    SPropProblemArray* Detach() const;

private:
    std::vector<SPropProblem> m_problems;
};

/// IMAPIProp for an interface that derives from it.
template <typename Interface>
class PropObject : public Object<Interface>, public PropBase
{
public:
    using PropBase::PropBase;

    IUnknown* Unknown() override { return static_cast<Interface*>(this); }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT code, ULONG flags, LPMAPIERROR* error) override
    {
        return Guarded("IMAPIProp::GetLastError", [&] { return LastErrorAsMapi(code, flags, error); });
    }

    HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override
    {
        return Run("IMAPIProp::SaveChanges", [&]
        {
            RequireFlags(flags,
                         KEEP_OPEN_READONLY | KEEP_OPEN_READWRITE | FORCE_SAVE | MAPI_DEFERRED_ERRORS | ArrivalFlags);
            FlushStreams();
            Save(flags);
        });
    }

    HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count, LPSPropValue* values) override
    {
        return Run("IMAPIProp::GetProps", [&] { return GetPropsOf(tags, flags, count, values); });
    }

    HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override
    {
        return Run("IMAPIProp::GetPropList", [&] { GetPropListOf(flags, tags); });
    }

    HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID iid, ULONG options, ULONG flags,
                                           LPUNKNOWN* object) override
    {
        return Run("IMAPIProp::OpenProperty", [&] { OpenPropertyOf(tag, iid, options, flags, object); });
    }

    HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values, LPSPropProblemArray* problems) override
    {
        return Run("IMAPIProp::SetProps", [&] { SetPropsOf(count, values, problems); });
    }

    HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* problems) override
    {
        return Run("IMAPIProp::DeleteProps", [&] { DeletePropsOf(tags, problems); });
    }

    HRESULT STDMETHODCALLTYPE CopyTo(ULONG excludedCount, LPCIID excluded, LPSPropTagArray excludedTags, ULONG_PTR,
                                     LPMAPIPROGRESS progress, LPCIID iid, LPVOID target, ULONG flags,
                                     LPSPropProblemArray* problems) override
    {
        return Run("IMAPIProp::CopyTo", [&]
        {
            Require(excluded || !excludedCount, "the list of interfaces to exclude is null");
            bool parts = true;
            for (ULONG i = 0; i < excludedCount; ++i)
            {
                if (IsEqualGUID(excluded[i], IID_IMAPIProp))
                {
                    throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "all interfaces are excluded: nothing to copy");
                }
                parts = parts && !this->Answers(excluded[i]);
            }
            CopyTheseTo({this, nullptr, nullptr, excludedTags, flags, parts, progress}, iid, target, problems);
        });
    }

    HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray tags, ULONG_PTR, LPMAPIPROGRESS progress, LPCIID iid,
                                        LPVOID target, ULONG flags, LPSPropProblemArray* problems) override
    {
        return Run("IMAPIProp::CopyProps", [&]
        {
            Require(tags != nullptr, "the list of property tags is null");
            CopyTheseTo({this, nullptr, tags, nullptr, flags, true, progress}, iid, target, problems);
        });
    }

    HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray* tags, LPGUID set, ULONG flags, ULONG* count,
                                              LPMAPINAMEID** names) override
    {
        return Run("IMAPIProp::GetNamesFromIDs", [&] { return NamesFromIds(tags, set, flags, count, names); });
    }

    HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG count, LPMAPINAMEID* names, ULONG flags,
                                              LPSPropTagArray* tags) override
    {
        return Run("IMAPIProp::GetIDsFromNames", [&] { return IdsFromNames(count, names, flags, tags); });
    }

protected:
    /// Runs a method's body under the guard and the object's lock.
    template <typename Body>
    HRESULT Run(const char* method, Body&& body)
    {
        return Guarded(method, [&]
        {
            const std::lock_guard<std::recursive_mutex> hold(Lock());
            return body();
        });
    }

    /// Saves a transacted object; no-op for others.
    virtual void Save(ULONG flags) = 0;

private:
    /// @param request without its target
    void CopyTheseTo(CopyRequest request, LPCIID iid, LPVOID target, LPSPropProblemArray* problems)
    {
        Require(iid && target, "the target object or its interface identifier is null");
        RequireFlags(request.flags, MAPI_MOVE | MAPI_NOREPLACE | MAPI_DIALOG | MAPI_DECLINE_OK);
        if (request.flags & MAPI_MOVE)
        {
            RequireWrite();
        }
        if (problems)
        {
            *problems = nullptr;
        }
        void* asked = nullptr;
        Check(static_cast<IUnknown*>(target)->QueryInterface(IID_IMAPIProp, &asked),
              "the target does not support IMAPIProp");
        const Ref<IMAPIProp> dest = Ref<IMAPIProp>::Adopt(static_cast<IMAPIProp*>(asked));
        request.target = dest.Get();
        SPropProblemArray* found = CopyProperties(request);
        if (problems)
        {
            *problems = found;
        }
        else
        {
            Free(found);
        }
    }
};

} // namespace zebstore
