// IMessage.
#pragma once

#include "zebstore/objects/AttachmentList.h"
#include "zebstore/objects/AttachmentOwner.h"
#include "zebstore/objects/OwnMessage.h"
#include "zebstore/objects/PropObject.h"
#include "zebstore/objects/RecipientList.h"

#include <set>

namespace zebstore
{

/// A message: stored, new, or embedded in an attachment. Changes stay in the object until SaveChanges, which stores all
/// of them or none. Threads: any.
class Message final : public PropObject<OwnMessage>, private AttachmentOwner
{
public:
    /// A stored message; loaded at once. @throws Error MAPI_E_NOT_FOUND
    Message(const StorePtr& store, MessageId message, Access access);
    /// A new message of a folder.
    Message(const StorePtr& store, FolderId folder, bool associated);
    /// A message embedded in an attachment; SaveChanges passes it to the attachment. `content` null: a new message.
    Message(const StorePtr& store, EmbeddedHolder& holder, std::shared_ptr<const MessageContent> content,
            Access access);

    HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenAttach(ULONG number, LPCIID iid, ULONG flags, LPATTACH* attach) override;
    HRESULT STDMETHODCALLTYPE CreateAttach(LPCIID iid, ULONG flags, ULONG* number, LPATTACH* attach) override;
    HRESULT STDMETHODCALLTYPE DeleteAttach(ULONG number, ULONG_PTR window, LPMAPIPROGRESS progress,
                                           ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE ModifyRecipients(ULONG flags, LPADRLIST list) override;
    HRESULT STDMETHODCALLTYPE SubmitMessage(ULONG flags) override;
    HRESULT STDMETHODCALLTYPE SetReadFlag(ULONG flags) override;

    std::function<void()> DraftRestorer() override;

private:
    /// Unsaved changes of a caller.
    struct Draft
    {
        bool dirty = false;
        PropertySet properties;
        std::set<ULONG> written; ///< identifiers that a caller wrote since the last save
        RecipientList::Draft recipients;
        AttachmentList::Edits attachments;
    };

    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMessage, &OwnMessageId}); }
    const PropertySet& Stored() override;
    bool Compute(ULONG tag, PropertySet& out) override;
    const std::vector<ULONG>& ComputedTags() override;
    bool Default(ULONG tag, PropertySet& out) override;
    bool IsFixed(ULONG tag) override;
    void Edit(const std::function<void(PropertySet&)>& change) override;
    void Written(ULONG tag) override { m_written.insert(PROP_ID(tag)); }
    void Save(ULONG flags) override;
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags) override;

    IMessage* OwnerInterface() override { return this; }
    const StorePtr& StoreOfOwner() const override { return Store(); }
    AttachmentEdit AttachmentNow(ULONG number) override;
    MessageId StoredEmbedded(ULONG number) override;
    void PutAttachment(AttachmentEdit edit) override;
    Ref<IMessage> OpenEmbedded(EmbeddedHolder& holder, std::shared_ptr<const MessageContent> content,
                               Access access) override;

    void SetDraft(Draft draft);
    void StartNew(bool associated);
    void Load();
    bool WasWritten(ULONG tag) const { return m_written.count(PROP_ID(tag)) != 0; }
    void Complete();
    void CompleteSubject();
    void CompleteNames();
    void Commit(bool force);
    MessageContent TakeContent();
    void GiveBack(MessageContent&& content);

    MessageId m_id = 0;
    FolderId m_folder = 0;
    bool m_associated = false;
    Ref<IAttach> m_keepsHolder;
    EmbeddedHolder* m_holder = nullptr;

    bool m_loaded = true;
    bool m_dirty = false;
    bool m_saved = false; ///< at least once, through this object or an earlier one
    std::int64_t m_change = 0;
    PropertySet m_properties;
    std::set<ULONG> m_written; ///< identifiers that a caller wrote since the last save
    RecipientList m_recipients;
    AttachmentList m_attachments;
};

/// IMessage over a stored message. @throws Error MAPI_E_NOT_FOUND
Ref<IMessage> OpenMessage(const StorePtr& store, MessageId message, Access access);
/// A message that is stored when it is saved.
Ref<IMessage> NewMessage(const StorePtr& store, FolderId folder, bool associated);

} // namespace zebstore
