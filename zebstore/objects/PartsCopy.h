// What CopyTo and CopyProps copy beyond values.
#pragma once

#include "zebstore/objects/Message.h"
#include "zebstore/objects/PropBase.h"

#include <optional>

namespace zebstore
{

/// The object's interface `Interface`. @return empty when it does not have it
/// @throws Error when the object fails otherwise than by not having it
template <typename Interface>
Ref<Interface> Ask(IUnknown* object, const IID& iid)
{
    void* asked = nullptr;
    const HRESULT result = object ? object->QueryInterface(iid, &asked) : E_NOINTERFACE;
    if (result != E_NOINTERFACE)
    {
        Check(result, "the object does not tell its interfaces");
    }
    return FAILED(result) ? Ref<Interface>() : Ref<Interface>::Adopt(static_cast<Interface*>(asked));
}

/// True when the request covers the property with the identifier of `tag`.
bool Covers(const CopyRequest& request, ULONG tag);

/// The parts of one copied object: recipients and attachments of a message, the message in an attachment, messages and
/// subfolders of a folder, members of a distribution list. Threads: the caller's.
class PartsCopy
{
public:
    /// @throws Error when parts are asked for that cannot be copied to this target: nothing has been changed then
    explicit PartsCopy(const CopyRequest& request);

    /// Copies them; of a folder and with MAPI_MOVE they are moved.
    void Run();
    /// What MAPI_MOVE takes from a message once its copy is whole.
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

/// Puts a message of this provider back to what it was before a copy, unless the copy came to its end.
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
