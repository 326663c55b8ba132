#include "zebstore/objects/Attachment.h"

#include <algorithm>

namespace zebstore
{

Attachment::Attachment(AttachmentOwner& owner, ULONG number, Access access, bool isNew)
    : PropObject(owner.StoreOfOwner(), access)
    , m_owner(owner)
    , m_keepsOwner(Ref<IMessage>::Share(owner.OwnerInterface()))
    , m_number(number)
{
    if (!isNew)
    {
        m_edit = owner.AttachmentNow(number);
    }
    m_edit.number = number;
}

const std::vector<ULONG>& Attachment::ComputedTags()
{
    static const std::vector<ULONG> tags = {PR_ATTACH_NUM,       PR_RECORD_KEY,        PR_INSTANCE_KEY,
                                            PR_OBJECT_TYPE,      PR_ACCESS_LEVEL,      PR_STORE_ENTRYID,
                                            PR_STORE_RECORD_KEY, PR_MAPPING_SIGNATURE, PR_STORE_SUPPORT_MASK};
    return tags;
}

bool Attachment::Compute(ULONG tag, PropertySet& out)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_ATTACH_NUM):
        out.SetLong(PR_ATTACH_NUM, static_cast<LONG>(m_number));
        return true;
    case PROP_ID(PR_RECORD_KEY):
    case PROP_ID(PR_INSTANCE_KEY):
        out.SetBinary(CHANGE_PROP_TYPE(tag, PT_BINARY), &m_number, sizeof(m_number));
        return true;
    case PROP_ID(PR_OBJECT_TYPE):
        out.SetLong(PR_OBJECT_TYPE, MAPI_ATTACH);
        return true;
    case PROP_ID(PR_ACCESS_LEVEL):
        out.SetLong(PR_ACCESS_LEVEL, AccessGiven() == Access::Write ? 1 : 0);
        return true;
    default:
        return HasId(ComputedTags(), tag) && Store()->Computed()->OfMessage(tag, 0, out);
    }
}

void Attachment::Written(ULONG tag)
{
    if (PROP_ID(tag) == PROP_ID(PR_ATTACH_SIZE))
    {
        m_sizeWritten = true;
    }
}

LONG Attachment::SizeNow() const
{
    std::uint64_t size = 0;
    for (const PropertySet::Item& item : m_edit.properties.Items())
    {
        size += item.large ? item.large->Size() : item.bytes.size();
    }
    return static_cast<LONG>(std::min<std::uint64_t>(size, 0x7FFFFFFF));
}

void Attachment::Save(ULONG flags)
{
    RequireWrite();
    if (!m_sizeWritten)
    {
        m_edit.properties.SetLong(PR_ATTACH_SIZE, SizeNow());
    }
    m_owner.PutAttachment(m_edit);
    if (!(flags & KEEP_OPEN_READWRITE))
    {
        LowerAccess();
    }
}

bool Attachment::HasEmbedded()
{
    return m_edit.embedded || (!m_edit.dropEmbedded && m_owner.StoredEmbedded(m_number) != 0);
}

std::vector<ULONG> Attachment::ObjectTags()
{
    if (HasEmbedded() && !m_edit.properties.Has(PR_ATTACH_DATA_OBJ))
    {
        return {PR_ATTACH_DATA_OBJ};
    }
    return {};
}

IUnknown* Attachment::OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags)
{
    if (PROP_ID(tag) != PROP_ID(PR_ATTACH_DATA_OBJ) || !IsEqualGUID(iid, IID_IMessage))
    {
        return PropBase::OpenObject(tag, iid, options, flags);
    }
    std::shared_ptr<const MessageContent> content;
    if (!(flags & MAPI_CREATE))
    {
        if (!HasEmbedded())
        {
            throw Error(MAPI_E_NOT_FOUND, "the attachment has no embedded message");
        }
        content = m_edit.embedded;
        if (!content)
        {
            content = std::make_shared<MessageContent>(File().Messages().LoadWhole(m_owner.StoredEmbedded(m_number)));
        }
    }
    const Access access = flags & (MAPI_MODIFY | MAPI_CREATE) ? Access::Write : Access::Read;
    return m_owner.OpenEmbedded(*this, std::move(content), access).Detach();
}

void Attachment::PutEmbedded(std::shared_ptr<MessageContent> content)
{
    const std::lock_guard hold(Lock());
    RequireWrite();
    m_edit.embedded = std::move(content);
    m_edit.dropEmbedded = false;
    if (!m_edit.properties.Has(PR_ATTACH_METHOD))
    {
        m_edit.properties.SetLong(PR_ATTACH_METHOD, ATTACH_EMBEDDED_MSG);
    }
}

} // namespace zebstore
