// IMAPIProp over the properties of an object.
#pragma once

#include "zebstore/base/Memory.h"
#include "zebstore/base/Object.h"
#include "zebstore/objects/OpenFlags.h"
#include "zebstore/objects/PropBase.h"
#include "zebstore/objects/PropCopyTo.h"
#include "zebstore/objects/PropNames.h"

namespace zebstore
{

/// IMAPIProp for an interface that derives from it.
template <class Interface>
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
        return Guarded("IMAPIProp::CopyTo", [&]
        {
            Require(excluded != nullptr || excludedCount == 0, "the list of interfaces to exclude is null");
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
        return Guarded("IMAPIProp::CopyProps", [&]
        {
            Require(tags != nullptr, "the list of property tags is null");
            CopyTheseTo({this, nullptr, tags, nullptr, flags, true, progress}, iid, target, problems);
        });
    }

    HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray* tags, LPGUID set, ULONG flags, ULONG* count,
                                              LPMAPINAMEID** names) override
    {
        return Run("IMAPIProp::GetNamesFromIDs", [&] { return NamesFromIds(File(), tags, set, flags, count, names); });
    }

    HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG count, LPMAPINAMEID* names, ULONG flags,
                                              LPSPropTagArray* tags) override
    {
        return Run("IMAPIProp::GetIDsFromNames", [&] { return IdsFromNames(File(), count, names, flags, tags); });
    }

protected:
    /// Runs a method's body under the guard and the object's lock.
    template <class Body>
    HRESULT Run(const char* method, Body&& body)
    {
        return Guarded(method, [&]
        {
            const std::lock_guard hold(Lock());
            return body();
        });
    }

    /// Saves a transacted object; no-op for others.
    virtual void Save(ULONG flags) = 0;

private:
    /// Not under the object's lock, as the target has one too, and another thread may copy the other way.
    /// @param request without its target
    void CopyTheseTo(CopyRequest request, LPCIID iid, LPVOID target, LPSPropProblemArray* problems)
    {
        Require(iid != nullptr && target != nullptr, "the target object or its interface identifier is null");
        RequireFlags(request.flags, MAPI_MOVE | MAPI_NOREPLACE | MAPI_DIALOG | MAPI_DECLINE_OK);
        if (request.flags & MAPI_MOVE)
        {
            const std::lock_guard hold(Lock());
            RequireWrite();
        }
        if (problems != nullptr)
        {
            *problems = nullptr;
        }
        void* asked = nullptr;
        Check(static_cast<IUnknown*>(target)->QueryInterface(IID_IMAPIProp, &asked),
              "the target does not support IMAPIProp");
        const Ref<IMAPIProp> dest = Ref<IMAPIProp>::Adopt(static_cast<IMAPIProp*>(asked));
        request.target = dest.Get();
        SPropProblemArray* found = CopyProperties(request);
        if (problems != nullptr)
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
