// A message as its attachments use it.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/objects/Access.h"
#include "zebstore/objects/EmbeddedHolder.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/MessageContent.h"

#include <memory>

namespace zebstore
{

/// The message of an attachment.
class AttachmentOwner
{
public:
    /// The message as its callers see it; attachments hold a reference on it.
    virtual IMessage* OwnerInterface() = 0;
    virtual const StorePtr& StoreOfOwner() const = 0;
    /// The current state of an attachment, including changes that the message has not saved.
    /// @throws Error MAPI_E_NOT_FOUND
    virtual AttachmentEdit AttachmentNow(ULONG number) = 0;
    /// The stored message embedded in an attachment; 0 when there is none.
    virtual MessageId StoredEmbedded(ULONG number) = 0;
    /// Takes over a saved attachment.
    virtual void PutAttachment(AttachmentEdit edit) = 0;
    /// IMessage over a message embedded in one of the attachments. @param content null: a new message
    virtual Ref<IMessage> OpenEmbedded(EmbeddedHolder& holder, std::shared_ptr<const MessageContent> content,
                                       Access access) = 0;

protected:
    ~AttachmentOwner() = default;
};

} // namespace zebstore
