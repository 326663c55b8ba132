// The parts that CopyTo and CopyProps copy in addition to property values.
#pragma once

#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/Message.h"
#include "zebstore/objects/PropBase.h"

#include <optional>

namespace zebstore
{

/// True when the request covers the property with the identifier of `tag`.
bool Covers(const CopyRequest& request, ULONG tag);

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

/// Restores a message of this provider to its state before a copy, unless the copy was completed.
class MessageKeeper
{
public:
    explicit MessageKeeper(IUnknown* target);
    ~MessageKeeper();
    MessageKeeper(const MessageKeeper&) = delete;
    MessageKeeper& operator=(const MessageKeeper&) = delete;
    void Done() { m_message = {}; }

private:
    Ref<IMessage> m_message;
    std::optional<Message::Draft> m_before;
};

} // namespace zebstore
