// The attachments of a message.
#pragma once

#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/MemoryRows.h"
#include "zebstore/storage/MessageContent.h"

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace zebstore
{

/// The attachments of one message, including changes that the message has not saved. Threads: the message's lock.
class AttachmentList
{
public:
    /// The unsaved attachments, by number; a removed one has its flag.
    using Edits = std::map<ULONG, AttachmentEdit>;

    /// @param message the stored message; 0: a message without stored attachments
    AttachmentList(StorePtr store, MessageId message);

    /// @throws Error MAPI_E_CORRUPT_STORE when all attachments of the stored message are lost
    bool Has(ULONG number);
    /// The current state of an attachment. @throws Error MAPI_E_NOT_FOUND
    AttachmentEdit Now(ULONG number);
    /// The stored message embedded in an attachment; 0 when there is none.
    MessageId StoredEmbedded(ULONG number);

    /// The contents of a message that was not loaded from the store.
    void Start(const std::vector<AttachmentEdit>& attachments);
    /// Takes over a new, changed or removed attachment; open tables show it.
    void Put(AttachmentEdit edit);
    /// A number that no attachment has or had. The next call gives the same one until UseNumber.
    ULONG FreeNumber();
    /// Numbers up to this one are not given again.
    void UseNumber(ULONG number);

    /// The unsaved attachments. GiveBack or Forget must follow.
    std::vector<AttachmentEdit> Take();
    void GiveBack(std::vector<AttachmentEdit>&& attachments);
    /// The taken attachments were saved: all are read from the stored message from now on.
    void Forget(MessageId message);

    const Edits& GetEdits() const { return m_edits; }
    void SetEdits(Edits edits);

    /// IMessage::GetAttachmentTable.
    IMAPITable* Table(ULONG flags);

private:
    std::set<ULONG> Numbers();
    bool IsStored(ULONG number);
    std::vector<PropertySet> Rows(std::vector<RowKey>& keys);
    void Show();

    const StorePtr m_store;
    MessageId m_message;
    Edits m_edits;
    bool m_numbersKnown = false; ///< m_nextNumber is above every attachment's
    ULONG m_nextNumber = 0;
    std::shared_ptr<MemoryRows> m_shown;
};

} // namespace zebstore
