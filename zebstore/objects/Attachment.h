// IAttach.
#pragma once

#include "zebstore/objects/AttachmentOwner.h"
#include "zebstore/objects/PropObject.h"

namespace zebstore
{

/// One attachment of a message. SaveChanges passes the changes to the message. Threads: any.
class Attachment final : public PropObject<IAttach>, public EmbeddedHolder
{
public:
    Attachment(AttachmentOwner& owner, ULONG number, Access access, bool isNew);

    IAttach* HolderInterface() override { return this; }
    void PutEmbedded(std::shared_ptr<MessageContent> content) override;

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIProp, &IID_IAttachment}); }
    const PropertySet& Stored() override { return m_edit.properties; }
    bool Compute(ULONG tag, PropertySet& out) override;
    const std::vector<ULONG>& ComputedTags() override;
    void Edit(const std::function<void(PropertySet&)>& change) override { change(m_edit.properties); }
    void Written(ULONG tag) override;
    void Save(ULONG flags) override;
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags) override;
    std::vector<ULONG> ObjectTags() override;

    bool HasEmbedded();
    LONG SizeNow() const;

    AttachmentOwner& m_owner;
    const Ref<IMessage> m_keepsOwner;
    const ULONG m_number;
    AttachmentEdit m_edit;
    bool m_sizeWritten = false;
};

} // namespace zebstore
