// The parts that CopyTo and CopyProps copy in addition to property values.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/objects/CopyRequest.h"

namespace zebstore
{

/// The parts of one copied object: recipients and attachments of a message, the message in an attachment, messages and
/// subfolders of a folder, members of a distribution list. Threads: the caller's.
class PartsCopy
{
public:
    /// @throws Error when requested parts cannot be copied to this target; nothing has been changed in that case
    explicit PartsCopy(const CopyRequest& request);

    /// Copies the parts; with MAPI_MOVE the parts of a folder are moved.
    void Run();
    /// Deletes from the source message the parts that MAPI_MOVE has copied; called after the copy is complete.
    void TakeFromSource();

private:
    void RequireTarget() const;
    void CopyRecipients();
    void CopyAttachments();
    void CopyAttachment(ULONG number);
    void CopyEmbedded();
    void CopyMembers();

    const CopyRequest& m_request;
    const Ref<IMessage> m_fromMessage;
    const Ref<IMessage> m_toMessage;
    const bool m_containers;
    bool m_recipientsCopied = false;
    bool m_attachmentsCopied = false;
};

} // namespace zebstore
