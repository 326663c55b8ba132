#include "tests/zebstore/disk/StoreWork.h"

#include "platform/tags.h"
#include "zebstore/addressbook/AddressBook.h"
#include "zebstore/addressbook/AddressId.h"
#include "zebstore/base/LastError.h"
#include "zebstore/base/Memory.h"
#include "zebstore/objects/Store.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/zebstore.h"

#include <algorithm>
#include <cstring>

namespace zebstore::test
{

namespace
{

constexpr FolderId Inbox = IdOf(StandardFolder::Inbox);
constexpr FolderId Target = IdOf(StandardFolder::CommonViews) + 1;
constexpr FolderId Renamed = Target + 1;
constexpr FolderId Dropped = Target + 2;
constexpr MessageId InInbox(std::int64_t number)
{
    return ContentsKey(Inbox, false).Message(number);
}
// In the order in which MakeStoreToWorkOn makes them.
constexpr MessageId Changed = InInbox(1);
constexpr MessageId Moved = InInbox(2);
constexpr MessageId Copied = InInbox(3);
constexpr MessageId Deleted = InInbox(4);
constexpr MessageId Unread = InInbox(5);
constexpr AddressId Ann = 1;
constexpr AddressId Friends = 2;
constexpr LONG KnownName = 4711;
constexpr LONG NewName = 4712;

PropertySet Named(const char* name)
{
    PropertySet properties;
    properties.SetText(PR_DISPLAY_NAME_W, name);
    return properties;
}

MessageContent Mail(const char* subject)
{
    MessageContent content;
    content.properties.SetText(PR_SUBJECT_W, subject);
    content.properties.SetText(PR_MESSAGE_CLASS_W, "IPM.Note");
    content.properties.SetEncoded(PR_BODY_W, std::string(6000, 'c'));
    content.properties.SetLong(PR_MESSAGE_FLAGS, 0);
    content.recipients = std::vector<PropertySet>{Named("Ann")};
    AttachmentEdit attachment;
    content.properties.SetText(PROP_TAG(PT_UNICODE, 0x8000), "of the known name");
    attachment.properties = Named("file");
    attachment.properties.SetEncoded(PR_ATTACH_DATA_BIN, std::string(5000, 'd'));
    content.attachments.push_back(attachment);
    return content;
}

SPropValue Narrow(ULONG tag, const char* text)
{
    SPropValue value;
    std::memset(static_cast<void*>(&value), 0, sizeof(value));
    value.ulPropTag = CHANGE_PROP_TYPE(tag, PT_STRING8);
    value.Value.lpszA = const_cast<char*>(text);
    return value;
}

template <class Id>
ENTRYID* AsEntryId(const Id& id)
{
    return reinterpret_cast<ENTRYID*>(const_cast<BYTE*>(id.data()));
}

AddressEntryId AddressIdOf(const MAPIUID& store, AddressKind kind, AddressId address)
{
    AddressName name;
    name.kind = kind;
    name.key = address;
    return MakeAddressId(store, name);
}

/// The name of a property.
struct NumberedName
{
    explicit NumberedName(LONG number)
    {
        id.lpguid = &set;
        id.ulKind = MNID_ID;
        id.Kind.lID = number;
    }
    GUID set = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
    MAPINAMEID id{};
};

/// What a failing call of the interface throws.
struct Failed
{
    HRESULT code;
    std::string text;
};

} // namespace

void MakeStoreToWorkOn(const std::string& path, bool indexed)
{
    const std::shared_ptr<StoreFile> store = StoreFile::Create(path, "Test", {});
    const FolderId top = IdOf(StandardFolder::IpmSubtree);
    NumberedName name(KnownName);
    const MAPINAMEID* const names = &name.id;
    store->NamedProperties().Ids(&names, 1, true);
    for (const char* subject : {"changed", "moved", "copied", "deleted", "unread"})
    {
        store->Messages().Create({Inbox, false}, Mail(subject));
    }
    for (const char* name : {"target", "renamed", "dropped"})
    {
        store->Folders().Create(top, Named(name));
    }
    store->Messages().Create({Dropped, false}, Mail("inside"));
    const AddressStorage book(store);
    book.Create(MAPI_MAILUSER, Named("Ann"));
    book.Create(MAPI_DISTLIST, Named("Friends"));
    if (indexed)
    {
        store->Texts().TurnOn();
    }
}

const StoreWork::StepOf StoreWork::Steps[] = {
    {"save", &StoreWork::SaveNew},
    {"change", &StoreWork::SaveChanged},
    {"move", &StoreWork::Move},
    {"copy", &StoreWork::Copy},
    {"copy of an object", &StoreWork::CopyObject},
    {"delete", &StoreWork::DeleteOne},
    {"stream", &StoreWork::SaveLarge},
    {"attachment", &StoreWork::SaveAttachments},
    {"name", &StoreWork::MakeName},
    {"named property", &StoreWork::SaveNamed},
    {"folder", &StoreWork::MakeFolder},
    {"folder's name", &StoreWork::RenameFolder},
    {"folder's end", &StoreWork::DropFolder},
    {"read flag", &StoreWork::MarkRead},
    {"table", &StoreWork::ReadRows},
    {"entry", &StoreWork::AddUser},
    {"member", &StoreWork::AddMember},
};

size_t StoreWork::StepCount()
{
    return std::size(Steps);
}

const char* StoreWork::StepName(size_t step)
{
    return Steps[step].name;
}

template <class Body>
bool StoreWork::Try(const char* name, Body&& body)
{
    m_step = name;
    try
    {
        body();
        return true;
    }
    catch (const Failed& failed)
    {
        m_failures.push_back({name, failed.code, failed.text});
    }
    catch (const Error& error)
    {
        m_failures.push_back({name, error.Code(), error.what()});
    }
    return false;
}

void StoreWork::Must(HRESULT code)
{
    if (FAILED(code))
    {
        throw Failed{code, LastErrorText(code)};
    }
    if (code == MAPI_W_PARTIAL_COMPLETION)
    {
        throw Failed{code, "a part was done"};
    }
}

// The object still has what was not saved.
void StoreWork::Save(IMAPIProp& object)
{
    const HRESULT code = object.SaveChanges(KEEP_OPEN_READWRITE);
    if (FAILED(code))
    {
        m_failures.push_back({m_step, code, LastErrorText(code)});
        Must(object.SaveChanges(KEEP_OPEN_READWRITE));
    }
}

bool StoreWork::Open()
{
    return Try("open", [&]
    {
        StoreFile::OpenOptions options;
        options.fullDurability = m_fullDurability;
        m_context = std::make_shared<StoreContext>(StoreFile::Open(m_path, options));
        m_store = NewStore(m_context, Access::Write);
        m_book = NewAddressBook(m_context, Access::Write);
    });
}

void StoreWork::CheckpointEvery(int pages)
{
    const std::string sql = "PRAGMA wal_autocheckpoint=" + std::to_string(pages);
    m_context->File().Connection().Db().Execute(sql.c_str());
}

bool StoreWork::Step(size_t step)
{
    return Try(Steps[step].name, [&] { (this->*Steps[step].run)(); });
}

void StoreWork::Close()
{
    m_book = {};
    m_store = {};
    m_context.reset();
}

Ref<IMAPIFolder> StoreWork::Folder(FolderId folder)
{
    const FolderEntryId id = m_context->IdOfFolder(folder);
    ULONG type = 0;
    IUnknown* object = nullptr;
    Must(m_store->OpenEntry(static_cast<ULONG>(id.size()), AsEntryId(id), nullptr, MAPI_MODIFY, &type, &object));
    return Ref<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object));
}

Ref<IMessage> StoreWork::Message(MessageId message)
{
    const MessageEntryId id = m_context->IdOfMessage(message);
    ULONG type = 0;
    IUnknown* object = nullptr;
    Must(m_store->OpenEntry(static_cast<ULONG>(id.size()), AsEntryId(id), nullptr, MAPI_MODIFY, &type, &object));
    return Ref<IMessage>::Adopt(static_cast<IMessage*>(object));
}

Ref<IMessage> StoreWork::New(const char* subject)
{
    IMessage* made = nullptr;
    Must(Folder(Inbox)->CreateMessage(nullptr, 0, &made));
    Ref<IMessage> message = Ref<IMessage>::Adopt(made);
    SPropValue values[] = {Narrow(PR_SUBJECT_A, subject), Narrow(PR_MESSAGE_CLASS_A, "IPM.Note")};
    Must(message->SetProps(2, values, nullptr));
    return message;
}

void StoreWork::SaveNew()
{
    const Ref<IMessage> message = New("saved");
    SPropValue name = Narrow(PR_DISPLAY_NAME_A, "Ann");
    SizedADRLIST(1, list) = {1, {{0, 1, &name}}};
    Must(message->ModifyRecipients(MODRECIP_ADD, reinterpret_cast<LPADRLIST>(&list)));
    Save(*message);
}

void StoreWork::SaveChanged()
{
    const Ref<IMessage> message = Message(Changed);
    const std::string body(7000, 'n');
    SPropValue values[] = {Narrow(PR_SENDER_NAME_A, "Bob"), Narrow(PR_BODY_A, body.c_str())};
    Must(message->SetProps(2, values, nullptr));
    Must(message->DeleteAttach(0, 0, nullptr, 0));
    Save(*message);
}

void StoreWork::PassMessage(MessageId message, ULONG flags)
{
    const MessageEntryId id = m_context->IdOfMessage(message);
    SBinary entry = {static_cast<ULONG>(id.size()), const_cast<BYTE*>(id.data())};
    ENTRYLIST list = {1, &entry};
    const Ref<IMAPIFolder> target = Folder(Target);
    Must(Folder(Inbox)->CopyMessages(&list, nullptr, target.Get(), 0, nullptr, flags));
}

void StoreWork::Move()
{
    PassMessage(Moved, MESSAGE_MOVE);
}

void StoreWork::Copy()
{
    PassMessage(Copied, 0);
}

void StoreWork::CopyObject()
{
    const Ref<IMessage> message = New("copy of an object");
    const Ref<IMessage> source = Message(Copied);
    SizedSPropTagArray(1, excluded) = {1, {PR_SUBJECT_A}};
    Must(source->CopyTo(0, nullptr, reinterpret_cast<SPropTagArray*>(&excluded), 0, nullptr, &IID_IMessage,
                        message.Get(), 0, nullptr));
    Save(*message);
}

void StoreWork::DeleteOne()
{
    const MessageEntryId id = m_context->IdOfMessage(Deleted);
    SBinary entry = {static_cast<ULONG>(id.size()), const_cast<BYTE*>(id.data())};
    ENTRYLIST list = {1, &entry};
    Must(Folder(Inbox)->DeleteMessages(&list, 0, nullptr, 0));
}

void StoreWork::WriteStream(IMAPIProp& object, ULONG tag, size_t size)
{
    IUnknown* opened = nullptr;
    Must(object.OpenProperty(tag, &IID_IStream, STGM_READWRITE, MAPI_CREATE | MAPI_MODIFY, &opened));
    const Ref<IStream> stream = Ref<IStream>::Adopt(static_cast<IStream*>(opened));
    const std::string piece(50000, 's');
    for (size_t done = 0; done < size; done += piece.size())
    {
        Must(stream->Write(piece.data(), static_cast<ULONG>(std::min(piece.size(), size - done)), nullptr));
    }
    Must(stream->Commit(0));
}

void StoreWork::SaveLarge()
{
    const Ref<IMessage> message = New("large");
    WriteStream(*message, PR_BODY_A, 150000);
    Save(*message);
}

void StoreWork::AttachTo(IMessage& message)
{
    ULONG number = 0;
    IAttach* made = nullptr;
    Must(message.CreateAttach(nullptr, 0, &number, &made));
    const Ref<IAttach> attach = Ref<IAttach>::Adopt(made);
    WriteStream(*attach, PR_ATTACH_DATA_BIN, 20000);
    Save(*attach);
}

void StoreWork::SaveAttachments()
{
    const Ref<IMessage> message = New("with attachments");
    AttachTo(*message);
    ULONG number = 0;
    IAttach* made = nullptr;
    Must(message->CreateAttach(nullptr, 0, &number, &made));
    const Ref<IAttach> attach = Ref<IAttach>::Adopt(made);
    SPropValue method{};
    method.ulPropTag = PR_ATTACH_METHOD;
    method.Value.l = ATTACH_EMBEDDED_MSG;
    Must(attach->SetProps(1, &method, nullptr));
    IUnknown* opened = nullptr;
    Must(attach->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_CREATE | MAPI_MODIFY, &opened));
    const Ref<IMessage> inner = Ref<IMessage>::Adopt(static_cast<IMessage*>(opened));
    SPropValue subject = Narrow(PR_SUBJECT_A, "inner");
    Must(inner->SetProps(1, &subject, nullptr));
    AttachTo(*inner);
    Save(*inner);
    Save(*attach);
    Save(*message);
}

ULONG StoreWork::TagOfName(LONG number, ULONG flags)
{
    NumberedName name(number);
    MAPINAMEID* names = &name.id;
    SPropTagArray* tags = nullptr;
    Must(m_store->GetIDsFromNames(1, &names, flags, &tags));
    const Buffer<SPropTagArray> owner(tags);
    return tags->aulPropTag[0];
}

void StoreWork::MakeName()
{
    TagOfName(NewName, MAPI_CREATE);
}

void StoreWork::SaveNamed()
{
    const Ref<IMessage> message = New("named");
    SPropValue value = Narrow(TagOfName(KnownName, 0), "value");
    Must(message->SetProps(1, &value, nullptr));
    Save(*message);
}

void StoreWork::MakeFolder()
{
    IMAPIFolder* made = nullptr;
    char name[] = "made";
    Must(Folder(Target)->CreateFolder(FOLDER_GENERIC, reinterpret_cast<LPTSTR>(name), nullptr, nullptr, 0, &made));
    made->Release();
}

void StoreWork::RenameFolder()
{
    SPropValue name = Narrow(PR_DISPLAY_NAME_A, "with another name");
    Must(Folder(Renamed)->SetProps(1, &name, nullptr));
}

void StoreWork::DropFolder()
{
    const FolderEntryId id = m_context->IdOfFolder(Dropped);
    Must(Folder(IdOf(StandardFolder::IpmSubtree))
             ->DeleteFolder(static_cast<ULONG>(id.size()), AsEntryId(id), 0, nullptr, DEL_MESSAGES));
}

void StoreWork::MarkRead()
{
    Must(Message(Unread)->SetReadFlag(SUPPRESS_RECEIPT));
}

void StoreWork::ReadRows()
{
    IMAPITable* opened = nullptr;
    Must(Folder(Inbox)->GetContentsTable(0, &opened));
    const Ref<IMAPITable> table = Ref<IMAPITable>::Adopt(opened);
    SSortOrderSet order = {1, 0, 0, {{PR_SUBJECT_A, TABLE_SORT_ASCEND}}};
    SPropValue text = Narrow(PR_SUBJECT_A, "change");
    SRestriction restriction{};
    restriction.rt = RES_CONTENT;
    restriction.res.resContent = {FL_PREFIX, PR_SUBJECT_A, &text};
    Must(table->SortTable(&order, 0));
    Must(table->Restrict(&restriction, 0));
    SRowSet* rows = nullptr;
    Must(table->QueryRows(10, 0, &rows));
    const ULONG count = rows->cRows;
    FreeProws(rows);
    if (count != 1)
    {
        throw Failed{E_UNEXPECTED, "the table has " + std::to_string(count) + " rows"};
    }
}

template <class Interface>
Ref<Interface> StoreWork::InBook(ULONG size, ENTRYID* id)
{
    ULONG type = 0;
    IUnknown* object = nullptr;
    Must(m_book->OpenEntry(size, id, nullptr, MAPI_MODIFY, &type, &object));
    return Ref<Interface>::Adopt(static_cast<Interface*>(object));
}

void StoreWork::AddUser()
{
    ULONG size = 0;
    ENTRYID* id = nullptr;
    Must(m_book->GetDefaultDir(&size, &id));
    const Buffer<ENTRYID> owner(id);
    const Ref<IABContainer> container = InBook<IABContainer>(size, id);
    SPropValue* kind = nullptr;
    Must(HrGetOneProp(container.Get(), PR_DEF_CREATE_MAILUSER, &kind));
    const Buffer<SPropValue> kindOwner(kind);
    IMAPIProp* made = nullptr;
    Must(container->CreateEntry(kind->Value.bin.cb, reinterpret_cast<ENTRYID*>(kind->Value.bin.lpb), 0, &made));
    const Ref<IMAPIProp> entry = Ref<IMAPIProp>::Adopt(made);
    SPropValue value = Narrow(PR_DISPLAY_NAME_A, "Cleo");
    Must(entry->SetProps(1, &value, nullptr));
    Save(*entry);
}

void StoreWork::AddMember()
{
    const AddressEntryId list = AddressIdOf(m_context->Uid(), AddressKind::List, Friends);
    const AddressEntryId user = AddressIdOf(m_context->Uid(), AddressKind::User, Ann);
    SBinary entry = {static_cast<ULONG>(user.size()), const_cast<BYTE*>(user.data())};
    ENTRYLIST entries = {1, &entry};
    Must(InBook<IDistList>(static_cast<ULONG>(list.size()), AsEntryId(list))->CopyEntries(&entries, 0, nullptr, 0));
}

} // namespace zebstore::test
