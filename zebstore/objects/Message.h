// IMessage and IAttach.
#pragma once

#include "zebstore/objects/OwnMessage.h"
#include "zebstore/objects/PropObject.h"
#include "zebstore/storage/MemoryRows.h"

#include <map>
#include <set>

namespace zebstore
{

class Attachment;

/// A message: stored, new, or embedded in an attachment. Changes stay in the object until SaveChanges, which stores all
/// of them or none. Threads: any.
class Message final : public PropObject<OwnMessage>
{
public:
    /// A stored message; loaded at once. @throws Error MAPI_E_NOT_FOUND
    Message(const StorePtr& store, MessageId message, Access access);
    /// A new message of a folder.
    Message(const StorePtr& store, FolderId folder, bool associated);
    /// A message embedded in an attachment; SaveChanges passes it to the attachment. `content` null: a new message.
    Message(const StorePtr& store, Attachment& holder, std::shared_ptr<const MessageContent> content, Access access);

    HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenAttach(ULONG number, LPCIID iid, ULONG flags, LPATTACH* attach) override;
    HRESULT STDMETHODCALLTYPE CreateAttach(LPCIID iid, ULONG flags, ULONG* number, LPATTACH* attach) override;
    HRESULT STDMETHODCALLTYPE DeleteAttach(ULONG number, ULONG_PTR window, LPMAPIPROGRESS progress,
                                           ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE ModifyRecipients(ULONG flags, LPADRLIST list) override;
    HRESULT STDMETHODCALLTYPE SubmitMessage(ULONG flags) override;
    HRESULT STDMETHODCALLTYPE SetReadFlag(ULONG flags) override;

    // For attachments. The current state of an attachment, including changes that the message has not saved. @throws
    // Error MAPI_E_NOT_FOUND
    AttachmentEdit AttachmentNow(ULONG number);
    /// The stored message embedded in an attachment; 0 when there is none.
    MessageId StoredEmbedded(ULONG number);
    /// Takes over a saved attachment.
    void PutAttachment(AttachmentEdit edit);

    /// Unsaved changes of a caller.
    struct Draft
    {
        bool dirty = false;
        PropertySet properties;
        std::set<ULONG> written; ///< identifiers that a caller wrote since the last save
        std::optional<std::vector<PropertySet>> recipients;
        bool recipientsChanged = false;
        std::map<ULONG, AttachmentEdit> edits;
    };
    Draft GetDraft();
    void SetDraft(Draft draft);
    std::function<void()> DraftRestorer() override;

private:
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

    void StartNew(bool associated);
    void Load();
    bool WasWritten(ULONG tag) const { return m_written.count(PROP_ID(tag)) != 0; }
    void Complete();
    void CompleteSubject();
    void CompleteNames();
    void Commit(bool force);
    MessageContent TakeContent();
    void GiveBack(MessageContent&& content);

    const std::vector<PropertySet>& Recipients();
    void MergeRecipient(ULONG flags, const ADRENTRY& entry);
    void ShowRecipients();
    std::set<ULONG> Numbers();
    bool IsStored(ULONG number);
    std::vector<PropertySet> AttachmentRows(std::vector<RowKey>& keys);
    void ShowAttachments();
    IMAPITable* RecipientTable(ULONG flags);
    IMAPITable* AttachmentTable(ULONG flags);

    MessageId m_id = 0;
    FolderId m_folder = 0;
    bool m_associated = false;
    Ref<IAttach> m_keepsHolder;
    Attachment* m_holder = nullptr;

    bool m_loaded = true;
    bool m_dirty = false;
    bool m_saved = false; ///< at least once, through this object or an earlier one
    std::int64_t m_change = 0;
    PropertySet m_properties;
    std::set<ULONG> m_written; ///< identifiers that a caller wrote since the last save
    std::optional<std::vector<PropertySet>> m_recipients;
    bool m_recipientsChanged = false;
    std::map<ULONG, AttachmentEdit> m_edits;
    bool m_numbersKnown = false; ///< m_nextNumber is above every attachment's
    ULONG m_nextNumber = 0;

    std::shared_ptr<MemoryRows> m_recipientRows;
    std::shared_ptr<MemoryRows> m_attachmentRows;
};

/// One attachment of a message. SaveChanges passes the changes to the message. Threads: any.
class Attachment final : public PropObject<IAttach>
{
public:
    Attachment(Message& owner, ULONG number, Access access, bool isNew);

    /// Takes over the saved embedded message.
    void PutEmbedded(std::shared_ptr<MessageContent> content);

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

    Message& m_owner;
    const Ref<IMessage> m_keepsOwner;
    const ULONG m_number;
    AttachmentEdit m_edit;
    bool m_sizeWritten = false;
};

/// IMessage over a stored message. @throws Error MAPI_E_NOT_FOUND
Ref<IMessage> OpenMessage(const StorePtr& store, MessageId message, Access access);
/// A message that is stored when it is saved.
Ref<IMessage> NewMessage(const StorePtr& store, FolderId folder, bool associated);

} // namespace zebstore
