#include "zebstore/objects/PropCopyTo.h"

#include "platform/tags.h"
#include "zebstore/base/Memory.h"
#include "zebstore/objects/Defaults.h"
#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/MessageKeeper.h"
#include "zebstore/objects/PartsCopy.h"
#include "zebstore/objects/Problems.h"
#include "zebstore/objects/PropNames.h"

#include <algorithm>
#include <cstring>
#include <set>

namespace zebstore
{
namespace
{

/// Properties of the object's location and identity; never copied.
constexpr ULONG NeverCopied[] = {PR_ENTRYID,           PR_RECORD_KEY,   PR_PARENT_ENTRYID,         PR_OBJECT_TYPE,
                                 PR_STORE_ENTRYID,     PR_ACCESS,       PR_STORE_RECORD_KEY,       PR_MAPPING_SIGNATURE,
                                 PR_INSTANCE_KEY,      PR_ACCESS_LEVEL, PR_CONTENT_COUNT,          PR_CONTENT_UNREAD,
                                 PR_SUBFOLDERS,        PR_FOLDER_TYPE,  PR_STORE_SUPPORT_MASK,     PR_ATTACH_NUM,
                                 PR_MESSAGE_SIZE,      PR_HASATTACH,    PR_ASSOC_CONTENT_COUNT,    PR_SOURCE_KEY,
                                 PR_PARENT_SOURCE_KEY, PR_CHANGE_KEY,   PR_PREDECESSOR_CHANGE_LIST};

class Copier
{
public:
    explicit Copier(const CopyRequest& request)
        : m_request(request)
        , m_source(request.source)
        , m_target(request.target)
    {
    }

    SPropProblemArray* Run()
    {
        RequireDifferent();
        MessageKeeper keeper(m_target);
        PartsCopy parts(m_request);
        Plan();
        parts.Run();
        CopyValues();
        if (m_request.flags & MAPI_MOVE)
        {
            parts.TakeFromSource();
            DeleteMoved();
        }
        SPropProblemArray* problems = m_problems.Detach();
        keeper.Done();
        return problems;
    }

private:
    /// Same object: the same IUnknown, or the same entry identifier when it was opened twice.
    void RequireDifferent() const
    {
        bool same = Ask<IUnknown>(m_source, IID_IUnknown).Get() == Ask<IUnknown>(m_target, IID_IUnknown).Get();
        if (!same)
        {
            const Buffer<SPropValue> from = OneProp(m_source, PR_ENTRYID);
            const Buffer<SPropValue> to = OneProp(m_target, PR_ENTRYID);
            same = from.Get() != nullptr && to.Get() != nullptr && from->Value.bin.cb == to->Value.bin.cb &&
                   std::memcmp(from->Value.bin.lpb, to->Value.bin.lpb, from->Value.bin.cb) == 0;
        }
        if (same)
        {
            throw Error(MAPI_E_NO_ACCESS, "an object cannot be copied to itself");
        }
    }

    static Buffer<SPropValue> OneProp(IMAPIProp* object, ULONG tag)
    {
        LPSPropValue value = nullptr;
        const HRESULT result = HrGetOneProp(object, tag, &value);
        if (result != MAPI_E_NOT_FOUND)
        {
            Check(result, "the entry identifier cannot be read");
        }
        return Buffer<SPropValue>(value);
    }

    /// The index of the tag in the caller's list, if the caller gave one.
    void AddProblem(size_t index, SCODE code)
    {
        if (IsOfDisk(code))
        {
            throw Error(code, "a property cannot be copied");
        }
        const ULONG tag = m_tags[index];
        ULONG place = static_cast<ULONG>(index);
        if (m_request.include != nullptr)
        {
            for (place = 0; PROP_ID(m_request.include->aulPropTag[place]) != PROP_ID(tag);)
            {
                ++place;
            }
        }
        m_problems.Add(place, tag, code);
        m_failed.insert(index);
    }

    /// Chooses the tags and finds their counterparts in the target.
    void Plan()
    {
        LPSPropTagArray listed = nullptr;
        Check(m_source->GetPropList(MAPI_UNICODE, &listed), "the properties cannot be listed");
        const Buffer<SPropTagArray> owner(listed);
        std::set<ULONG> there;
        if (m_request.flags & MAPI_NOREPLACE)
        {
            there = IdsOfTarget();
        }
        for (ULONG i = 0; i < listed->cValues; ++i)
        {
            const ULONG tag = listed->aulPropTag[i];
            const bool never = std::any_of(std::begin(NeverCopied), std::end(NeverCopied),
                                           [&](ULONG each) { return PROP_ID(each) == PROP_ID(tag); });
            if (!never && Covers(m_request, tag) && PROP_TYPE(tag) != PT_OBJECT && (there.count(PROP_ID(tag)) == 0))
            {
                m_tags.push_back(tag);
            }
        }
        MapNames();
    }

    std::set<ULONG> IdsOfTarget() const
    {
        LPSPropTagArray listed = nullptr;
        Check(m_target->GetPropList(MAPI_UNICODE, &listed), "the target's properties cannot be listed");
        const Buffer<SPropTagArray> owner(listed);
        std::set<ULONG> ids;
        for (ULONG i = 0; i < listed->cValues; ++i)
        {
            ids.insert(PROP_ID(listed->aulPropTag[i]));
        }
        return ids;
    }

    /// Named properties have different identifiers in each store.
    void MapNames()
    {
        m_targetTags = m_tags;
        std::vector<size_t> named;
        for (size_t i = 0; i < m_tags.size(); ++i)
        {
            if (PROP_ID(m_tags[i]) >= FirstNamedId)
            {
                named.push_back(i);
            }
        }
        if (named.empty())
        {
            return;
        }
        Buffer<SPropTagArray> asked(Allocate(offsetof(SPropTagArray, aulPropTag) + named.size() * sizeof(ULONG)));
        asked->cValues = static_cast<ULONG>(named.size());
        for (size_t i = 0; i < named.size(); ++i)
        {
            asked->aulPropTag[i] = m_tags[named[i]];
        }
        ULONG count = 0;
        LPMAPINAMEID* names = nullptr;
        LPSPropTagArray list = asked.Get();
        Check(m_source->GetNamesFromIDs(&list, nullptr, 0, &count, &names), "the names cannot be read");
        const Buffer<MAPINAMEID*> nameOwner(names);
        for (size_t i = 0; i < named.size(); ++i)
        {
            MapName(named[i], i < count ? names[i] : nullptr);
        }
    }

    void MapName(size_t index, MAPINAMEID* name)
    {
        HRESULT result = MAPI_E_NOT_FOUND;
        LPSPropTagArray mapped = nullptr;
        if (name != nullptr)
        {
            result = m_target->GetIDsFromNames(1, &name, MAPI_CREATE, &mapped);
        }
        const Buffer<SPropTagArray> owner(mapped);
        if (SUCCEEDED(result) && PROP_TYPE(mapped->aulPropTag[0]) == PT_ERROR)
        {
            result = MAPI_E_NOT_FOUND;
        }
        if (FAILED(result))
        {
            AddProblem(index, result);
        }
        else
        {
            m_targetTags[index] = PROP_TAG(PROP_TYPE(m_tags[index]), PROP_ID(mapped->aulPropTag[0]));
        }
    }

    void CopyValues()
    {
        if (m_tags.empty())
        {
            return;
        }
        Buffer<SPropTagArray> asked(Allocate(offsetof(SPropTagArray, aulPropTag) + m_tags.size() * sizeof(ULONG)));
        asked->cValues = static_cast<ULONG>(m_tags.size());
        std::copy(m_tags.begin(), m_tags.end(), asked->aulPropTag);
        ULONG count = 0;
        LPSPropValue values = nullptr;
        Check(m_source->GetProps(asked.Get(), MAPI_UNICODE, &count, &values), "the properties cannot be read");
        const Buffer<SPropValue> owner(values);
        for (ULONG i = 0; i < count; ++i)
        {
            SPropValue& value = values[i];
            if (m_failed.count(i) != 0)
            {
                value.ulPropTag = PR_NULL;
            }
            else if (PROP_TYPE(value.ulPropTag) != PT_ERROR)
            {
                value.ulPropTag = PROP_TAG(PROP_TYPE(value.ulPropTag), PROP_ID(m_targetTags[i]));
            }
            else if (value.Value.err == MAPI_E_NOT_ENOUGH_MEMORY)
            {
                CopyStream(i);
            }
            else
            {
                AddProblem(i, value.Value.err);
            }
        }
        SetValues(count, values);
    }

    void SetValues(ULONG count, SPropValue* values)
    {
        LPSPropProblemArray problems = nullptr;
        HRESULT result = m_target->SetProps(count, values, &problems);
        // A sibling of the target may already have the folder's name; the other properties can still be copied.
        const auto name = std::find_if(values, values + count, [](const SPropValue& each)
        { return PROP_ID(each.ulPropTag) == PROP_ID(PR_DISPLAY_NAME_W); });
        if (result == MAPI_E_COLLISION && name != values + count)
        {
            name->ulPropTag = PR_NULL;
            AddProblem(static_cast<size_t>(name - values), result);
            result = m_target->SetProps(count, values, &problems);
        }
        const Buffer<SPropProblemArray> owner(problems);
        Check(result, "the target refused the properties");
        for (ULONG i = 0; problems != nullptr && i < problems->cProblem; ++i)
        {
            const SPropProblem& problem = problems->aProblem[i];
            if (problem.scode != MAPI_E_COMPUTED)
            {
                AddProblem(problem.ulIndex, problem.scode);
            }
            m_failed.insert(problem.ulIndex);
        }
    }

    /// MAPI_MOVE deletes from the source what the target accepted. Properties that the source cannot delete stay.
    void DeleteMoved()
    {
        std::vector<ULONG> tags = {0};
        for (size_t i = 0; i < m_tags.size(); ++i)
        {
            if (!m_failed.count(i) && !IsNameOfFolder(m_tags[i]))
            {
                tags.push_back(m_tags[i]);
            }
        }
        tags[0] = static_cast<ULONG>(tags.size() - 1);
        LPSPropProblemArray problems = nullptr;
        if (tags[0])
        {
            Check(m_source->DeleteProps(reinterpret_cast<LPSPropTagArray>(tags.data()), &problems),
                  "the source keeps its properties");
        }
        Free(problems);
    }

    bool IsNameOfFolder(ULONG tag) const
    {
        return PROP_ID(tag) == PROP_ID(PR_DISPLAY_NAME_W) && Ask<IMAPIContainer>(m_source, IID_IMAPIContainer);
    }

    void CopyStream(size_t index)
    {
        IUnknown* from = nullptr;
        IUnknown* to = nullptr;
        HRESULT result = m_source->OpenProperty(m_tags[index], &IID_IStream, 0, 0, &from);
        const Ref<IUnknown> fromOwner = Ref<IUnknown>::Adopt(from);
        if (SUCCEEDED(result))
        {
            result = m_target->OpenProperty(m_targetTags[index], &IID_IStream, STGM_READWRITE,
                                            MAPI_CREATE | MAPI_MODIFY, &to);
        }
        const Ref<IUnknown> toOwner = Ref<IUnknown>::Adopt(to);
        if (SUCCEEDED(result))
        {
            ULARGE_INTEGER all;
            all.QuadPart = ~ULONGLONG{0};
            result = static_cast<IStream*>(from)->CopyTo(static_cast<IStream*>(to), all, nullptr, nullptr);
        }
        if (SUCCEEDED(result))
        {
            result = static_cast<IStream*>(to)->Commit(0);
        }
        if (FAILED(result))
        {
            AddProblem(index, result);
        }
    }

    const CopyRequest& m_request;
    IMAPIProp* const m_source;
    IMAPIProp* const m_target;
    std::vector<ULONG> m_tags;
    std::vector<ULONG> m_targetTags;
    std::set<size_t> m_failed; ///< indexes in m_tags that were not copied
    Problems m_problems;
};

} // namespace

SPropProblemArray* CopyProperties(const CopyRequest& request)
{
    return Copier(request).Run();
}

} // namespace zebstore
