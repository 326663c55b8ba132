#include "tests/zebstore/model/StoreModel.h"

#include "platform/tags.h"

#include <algorithm>

namespace zebstore::model
{

namespace
{

constexpr ULONG Flags = PROP_ID(PR_MESSAGE_FLAGS);

Wide NamesOf(const Item& item, LONG type)
{
    Wide names;
    const WCHAR between[] = {';', ' '};
    for (const Properties& recipient : item.recipients)
    {
        if (recipient.at(PROP_ID(PR_RECIPIENT_TYPE)).number == type)
        {
            const auto name = recipient.find(PROP_ID(PR_DISPLAY_NAME));
            names +=
                (names.empty() ? Wide() : Wide(between, 2)) + (name != recipient.end() ? name->second.text : Wide());
        }
    }
    return names;
}

} // namespace

bool Mail::IsRead() const
{
    return (item.own.at(Flags).number & MSGFLAG_READ) != 0;
}

void Mail::SetRead(bool isRead)
{
    std::int64_t& flags = item.own[Flags].number;
    flags = isRead ? flags | MSGFLAG_READ : flags & ~std::int64_t(MSGFLAG_READ);
}

const Wide& Folder::Name() const
{
    return own.at(PROP_ID(PR_DISPLAY_NAME)).text;
}

void Folder::SetName(const Wide& name)
{
    own[PROP_ID(PR_DISPLAY_NAME)] = Text(name);
}

size_t Folder::Unread() const
{
    return static_cast<size_t>(
        std::count_if(normal.begin(), normal.end(), [](const MailPtr& mail) { return !mail->IsRead(); }));
}

Folder* Folder::Find(const Wide& name) const
{
    const std::string folded = FoldedText(name);
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&](const FolderPtr& child) { return FoldedText(child->Name()) == folded; });
    return found != children.end() ? found->get() : nullptr;
}

bool Folder::IsWithin(const Folder& ancestor) const
{
    return this == &ancestor || (parent != nullptr && parent->IsWithin(ancestor));
}

void Folder::SortChildren()
{
    std::sort(children.begin(), children.end(), [](const FolderPtr& left, const FolderPtr& right)
    { return FoldedText(left->Name()) < FoldedText(right->Name()); });
}

Item ShownOf(const Mail& mail)
{
    Item item = mail.item;
    std::int64_t& flags = item.own[Flags].number;
    flags &= ~std::int64_t(MSGFLAG_HASATTACH | MSGFLAG_ASSOCIATED);
    flags |= item.attachments.empty() ? 0 : MSGFLAG_HASATTACH;
    flags |= mail.isAssociated ? MSGFLAG_ASSOCIATED : 0;
    item.own[PROP_ID(PR_HASATTACH)] = Number(PT_BOOLEAN, item.attachments.empty() ? 0 : 1);
    item.own.emplace(PROP_ID(PR_IMPORTANCE), Number(PT_LONG, IMPORTANCE_NORMAL));
    item.own[PROP_ID(PR_DISPLAY_TO)] = Text(NamesOf(item, MAPI_TO));
    item.own[PROP_ID(PR_DISPLAY_CC)] = Text(NamesOf(item, MAPI_CC));
    item.own[PROP_ID(PR_OBJECT_TYPE)] = Number(PT_LONG, MAPI_MESSAGE);
    return item;
}

Item ShownOf(const Folder& folder, int depth)
{
    Item item{folder.own, {}, {}};
    const auto put = [&](ULONG tag, size_t number)
    { item.own[PROP_ID(tag)] = Number(PROP_TYPE(tag), static_cast<std::int64_t>(number)); };
    put(PR_DEPTH, static_cast<size_t>(depth));
    put(PR_CONTENT_COUNT, folder.normal.size());
    put(PR_CONTENT_UNREAD, folder.Unread());
    put(PR_ASSOC_CONTENT_COUNT, folder.associated.size());
    put(PR_SUBFOLDERS, folder.children.empty() ? 0 : 1);
    put(PR_FOLDER_TYPE, FOLDER_GENERIC);
    put(PR_OBJECT_TYPE, MAPI_FOLDER);
    return item;
}

const std::vector<Kind>& FolderKinds()
{
    static const std::vector<Kind> kinds = {
        {PROP_ID(PR_DISPLAY_NAME), {PT_UNICODE}}, {PROP_ID(PR_COMMENT), {PT_UNICODE}},
        {PROP_ID(PR_DEPTH), {PT_LONG}},           {PROP_ID(PR_CONTENT_COUNT), {PT_LONG}},
        {PROP_ID(PR_CONTENT_UNREAD), {PT_LONG}},  {PROP_ID(PR_ASSOC_CONTENT_COUNT), {PT_LONG}},
        {PROP_ID(PR_SUBFOLDERS), {PT_BOOLEAN}},   {PROP_ID(PR_FOLDER_TYPE), {PT_LONG}},
        {PROP_ID(PR_OBJECT_TYPE), {PT_LONG}}};
    return kinds;
}

const std::vector<Kind>& MailColumnKinds()
{
    static const std::vector<Kind> kinds = []
    {
        std::vector<Kind> all = MessageKinds();
        for (const ULONG tag : {PR_MESSAGE_FLAGS, PR_HASATTACH, PR_OBJECT_TYPE})
        {
            all.push_back({PROP_ID(tag), {PROP_TYPE(tag)}});
        }
        all.push_back({PROP_ID(PR_DISPLAY_TO), {PT_UNICODE}});
        all.push_back({PROP_ID(PR_DISPLAY_CC), {PT_UNICODE}});
        return all;
    }();
    return kinds;
}

void ChangeMail(Random& random, Mail& mail, bool isNew)
{
    for (const Kind& kind : MessageKinds())
    {
        if (!random.OneIn(isNew ? 2 : 6))
        {
            continue;
        }
        if (!isNew && random.OneIn(3))
        {
            mail.item.own.erase(kind.id);
        }
        else
        {
            mail.item.own[kind.id] = random.ValueOf(random.Pick(kind.types));
        }
    }
    if (isNew)
    {
        mail.item.own[Flags] = Number(PT_LONG, random.OneIn(2) ? MSGFLAG_READ | MSGFLAG_UNSENT : 0);
        mail.item.own.emplace(PROP_ID(PR_MESSAGE_CLASS), Text("IPM.Note"));
    }
    ++mail.version;
}

Properties RandomRecipient(Random& random)
{
    Properties recipient;
    recipient[PROP_ID(PR_DISPLAY_NAME)] = Text(random.Text(true));
    recipient[PROP_ID(PR_RECIPIENT_TYPE)] = Number(PT_LONG, random.OneIn(2) ? MAPI_TO : MAPI_CC);
    if (!random.OneIn(3))
    {
        recipient[PROP_ID(PR_EMAIL_ADDRESS)] = Text(random.Text(true));
    }
    return recipient;
}

Properties RandomAttachment(Random& random)
{
    Properties attachment;
    attachment[PROP_ID(PR_ATTACH_METHOD)] = Number(PT_LONG, ATTACH_BY_VALUE);
    attachment[PROP_ID(PR_ATTACH_FILENAME)] = Text(random.Text(true));
    if (!random.OneIn(3))
    {
        attachment[PROP_ID(PR_ATTACH_DATA_BIN)] = random.ValueOf(PT_BINARY);
    }
    return attachment;
}

void AddRecipient(Mail& mail, Properties recipient)
{
    std::int64_t next = 0;
    for (const Properties& each : mail.item.recipients)
    {
        next = std::max(next, each.at(PROP_ID(PR_ROWID)).number + 1);
    }
    recipient[PROP_ID(PR_ROWID)] = Number(PT_LONG, next);
    mail.item.recipients.push_back(std::move(recipient));
    ++mail.version;
}

MailPtr CopyOf(const Mail& mail, int& next)
{
    auto copy = std::make_shared<Mail>(mail);
    copy->number = ++next;
    copy->id.clear();
    copy->key.clear();
    return copy;
}

FolderPtr CopyOf(const Folder& folder, bool withSubfolders, int& next)
{
    auto copy = std::make_shared<Folder>();
    copy->number = ++next;
    copy->own = folder.own;
    for (const bool ofAssociated : {false, true})
    {
        for (const MailPtr& mail : const_cast<Folder&>(folder).Mails(ofAssociated))
        {
            copy->Mails(ofAssociated).push_back(CopyOf(*mail, next));
        }
    }
    for (size_t i = 0; withSubfolders && i < folder.children.size(); ++i)
    {
        copy->children.push_back(CopyOf(*folder.children[i], true, next));
        copy->children.back()->parent = copy.get();
    }
    return copy;
}

} // namespace zebstore::model
