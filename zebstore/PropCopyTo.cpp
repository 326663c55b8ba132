// IMAPIProp::CopyTo and CopyProps, through the interfaces of both objects, so the target may be another
// provider's.
#include "zebstore/PropBase.h"

#include <algorithm>
#include <set>

namespace zebstore
{
namespace
{

constexpr ULONG FirstNamedId = 0x8000;

/// What belongs to the object's place and identity and is never copied.
constexpr ULONG NeverCopied[] = {
    PR_ENTRYID,       PR_RECORD_KEY,       PR_PARENT_ENTRYID,    PR_OBJECT_TYPE,        PR_STORE_ENTRYID,
    PR_ACCESS,        PR_STORE_RECORD_KEY, PR_MAPPING_SIGNATURE, PR_INSTANCE_KEY,       PR_ACCESS_LEVEL,
    PR_CONTENT_COUNT, PR_CONTENT_UNREAD,   PR_SUBFOLDERS,        PR_FOLDER_TYPE,        PR_STORE_SUPPORT_MASK,
    PR_ATTACH_NUM,    PR_MESSAGE_SIZE,     PR_HASATTACH,         PR_ASSOC_CONTENT_COUNT};

bool Names(const SPropTagArray* tags, ULONG tag)
{
    if (tags)
        for (ULONG i = 0; i < tags->cValues; ++i)
            if (PROP_ID(tags->aulPropTag[i]) == PROP_ID(tag))
                return true;
    return false;
}

template <typename Interface>
Ref<Interface> Ask(IUnknown* object, const IID& iid)
{
    void* asked = nullptr;
    if (!object || FAILED(object->QueryInterface(iid, &asked)))
        return {};
    return Ref<Interface>::Adopt(static_cast<Interface*>(asked));
}

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
        Plan();
        CopyValues();
        CopyMessageParts();
        CopyEmbedded();
        return m_problems.Detach();
    }

private:
    bool Copies(ULONG tag) const
    {
        return (!m_request.include || Names(m_request.include, tag)) && !Names(m_request.exclude, tag);
    }

    /// Chooses the tags and finds their counterparts in the target.
    void Plan()
    {
        LPSPropTagArray listed = nullptr;
        Check(m_source->GetPropList(MAPI_UNICODE, &listed), "the properties can not be listed");
        const Buffer<SPropTagArray> owner(listed);
        std::set<ULONG> there;
        if (m_request.flags & MAPI_NOREPLACE)
            there = IdsOfTarget();
        for (ULONG i = 0; i < listed->cValues; ++i)
        {
            const ULONG tag = listed->aulPropTag[i];
            const bool never = std::any_of(std::begin(NeverCopied), std::end(NeverCopied),
                                           [&](ULONG each) { return PROP_ID(each) == PROP_ID(tag); });
            if (!never && Copies(tag) && PROP_TYPE(tag) != PT_OBJECT && !there.count(PROP_ID(tag)))
                m_tags.push_back(tag);
        }
        MapNames();
    }

    std::set<ULONG> IdsOfTarget() const
    {
        LPSPropTagArray listed = nullptr;
        Check(m_target->GetPropList(MAPI_UNICODE, &listed), "the target's properties can not be listed");
        const Buffer<SPropTagArray> owner(listed);
        std::set<ULONG> ids;
        for (ULONG i = 0; i < listed->cValues; ++i)
            ids.insert(PROP_ID(listed->aulPropTag[i]));
        return ids;
    }

    /// Named properties have other identifiers in another store.
    void MapNames()
    {
        m_targetTags = m_tags;
        std::vector<size_t> named;
        for (size_t i = 0; i < m_tags.size(); ++i)
            if (PROP_ID(m_tags[i]) >= FirstNamedId)
                named.push_back(i);
        if (named.empty())
            return;
        Buffer<SPropTagArray> asked(
            Allocate(offsetof(SPropTagArray, aulPropTag) + named.size() * sizeof(ULONG)));
        asked->cValues = static_cast<ULONG>(named.size());
        for (size_t i = 0; i < named.size(); ++i)
            asked->aulPropTag[i] = m_tags[named[i]];
        ULONG count = 0;
        LPMAPINAMEID* names = nullptr;
        LPSPropTagArray list = asked.Get();
        Check(m_source->GetNamesFromIDs(&list, nullptr, 0, &count, &names), "the names can not be read");
        const Buffer<MAPINAMEID*> nameOwner(names);
        for (size_t i = 0; i < named.size(); ++i)
        {
            LPSPropTagArray mapped = nullptr;
            if (i < count && names[i] &&
                SUCCEEDED(m_target->GetIDsFromNames(1, &names[i], MAPI_CREATE, &mapped)))
                m_targetTags[named[i]] =
                    PROP_TAG(PROP_TYPE(m_tags[named[i]]), PROP_ID(mapped->aulPropTag[0]));
            Free(mapped);
        }
    }

    void CopyValues()
    {
        if (m_tags.empty())
            return;
        Buffer<SPropTagArray> asked(
            Allocate(offsetof(SPropTagArray, aulPropTag) + m_tags.size() * sizeof(ULONG)));
        asked->cValues = static_cast<ULONG>(m_tags.size());
        std::copy(m_tags.begin(), m_tags.end(), asked->aulPropTag);
        ULONG count = 0;
        LPSPropValue values = nullptr;
        Check(m_source->GetProps(asked.Get(), MAPI_UNICODE, &count, &values),
              "the properties can not be read");
        const Buffer<SPropValue> owner(values);
        for (ULONG i = 0; i < count; ++i)
        {
            if (PROP_TYPE(values[i].ulPropTag) == PT_ERROR && values[i].Value.err == MAPI_E_NOT_ENOUGH_MEMORY)
                CopyStream(i);
            else
                values[i].ulPropTag = PROP_TAG(PROP_TYPE(values[i].ulPropTag), PROP_ID(m_targetTags[i]));
        }
        LPSPropProblemArray problems = nullptr;
        Check(m_target->SetProps(count, values, &problems), "the target refused the properties");
        const Buffer<SPropProblemArray> problemOwner(problems);
        for (ULONG i = 0; problems && i < problems->cProblem; ++i)
            if (problems->aProblem[i].scode != MAPI_E_COMPUTED)
                m_problems.Add(problems->aProblem[i].ulIndex, problems->aProblem[i].ulPropTag,
                               problems->aProblem[i].scode);
    }

    void CopyStream(size_t index)
    {
        IUnknown* from = nullptr;
        IUnknown* to = nullptr;
        HRESULT result = m_source->OpenProperty(m_tags[index], &IID_IStream, 0, 0, &from);
        const Ref<IUnknown> fromOwner = Ref<IUnknown>::Adopt(from);
        if (SUCCEEDED(result))
            result = m_target->OpenProperty(m_targetTags[index], &IID_IStream, STGM_READWRITE,
                                            MAPI_CREATE | MAPI_MODIFY, &to);
        const Ref<IUnknown> toOwner = Ref<IUnknown>::Adopt(to);
        if (SUCCEEDED(result))
        {
            ULARGE_INTEGER all;
            all.QuadPart = ~ULONGLONG{0};
            result = static_cast<IStream*>(from)->CopyTo(static_cast<IStream*>(to), all, nullptr, nullptr);
        }
        if (SUCCEEDED(result))
            result = static_cast<IStream*>(to)->Commit(0);
        if (FAILED(result))
            m_problems.Add(static_cast<ULONG>(index), m_tags[index], result);
    }

    void CopyMessageParts()
    {
        const Ref<IMessage> source = Ask<IMessage>(m_source, IID_IMessage);
        const Ref<IMessage> target = Ask<IMessage>(m_target, IID_IMessage);
        if (!source || !target)
            return;
        if (Copies(PR_MESSAGE_RECIPIENTS))
            CopyRecipients(*source, *target);
        if (Copies(PR_MESSAGE_ATTACHMENTS))
            CopyAttachments(*source, *target);
    }

    static LPSRowSet RowsOf(IMAPITable* opened)
    {
        const Ref<IMAPITable> table = Ref<IMAPITable>::Adopt(opened);
        LPSRowSet rows = nullptr;
        Check(HrQueryAllRows(opened, nullptr, nullptr, nullptr, 0, &rows), "the table can not be read");
        return rows;
    }

    static void CopyRecipients(IMessage& source, IMessage& target)
    {
        IMAPITable* table = nullptr;
        Check(source.GetRecipientTable(MAPI_UNICODE, &table), "the recipients can not be read");
        // A row set and a list of recipients have the same layout.
        LPSRowSet rows = RowsOf(table);
        const HRESULT result =
            rows->cRows ? target.ModifyRecipients(MODRECIP_ADD, reinterpret_cast<LPADRLIST>(rows)) : S_OK;
        FreeProws(rows);
        Check(result, "the target refused the recipients");
    }

    static void CopyAttachments(IMessage& source, IMessage& target)
    {
        IMAPITable* table = nullptr;
        Check(source.GetAttachmentTable(MAPI_UNICODE, &table), "the attachments can not be listed");
        SizedSPropTagArray(1, columns) = {1, {PR_ATTACH_NUM}};
        HRESULT result = table->SetColumns(reinterpret_cast<LPSPropTagArray>(&columns), 0);
        LPSRowSet rows = RowsOf(table);
        for (ULONG i = 0; SUCCEEDED(result) && i < rows->cRows; ++i)
            result = CopyAttachment(source, target, static_cast<ULONG>(rows->aRow[i].lpProps[0].Value.l));
        FreeProws(rows);
        Check(result, "an attachment can not be copied");
    }

    static HRESULT CopyAttachment(IMessage& source, IMessage& target, ULONG number)
    {
        IAttach* from = nullptr;
        IAttach* to = nullptr;
        ULONG newNumber = 0;
        HRESULT result = source.OpenAttach(number, nullptr, 0, &from);
        const Ref<IAttach> fromOwner = Ref<IAttach>::Adopt(from);
        if (SUCCEEDED(result))
            result = target.CreateAttach(nullptr, 0, &newNumber, &to);
        const Ref<IAttach> toOwner = Ref<IAttach>::Adopt(to);
        if (SUCCEEDED(result))
            result = from->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IAttachment, to, 0, nullptr);
        return SUCCEEDED(result) ? to->SaveChanges(KEEP_OPEN_READWRITE) : result;
    }

    /// The embedded message of an attachment.
    void CopyEmbedded()
    {
        if (!Ask<IAttach>(m_source, IID_IAttachment) || !Ask<IAttach>(m_target, IID_IAttachment) ||
            !Copies(PR_ATTACH_DATA_OBJ))
            return;
        IUnknown* from = nullptr;
        IUnknown* to = nullptr;
        if (FAILED(m_source->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &from)))
            return;
        const Ref<IUnknown> fromOwner = Ref<IUnknown>::Adopt(from);
        Check(m_target->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_CREATE | MAPI_MODIFY, &to),
              "the embedded message can not be made");
        const Ref<IUnknown> toOwner = Ref<IUnknown>::Adopt(to);
        Check(static_cast<IMessage*>(from)->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMessage, to, 0,
                                                   nullptr),
              "the embedded message can not be copied");
        Check(static_cast<IMessage*>(to)->SaveChanges(KEEP_OPEN_READWRITE),
              "the embedded message can not be saved");
    }

    const CopyRequest m_request;
    IMAPIProp* const m_source;
    IMAPIProp* const m_target;
    std::vector<ULONG> m_tags;
    std::vector<ULONG> m_targetTags;
    Problems m_problems;
};

} // namespace

SPropProblemArray* CopyProperties(const CopyRequest& request)
{
    return Copier(request).Run();
}

} // namespace zebstore
