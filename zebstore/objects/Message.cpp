#include "zebstore/objects/Message.h"

#include "platform/datetime.h"
#include "platform/tags.h"
#include "zebstore/base/Locks.h"
#include "zebstore/objects/Attachment.h"
#include "zebstore/objects/Defaults.h"
#include "zebstore/objects/Interfaces.h"

#include <random>

namespace zebstore
{
namespace
{

/// 16 bytes, unique for each call.
std::array<std::uint64_t, 2> UniqueKey()
{
    static MutexOf<lockorder::Keys> lock;
    static std::mt19937_64 random(std::random_device{}() * 0x100000001ull ^ std::random_device{}());
    const std::lock_guard hold(lock);
    return {random(), random()};
}

// Only the store sets these, when it saves a message.
constexpr ULONG SetAtSave[] = {PR_MESSAGE_SIZE, PR_HASATTACH};

std::vector<ULONG> WithTagsSetAtSave(std::initializer_list<ULONG> tags)
{
    std::vector<ULONG> all(tags);
    all.insert(all.end(), std::begin(SetAtSave), std::end(SetAtSave));
    return all;
}

} // namespace

Ref<IMessage> OpenMessage(const StorePtr& store, MessageId message, Access access)
{
    return Ref<IMessage>::Adopt(new Message(store, message, access));
}

Ref<IMessage> NewMessage(const StorePtr& store, FolderId folder, bool associated)
{
    return Ref<IMessage>::Adopt(new Message(store, folder, associated));
}

Message::Message(const StorePtr& store, MessageId message, Access access)
    : PropObject(store, access)
    , m_id(message)
    , m_folder(ContentsKey::Of(message).Folder())
    , m_associated(ContentsKey::Of(message).IsAssociated())
    , m_loaded(false)
    , m_saved(true)
    , m_recipients(store, message)
    , m_attachments(store, message)
{
    Load();
}

Message::Message(const StorePtr& store, FolderId folder, bool associated)
    : PropObject(store, Access::Write)
    , m_folder(folder)
    , m_associated(associated)
    , m_recipients(store, 0)
    , m_attachments(store, 0)
{
    StartNew(associated);
}

Message::Message(const StorePtr& store, EmbeddedHolder& holder, std::shared_ptr<const MessageContent> content,
                 Access access)
    : PropObject(store, access)
    , m_keepsHolder(Ref<IAttach>::Share(holder.HolderInterface()))
    , m_holder(&holder)
    , m_recipients(store, 0)
    , m_attachments(store, 0)
{
    if (!content)
    {
        StartNew(false);
        return;
    }
    m_saved = true;
    m_properties = content->properties;
    m_recipients.Start(content->recipients);
    m_attachments.Start(content->attachments);
}

void Message::StartNew(bool associated)
{
    m_dirty = true;
    m_recipients.Start(std::vector<PropertySet>());
    m_properties.SetText(PR_MESSAGE_CLASS_W, "IPM.Note");
    m_properties.SetLong(PR_MESSAGE_FLAGS, MSGFLAG_READ | MSGFLAG_UNSENT | (associated ? MSGFLAG_ASSOCIATED : 0));
}

void Message::Load()
{
    if (m_loaded)
    {
        return;
    }
    StoredMessage stored = File().Messages().Load(m_id);
    m_properties = std::move(stored.properties);
    m_change = stored.change;
    m_loaded = true;
}

const PropertySet& Message::Stored()
{
    Load();
    return m_properties;
}

const std::vector<ULONG>& Message::ComputedTags()
{
    static const std::vector<ULONG> embedded = WithTagsSetAtSave(
        {PR_OBJECT_TYPE, PR_ACCESS, PR_ACCESS_LEVEL, PR_STORE_ENTRYID, PR_STORE_RECORD_KEY, PR_STORE_SUPPORT_MASK,
         PR_MAPPING_SIGNATURE, PR_ENTRYID, PR_RECORD_KEY, PR_PARENT_ENTRYID, PR_INSTANCE_KEY});
    return embedded;
}

bool Message::Compute(ULONG tag, PropertySet& out)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_MESSAGE_SIZE):
    case PROP_ID(PR_HASATTACH):
        return false;
    case PROP_ID(PR_ACCESS_LEVEL):
        out.SetLong(PR_ACCESS_LEVEL, AccessGiven() == Access::Write ? 1 : 0);
        return true;
    case PROP_ID(PR_PARENT_ENTRYID):
    {
        if (m_holder != nullptr)
        {
            return false;
        }
        const FolderEntryId parent = Store()->IdOfFolder(m_folder);
        out.SetBinary(PR_PARENT_ENTRYID, parent.data(), parent.size());
        return true;
    }
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_RECORD_KEY):
    case PROP_ID(PR_INSTANCE_KEY):
        // A message has an identifier from its first save; an embedded message never has one.
        return m_id != 0 && Store()->Computed()->OfMessage(tag, m_id, out);
    default:
        return HasId(ComputedTags(), tag) && Store()->Computed()->OfMessage(tag, m_id, out);
    }
}

bool Message::Default(ULONG tag, PropertySet& out)
{
    const MessageOrigin origin{m_id, [this] { return m_change; }};
    return Store()->Computed()->DefaultOfMessage(tag, origin, out);
}

bool Message::IsFixed(ULONG tag)
{
    // After the first save only SetReadFlag and the store itself change the flags.
    return (m_saved && PROP_ID(tag) == PROP_ID(PR_MESSAGE_FLAGS)) || PropBase::IsFixed(tag);
}

std::function<void()> Message::DraftRestorer()
{
    const std::lock_guard hold(Lock());
    Load();
    Draft draft{m_dirty, m_properties, m_written, m_recipients.GetDraft(), m_attachments.GetEdits()};
    return [this, draft = std::move(draft)]() mutable { SetDraft(std::move(draft)); };
}

void Message::SetDraft(Draft draft)
{
    const std::lock_guard hold(Lock());
    m_dirty = draft.dirty;
    m_properties = std::move(draft.properties);
    m_written = std::move(draft.written);
    m_recipients.SetDraft(std::move(draft.recipients));
    m_attachments.SetEdits(std::move(draft.attachments));
}

void Message::Edit(const std::function<void(PropertySet&)>& change)
{
    Load();
    m_dirty = true;
    change(m_properties);
}

IUnknown* Message::OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags)
{
    if (IsEqualGUID(iid, IID_IMAPITable) && PROP_ID(tag) == PROP_ID(PR_MESSAGE_RECIPIENTS))
    {
        return m_recipients.Table(options & MAPI_UNICODE);
    }
    if (IsEqualGUID(iid, IID_IMAPITable) && PROP_ID(tag) == PROP_ID(PR_MESSAGE_ATTACHMENTS))
    {
        return m_attachments.Table(options & MAPI_UNICODE);
    }
    return PropBase::OpenObject(tag, iid, options, flags);
}

void Message::Save(ULONG flags)
{
    RequireWrite();
    if (m_dirty)
    {
        Load();
        Complete();
        Commit((flags & FORCE_SAVE) != 0);
        m_dirty = false;
        m_written.clear();
    }
    if (!(flags & KEEP_OPEN_READWRITE))
    {
        LowerAccess();
    }
}

void Message::Complete()
{
    const FILETIME now = zeb::platform::CurrentFileTime();
    if (!m_properties.Has(PR_CREATION_TIME))
    {
        m_properties.SetTime(PR_CREATION_TIME, now);
    }
    if (!WasWritten(PR_LAST_MODIFICATION_TIME) || !m_properties.Has(PR_LAST_MODIFICATION_TIME))
    {
        m_properties.SetTime(PR_LAST_MODIFICATION_TIME, now);
    }
    if (!m_properties.Has(PR_SEARCH_KEY))
    {
        const auto key = UniqueKey();
        m_properties.SetBinary(PR_SEARCH_KEY, key.data(), sizeof(key));
    }
    const LONG kind = m_associated ? MSGFLAG_ASSOCIATED : 0;
    m_properties.SetLong(PR_MESSAGE_FLAGS, (m_properties.Long(PR_MESSAGE_FLAGS) & ~LONG(MSGFLAG_ASSOCIATED)) | kind);
    CompleteSubject();
    CompleteNames();
    CompleteChangeKeys(Store()->Uid(), m_saved && !WasWritten(PR_CHANGE_KEY), m_properties);
}

void Message::CompleteSubject()
{
    if (!WasWritten(PR_SUBJECT) || WasWritten(PR_NORMALIZED_SUBJECT))
    {
        return;
    }
    const std::string subject = m_properties.Text(PR_SUBJECT_W);
    std::string prefix = m_properties.Text(PR_SUBJECT_PREFIX_W);
    if (!WasWritten(PR_SUBJECT_PREFIX))
    {
        // MAPI's rule: up to three letters, a colon and a space, as in "Re: " and "Fwd: ".
        const size_t colon = subject.find(": ");
        const bool isPrefix = colon >= 1 && colon <= 3 && subject.find_first_of("0123456789 ") > colon;
        prefix = isPrefix ? subject.substr(0, colon + 2) : std::string();
        m_properties.SetText(PR_SUBJECT_PREFIX_W, prefix);
    }
    const bool begins = subject.compare(0, prefix.size(), prefix) == 0;
    m_properties.SetText(PR_NORMALIZED_SUBJECT_W, begins ? subject.substr(prefix.size()) : subject);
}

void Message::CompleteNames()
{
    if (!m_recipients.IsChanged())
    {
        return;
    }
    constexpr struct
    {
        LONG type;
        ULONG tag;
    } Lists[] = {{MAPI_TO, PR_DISPLAY_TO_W}, {MAPI_CC, PR_DISPLAY_CC_W}, {MAPI_BCC, PR_DISPLAY_BCC_W}};
    for (const auto& list : Lists)
    {
        if (WasWritten(list.tag))
        {
            continue;
        }
        std::string names;
        for (const PropertySet& each : m_recipients.Rows())
        {
            if (each.Long(PR_RECIPIENT_TYPE, MAPI_TO) == list.type)
            {
                names += (names.empty() ? "" : "; ") + each.Text(PR_DISPLAY_NAME_W);
            }
        }
        m_properties.SetText(list.tag, names);
    }
}

MessageContent Message::TakeContent()
{
    MessageContent content;
    content.properties = std::move(m_properties);
    content.recipients = m_recipients.Take();
    content.attachments = m_attachments.Take();
    return content;
}

void Message::GiveBack(MessageContent&& content)
{
    m_properties = std::move(content.properties);
    m_recipients.GiveBack(std::move(content.recipients));
    m_attachments.GiveBack(std::move(content.attachments));
}

void Message::Commit(bool force)
{
    MessageContent content = TakeContent();
    try
    {
        if (m_holder != nullptr)
        {
            m_holder->PutEmbedded(std::make_shared<MessageContent>(content));
        }
        else if (!m_id)
        {
            m_id = File().Messages().Create({m_folder, m_associated}, content);
        }
        else
        {
            File().Messages().Save(m_id, content, force ? 0 : m_change);
        }
    }
    catch (...)
    {
        GiveBack(std::move(content));
        throw;
    }
    m_recipients.Saved();
    m_saved = true;
    if (m_holder != nullptr)
    {
        GiveBack(std::move(content));
        return;
    }
    // Stored properties are read again on the next request; large values then refer to the stored data.
    m_attachments.Forget(m_id);
    m_recipients.Forget(m_id);
    m_properties.Clear();
    m_loaded = false;
}

HRESULT Message::SubmitMessage(ULONG)
{
    return Guarded("IMessage::SubmitMessage",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "this store cannot submit messages"); });
}

HRESULT Message::SetReadFlag(ULONG flags)
{
    return Run("IMessage::SetReadFlag", [&]
    {
        RequireFlags(flags, SUPPRESS_RECEIPT | CLEAR_READ_FLAG | GENERATE_RECEIPT_ONLY | MAPI_DEFERRED_ERRORS |
                                ULONG(0x20) | ULONG(0x40));
        if (flags & GENERATE_RECEIPT_ONLY)
        {
            return;
        }
        const ULONG set = flags & CLEAR_READ_FLAG ? 0 : MSGFLAG_READ;
        Load();
        if (m_id)
        {
            File().Connection().RequireWritable();
            File().Messages().ChangeFlags({m_id}, set, MSGFLAG_READ & ~set);
            m_change = File().Messages().Load(m_id).change;
        }
        else
        {
            m_dirty = true;
        }
        const LONG now = m_properties.Long(PR_MESSAGE_FLAGS);
        m_properties.SetLong(PR_MESSAGE_FLAGS, (now & ~LONG(MSGFLAG_READ)) | static_cast<LONG>(set));
    });
}

HRESULT Message::GetRecipientTable(ULONG flags, LPMAPITABLE* table)
{
    return Run("IMessage::GetRecipientTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = m_recipients.Table(flags);
    });
}

HRESULT Message::ModifyRecipients(ULONG flags, LPADRLIST list)
{
    return Run("IMessage::ModifyRecipients", [&]
    {
        RequireFlags(flags, MODRECIP_ADD | MODRECIP_MODIFY | MODRECIP_REMOVE);
        Require((flags & (flags - 1)) == 0,
                "more than one of MODRECIP_ADD, MODRECIP_MODIFY and MODRECIP_REMOVE is given");
        Require(list != nullptr, "the recipient list is null");
        RequireWrite();
        m_recipients.Modify(flags, *list);
        Load();
        m_dirty = true;
        m_recipients.MarkChanged();
    });
}

HRESULT Message::GetAttachmentTable(ULONG flags, LPMAPITABLE* table)
{
    return Run("IMessage::GetAttachmentTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = m_attachments.Table(flags);
    });
}

HRESULT Message::OpenAttach(ULONG number, LPCIID iid, ULONG flags, LPATTACH* attach)
{
    return Run("IMessage::OpenAttach", [&]
    {
        Require(attach != nullptr, "the output pointer is null");
        *attach = nullptr;
        RequireFlags(flags, MAPI_MODIFY | MAPI_BEST_ACCESS | MAPI_DEFERRED_ERRORS);
        const Access access = AccessFor(flags, AccessGiven());
        const Ref<Attachment> opened = Ref<Attachment>::Adopt(new Attachment(*this, number, access, false));
        *attach = static_cast<IAttach*>(Answer(opened.Get(), iid));
    });
}

HRESULT Message::CreateAttach(LPCIID iid, ULONG flags, ULONG* number, LPATTACH* attach)
{
    return Run("IMessage::CreateAttach", [&]
    {
        Require(attach != nullptr && number != nullptr, "the output pointer is null");
        *attach = nullptr;
        RequireFlags(flags, MAPI_DEFERRED_ERRORS);
        RequireWrite();
        const ULONG next = m_attachments.FreeNumber();
        const Ref<Attachment> made = Ref<Attachment>::Adopt(new Attachment(*this, next, Access::Write, true));
        *attach = static_cast<IAttach*>(Answer(made.Get(), iid));
        m_attachments.UseNumber(next);
        *number = next;
    });
}

HRESULT Message::DeleteAttach(ULONG number, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Run("IMessage::DeleteAttach", [&]
    {
        RequireFlags(flags, ATTACH_DIALOG);
        RequireWrite();
        if (!m_attachments.Has(number))
        {
            throw Error(MAPI_E_NOT_FOUND, "the message has no attachment with this number");
        }
        AttachmentEdit edit;
        edit.number = number;
        edit.removed = true;
        m_attachments.UseNumber(number);
        PutAttachment(std::move(edit));
    });
}

AttachmentEdit Message::AttachmentNow(ULONG number)
{
    const std::lock_guard hold(Lock());
    return m_attachments.Now(number);
}

MessageId Message::StoredEmbedded(ULONG number)
{
    const std::lock_guard hold(Lock());
    return m_attachments.StoredEmbedded(number);
}

void Message::PutAttachment(AttachmentEdit edit)
{
    const std::lock_guard hold(Lock());
    RequireWrite();
    Load();
    m_dirty = true;
    m_attachments.Put(std::move(edit));
}

Ref<IMessage> Message::OpenEmbedded(EmbeddedHolder& holder, std::shared_ptr<const MessageContent> content,
                                    Access access)
{
    return Ref<IMessage>::Adopt(new Message(Store(), holder, std::move(content), access));
}

} // namespace zebstore
