#include "tests/zebstore/model/Steps.h"

#include "platform/tags.h"

#include <algorithm>

namespace zebstore::model
{

namespace
{

constexpr size_t MostMails = 250;

std::string Named(const Mail& mail)
{
    return (mail.isAssociated ? "associated message " : "message ") + std::to_string(mail.number);
}

std::string Named(const std::vector<MailPtr>& mails)
{
    std::string text;
    for (const MailPtr& mail : mails)
    {
        text += (text.empty() ? "" : ", ") + Named(*mail);
    }
    return text;
}

std::string InFolder(const Folder& folder)
{
    return "folder " + std::to_string(folder.number);
}

/// Null: there is none.
MailPtr PickMail(World& world, Random& random)
{
    const std::vector<MailPtr> mails = world.AllMails();
    return mails.empty() ? nullptr : random.Pick(mails);
}

/// Some of the messages of a folder, in any order.
std::vector<MailPtr> PickSome(Folder& folder, Random& random)
{
    std::vector<MailPtr> all = folder.normal;
    all.insert(all.end(), folder.associated.begin(), folder.associated.end());
    std::vector<MailPtr> some;
    for (size_t left = 1 + random.Below(4); left > 0 && !all.empty(); --left)
    {
        const size_t at = random.Below(all.size());
        some.push_back(all[at]);
        all.erase(all.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return some;
}

/// A folder that has messages; null: none has.
FolderPtr PickFull(World& world, Random& random)
{
    const MailPtr mail = PickMail(world, random);
    return mail ? world.Holder(*mail) : nullptr;
}

void Remove(Folder& folder, const std::vector<MailPtr>& mails)
{
    for (const MailPtr& mail : mails)
    {
        std::vector<MailPtr>& all = folder.Mails(mail->isAssociated);
        all.erase(std::find(all.begin(), all.end(), mail));
    }
}

/// The identifiers of messages as calls take them.
class IdList
{
public:
    explicit IdList(const std::vector<MailPtr>& mails)
    {
        for (const MailPtr& mail : mails)
        {
            m_entries.push_back({static_cast<ULONG>(mail->id.size()), mail->id.data()});
        }
        m_list = {static_cast<ULONG>(m_entries.size()), m_entries.data()};
    }
    ENTRYLIST* Get() { return &m_list; }

private:
    std::vector<SBinary> m_entries;
    ENTRYLIST m_list{};
};

void CreateMailStep(World& world, Random& random)
{
    if (world.AllMails().size() > MostMails)
    {
        return;
    }
    const FolderPtr folder = random.Pick(world.Folders());
    for (size_t left = 1 + random.Below(3); left > 0; --left)
    {
        const auto mail = std::make_shared<Mail>();
        mail->number = ++world.LastNumber();
        mail->isAssociated = random.OneIn(5);
        ChangeMail(random, *mail, true);
        for (size_t recipients = random.Below(3); recipients > 0; --recipients)
        {
            AddRecipient(*mail, RandomRecipient(random));
        }
        for (size_t attachments = random.Below(2); attachments > 0; --attachments)
        {
            mail->item.attachments.push_back(RandomAttachment(random));
        }
        world.Say("create " + Named(*mail) + " in " + InFolder(*folder));
        Create(*world.Open(*folder), *mail);
        folder->Mails(mail->isAssociated).push_back(mail);
    }
}

// More at once than a change log lists.
void CreateManyStep(World& world, Random& random)
{
    if (world.AllMails().size() > MostMails / 2)
    {
        return;
    }
    const FolderPtr folder = random.Pick(world.Folders());
    const size_t count = 120 + random.Below(20);
    world.Say("create " + std::to_string(count) + " messages in " + InFolder(*folder));
    const Ref<IMAPIFolder> opened = world.Open(*folder);
    for (size_t i = 0; i < count; ++i)
    {
        const auto mail = std::make_shared<Mail>();
        mail->number = ++world.LastNumber();
        mail->item.own[PROP_ID(PR_SUBJECT)] = Text(random.Text(true));
        mail->item.own[PROP_ID(PR_MESSAGE_CLASS)] = Text("IPM.Note");
        mail->item.own[PROP_ID(PR_MESSAGE_FLAGS)] = Number(PT_LONG, random.OneIn(2) ? MSGFLAG_READ : 0);
        Create(*opened, *mail);
        folder->normal.push_back(mail);
    }
    world.MayLoseEvents();
}

void ChangeMailStep(World& world, Random& random)
{
    const MailPtr mail = PickMail(world, random);
    if (!mail)
    {
        return;
    }
    const Properties before = mail->item.own;
    ChangeMail(random, *mail, false);
    world.Say("change " + Named(*mail));
    const Ref<IMessage> message = world.Open(*mail);
    Write(*message, before, mail->item.own);
    Check(message->SaveChanges(0), S_OK, "SaveChanges of a changed message");
}

void ChangeRecipientsStep(World& world, Random& random)
{
    const MailPtr mail = PickMail(world, random);
    if (!mail)
    {
        return;
    }
    std::vector<Properties> kept;
    std::swap(kept, mail->item.recipients);
    for (const Properties& recipient : kept)
    {
        if (!random.OneIn(3))
        {
            AddRecipient(*mail, recipient);
        }
    }
    AddRecipient(*mail, RandomRecipient(random));
    world.Say("replace the recipients of " + Named(*mail) + " by " + std::to_string(mail->item.recipients.size()));
    const Ref<IMessage> message = world.Open(*mail);
    WriteRecipients(*message, *mail);
    Check(message->SaveChanges(0), S_OK, "SaveChanges of recipients");
}

void ChangeAttachmentsStep(World& world, Random& random)
{
    const MailPtr mail = PickMail(world, random);
    if (!mail)
    {
        return;
    }
    std::vector<Properties>& attachments = mail->item.attachments;
    const Ref<IMessage> message = world.Open(*mail);
    if (!attachments.empty() && random.OneIn(2))
    {
        const size_t at = random.Below(attachments.size());
        world.Say("remove attachment " + std::to_string(at) + " of " + Named(*mail));
        RemoveAttachment(*message, attachments[at]);
        attachments.erase(attachments.begin() + static_cast<std::ptrdiff_t>(at));
    }
    else
    {
        world.Say("attach to " + Named(*mail));
        attachments.push_back(RandomAttachment(random));
        WriteAttachment(*message, attachments.back());
    }
    Check(message->SaveChanges(0), S_OK, "SaveChanges of attachments");
    ++mail->version;
}

void DeleteMailsStep(World& world, Random& random)
{
    const FolderPtr folder = PickFull(world, random);
    if (!folder)
    {
        return;
    }
    const std::vector<MailPtr> mails = PickSome(*folder, random);
    world.Say("delete " + Named(mails));
    IdList list(mails);
    Check(world.Open(*folder)->DeleteMessages(list.Get(), 0, nullptr, 0), S_OK, "DeleteMessages");
    Remove(*folder, mails);
}

// What tables have their cursors and bookmarks at.
void DeleteMarkedStep(World& world, Random& random)
{
    if (world.Views().empty())
    {
        return;
    }
    const View& view = *random.Pick(world.Views());
    const std::string key = random.Pick(view.MarkedKeys());
    const FolderPtr folder = view.Kind().folder;
    for (const MailPtr& mail : folder->Mails(view.Kind().isAssociated))
    {
        if (!view.Kind().isHierarchy && mail->key == key)
        {
            const std::vector<MailPtr> mails = {mail};
            world.Say("delete " + Named(mails) + ", a marked row of " + view.Name());
            IdList list(mails);
            Check(world.Open(*folder)->DeleteMessages(list.Get(), 0, nullptr, 0), S_OK, "DeleteMessages");
            Remove(*folder, mails);
            return;
        }
    }
}

void MoveMailsStep(World& world, Random& random)
{
    const FolderPtr folder = PickFull(world, random);
    const FolderPtr target = random.Pick(world.Folders());
    if (!folder)
    {
        return;
    }
    const std::vector<MailPtr> mails = PickSome(*folder, random);
    world.Say("move " + Named(mails) + " to " + InFolder(*target));
    IdList list(mails);
    Check(world.Open(*folder)->CopyMessages(list.Get(), nullptr, world.Open(*target).Get(), 0, nullptr, MESSAGE_MOVE),
          S_OK, "CopyMessages to move");
    if (folder == target)
    {
        return;
    }
    Remove(*folder, mails);
    for (const MailPtr& mail : mails)
    {
        mail->id.clear();
        mail->key.clear();
        target->Mails(mail->isAssociated).push_back(mail);
    }
    world.LearnMails(*target);
}

void CopyMailsStep(World& world, Random& random)
{
    const FolderPtr folder = PickFull(world, random);
    const FolderPtr target = random.Pick(world.Folders());
    if (!folder || world.AllMails().size() > MostMails)
    {
        return;
    }
    const std::vector<MailPtr> mails = PickSome(*folder, random);
    world.Say("copy " + Named(mails) + " to " + InFolder(*target));
    IdList list(mails);
    Check(world.Open(*folder)->CopyMessages(list.Get(), nullptr, world.Open(*target).Get(), 0, nullptr, 0), S_OK,
          "CopyMessages");
    for (const MailPtr& mail : mails)
    {
        target->Mails(mail->isAssociated).push_back(CopyOf(*mail, world.LastNumber()));
    }
    world.LearnMails(*target);
}

void SetReadFlagsStep(World& world, Random& random)
{
    const FolderPtr folder = PickFull(world, random);
    if (!folder)
    {
        return;
    }
    const bool ofAll = random.OneIn(4);
    const bool isRead = random.OneIn(2);
    const std::vector<MailPtr> mails = ofAll ? folder->normal : PickSome(*folder, random);
    world.Say("make " + (ofAll ? "all messages of " + InFolder(*folder) : Named(mails)) +
              (isRead ? " read" : " unread"));
    IdList list(mails);
    Check(world.Open(*folder)->SetReadFlags(ofAll ? nullptr : list.Get(), 0, nullptr, isRead ? 0 : CLEAR_READ_FLAG),
          S_OK, "SetReadFlags");
    for (const MailPtr& mail : mails)
    {
        mail->version += mail->IsRead() != isRead ? 1 : 0;
        mail->SetRead(isRead);
    }
    if (mails.size() > 100)
    {
        world.MayLoseEvents();
    }
}

void CompareMailStep(World& world, Random& random)
{
    if (const MailPtr mail = PickMail(world, random))
    {
        world.Say("compare " + Named(*mail));
        Compare(*world.Open(*mail), *mail);
    }
}

void HoldMailStep(World& world, Random& random)
{
    const MailPtr mail = PickMail(world, random);
    if (mail && world.Held().size() < 4)
    {
        world.Say("open " + Named(*mail) + " and hold it");
        world.Held().push_back({mail, mail->item.own, mail->version, mail->key, world.Open(*mail)});
    }
}

// Saves what was opened before: others may have changed, moved or deleted the message since.
void SaveHeldStep(World& world, Random& random)
{
    std::vector<HeldMail>& all = world.Held();
    if (all.empty())
    {
        return;
    }
    const auto at = all.begin() + static_cast<std::ptrdiff_t>(random.Below(all.size()));
    const HeldMail held = *at;
    all.erase(at);
    Properties changed = held.own;
    changed[PROP_ID(PR_SENDER_NAME)] = Text(random.Text(true));
    // Another value in any case: a message that is not changed is not saved.
    changed[MessageKinds().back().id] = Number(PT_LONG, ++world.LastNumber());
    world.Say("change and save the held " + Named(*held.mail));
    HRESULT expected = S_OK;
    if (!world.Holder(*held.mail) || held.mail->key != held.key)
    {
        expected = MAPI_E_OBJECT_DELETED;
    }
    else if (held.mail->version != held.version)
    {
        expected = MAPI_E_OBJECT_CHANGED;
    }
    Write(*held.message, held.own, changed);
    Check(held.message->SaveChanges(0), expected, "SaveChanges of a held message");
    if (expected == S_OK)
    {
        held.mail->item.own = changed;
        ++held.mail->version;
    }
}

} // namespace

const std::vector<Step>& MailSteps()
{
    static const std::vector<Step> steps = {{"create messages", 12, CreateMailStep},
                                            {"create many messages", 1, CreateManyStep},
                                            {"change a message", 12, ChangeMailStep},
                                            {"change recipients", 3, ChangeRecipientsStep},
                                            {"change attachments", 3, ChangeAttachmentsStep},
                                            {"delete messages", 4, DeleteMailsStep},
                                            {"delete a marked message", 6, DeleteMarkedStep},
                                            {"move messages", 5, MoveMailsStep},
                                            {"copy messages", 4, CopyMailsStep},
                                            {"set read flags", 5, SetReadFlagsStep},
                                            {"compare a message", 3, CompareMailStep},
                                            {"hold a message", 3, HoldMailStep},
                                            {"save a held message", 3, SaveHeldStep}};
    return steps;
}

} // namespace zebstore::model
