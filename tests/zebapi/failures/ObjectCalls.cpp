// Property objects, sessions, profile administration, exceptions and MAPI's memory.
#include "Calls.h"

namespace zeb::test
{

namespace
{

/// What every class of property objects has: made from an object and from another, assigned, asked for its interface.
template <class Class>
void Copy(World& w)
{
    const Class source(&w.message);
    Class copy(source);
    copy.IsValid();
}
template <class Class>
void Assign(World& w)
{
    const Class source(&w.message);
    Class target;
    target = source;
}
template <class Class>
void Identify(World& w)
{
    Class(&w.message).GetInterfaceCIID();
}
template <class Class>
void Type(World& w)
{
    Class(&w.message).GetMAPIType();
}

template <class Body>
void WithException(Body&& body)
{
    CZebException exception(MAPI_E_NOT_FOUND, "file", 1);
    body(exception);
}

} // namespace

const std::vector<Call<World>>& ObjectCalls()
{
    static const std::vector<Call<World>> calls = {
        {"CZebIProp::CZebIProp", &Copy<CZebIProp>},
        {"CZebIProp::CZebIProp", [](World&) { CZebIProp prop; }},
        {"CZebIProp::CheckIDsMap", [](World& w) { w.zprop.CheckIDsMap(); }},
        {"CZebIProp::CheckIDsMap",
         [](World& w)
         {
             {
                 const ProviderScope provider;
                 w.prop.Fail("GetIDsFromNames", MAPI_E_NO_SUPPORT);
             }
             w.zprop.CheckIDsMap();
         }},
        {"CZebIProp::DeleteProps", [](World& w) { w.zprop.DeleteProps(w.tags, nullptr); }},
        {"CZebIProp::DumpAllProps", [](World& w) { w.zprop.DumpAllProps(); }},
        {"CZebIProp::Free", [](World& w) { w.zprop.Free(); }},
        {"CZebIProp::GetAllProps",
         [](World& w)
         {
             CZebPropValArray values;
             w.zprop.GetAllProps(values.CountPtr(), &values, MAPI_UNICODE);
         }},
        {"CZebIProp::GetBin", [](World& w) { w.zprop.GetBin(PR_ENTRYID); }},
        {"CZebIProp::GetBin", [](World& w) { w.zprop.GetBin(PR_SEARCH_KEY); }},
        {"CZebIProp::GetBinary", [](World& w) { w.zprop.GetBinary(PR_ENTRYID); }},
        {"CZebIProp::GetDisplayName", [](World& w) { w.zprop.GetDisplayName(); }},
        {"CZebIProp::GetDisplayNameA", [](World& w) { w.zprop.GetDisplayNameA(); }},
        {"CZebIProp::GetDisplayNameTag", [](World& w) { w.zprop.GetDisplayNameTag(true); }},
        {"CZebIProp::GetDisplayNameW", [](World& w) { w.zprop.GetDisplayNameW(); }},
        {"CZebIProp::GetEntryID", [](World& w) { w.zprop.GetEntryID(); }},
        {"CZebIProp::GetEntryID", [](World&) { CZebIProp().GetEntryID(); }},
        {"CZebIProp::GetIDsFromNames",
         [](World& w)
         {
             GUID set = {};
             MAPINAMEID name = {&set, MNID_ID, {7}};
             MAPINAMEID* names = &name;
             CZebPropTagArray tags;
             w.zmessage.GetIDsFromNames(1, &names, MAPI_CREATE, &tags);
         }},
        {"CZebIProp::GetInterface", [](World& w) { w.zprop.GetInterface(); }},
        {"CZebIProp::GetInterfaceCIID", &Identify<CZebIProp>},
        {"CZebIProp::GetLongString", [](World& w) { w.zprop.GetLongString(PR_BODY_A); }},
        {"CZebIProp::GetLongStringA", [](World& w) { w.zprop.GetLongStringA(PR_BODY_A); }},
        {"CZebIProp::GetLongStringW", [](World& w) { w.zprop.GetLongStringW(PR_BODY_W); }},
        {"CZebIProp::GetMAPIType", &Type<CZebIProp>},
        {"CZebIProp::GetNameOfTag",
         [](World& w)
         {
             GUID set = {};
             LONG id = 0;
             CStringW name;
             w.zmessage.GetNameOfTag(0x90000003, set, id, name);
         }},
        {"CZebIProp::GetNamedTag", [](World& w) { w.zmessage.GetNamedTag(GUID{}, 7, PT_LONG); }},
        {"CZebIProp::GetNamedTag", [](World& w) { w.zmessage.GetNamedTag(GUID{}, ZEBW("a name"), PT_LONG); }},
        {"CZebIProp::GetNamesFromIDs",
         [](World& w)
         {
             ULONG count = 0;
             MAPINAMEID** names = nullptr;
             SPropTagArray* tags = w.tags;
             w.zmessage.GetNamesFromIDs(&tags, nullptr, 0, &count, &names);
             Zeb_MemFree(names);
         }},
        {"CZebIProp::GetNameFromTag", [](World& w) { w.zprop.GetNameFromTag(NamedTag, true); }},
        {"CZebIProp::GetObjectType", [](World& w) { w.zprop.GetObjectType(); }},
        {"CZebIProp::GetParentID", [](World& w) { w.zprop.GetParentID(); }},
        {"CZebIProp::GetPropList",
         [](World& w)
         {
             CZebPropTagArray tags;
             w.zprop.GetPropList(&tags, 0);
         }},
        {"CZebIProp::GetProps",
         [](World& w)
         {
             CZebPropValArray values;
             w.zprop.GetProps(values, ULONG{2}, PR_ENTRYID, PR_SUBJECT_A);
         }},
        {"CZebIProp::GetProps",
         [](World& w)
         {
             CZebPropValArray values;
             w.zprop.GetProps(w.tags, values.CountPtr(), &values, 0);
         }},
        {"CZebIProp::GetRealTag", [](World& w) { w.zprop.GetRealTag(NamedTag, true); }},
        {"CZebIProp::GetStringProp", [](World& w) { w.zprop.GetStringProp(PR_SUBJECT_A); }},
        {"CZebIProp::GetStringPropA", [](World& w) { w.zprop.GetStringPropA(PR_SUBJECT_A); }},
        {"CZebIProp::GetStringPropA", [](World& w) { w.zprop.GetStringPropA(PR_BODY_A); }},
        {"CZebIProp::GetStringPropW", [](World& w) { w.zprop.GetStringPropW(PR_SUBJECT_W); }},
        {"CZebIProp::GetTagsMap", [](World& w) { w.zprop.GetTagsMap(); }},
        {"CZebIProp::IsChildOf", [](World& w) { w.zprop.IsChildOf(w.zsession, World::Id("elsewhere"), false); }},
        {"CZebIProp::IsMAPITypeAcceptable", [](World& w) { w.zprop.IsMAPITypeAcceptable(MAPI_FOLDER); }},
        {"CZebIProp::IsValid", [](World& w) { w.zprop.IsValid(); }},
        {"CZebIProp::IsWAB", [](World& w) { w.zprop.IsWAB(); }},
        {"CZebIProp::OpenProperty", [](World& w) { w.zprop.OpenProperty(PR_BODY_A, MAPI_MODIFY); }},
        {"CZebIProp::PassWAB", [](World& w) { w.zprop.PassWAB(true, w.zprop); }},
        {"CZebIProp::Prop", [](World&) { OpenProp().Prop(); }},
        {"CZebIProp::SaveChanges", [](World& w) { w.zprop.SaveChanges(KEEP_OPEN_READWRITE); }},
        {"CZebIProp::SetDisplayName", [](World& w) { w.zprop.SetDisplayName("A name"); }},
        {"CZebIProp::SetDisplayNameA", [](World& w) { w.zprop.SetDisplayNameA("A name"); }},
        {"CZebIProp::SetDisplayNameW", [](World& w) { w.zprop.SetDisplayNameW(ZEBW("A name")); }},
        {"CZebIProp::SetProps", [](World& w) { w.zprop.SetProps(w.values, true, nullptr); }},
        {"CZebIProp::SetProps",
         [](World& w) { w.zprop.SetProps(w.values.GetCount(), w.values.operator SPropValue*(), nullptr); }},
        {"CZebIProp::SetWAB", [](World& w) { w.zprop.SetWAB(true); }},
        {"CZebIProp::SetWAB", [](World& w) { w.zprop.SetWAB(static_cast<CZebIProp&>(w.zuser)); }},
        {"CZebIProp::operator type", [](World& w) { w.zprop.operator CZebIProp*(); }},
        {"CZebIProp::operator type",
         [](World& w) { static_cast<const CZebIProp&>(w.zprop).operator const CZebIProp*(); }},
        {"CZebIProp::operator&", [](World& w) { &w.zprop; }},
        {"CZebIProp::operator=", &Assign<CZebIProp>},
        {"CZebIProp::operator=", [](World& w) { static_cast<CZebIProp&>(w.zprop) = CZebIProp(); }},

        {"CZebMessage::CZebMessage", &Copy<CZebMessage>},
        {"CZebMessage::CZebMessage", [](World&) { CZebMessage message; }},
        {"CZebMessage::GetInterfaceCIID", &Identify<CZebMessage>},
        {"CZebMessage::GetMAPIType", &Type<CZebMessage>},
        {"CZebMessage::GetMessageA", [](World& w) { w.zmessage.GetMessageA(); }},
        {"CZebMessage::GetMessageA", [](World&) { OpenMessage().GetMessageA(); }},
        {"CZebMessage::operator=", &Assign<CZebMessage>},
        {"CZebMessage::AddAttachment", [](World& w) { w.zmessage.AddAttachment(ZEBW("a.txt"), "bytes", 5); }},
        {"CZebMessage::AddAttachment", [](World& w) { w.zmessage.AddAttachment(ZEBW("a.txt"), &w.file); }},
        {"CZebMessage::AddRecipient",
         [](World& w) { w.zmessage.AddRecipient(MAPI_TO, ZEBW("Ada"), ZEBW("ada.lovelace@analytical.example.org")); }},
        {"CZebMessage::AddRecipients",
         [](World& w)
         {
             CZebPropValArray* const one[] = {std::addressof(w.values)};
             w.zmessage.AddRecipients(1, one);
         }},
        {"CZebMessage::SetReadFlag", [](World& w) { w.zmessage.SetReadFlag(0); }},
        {"CZebMessage::CreateAttachment", [](World& w) { w.zmessage.CreateAttachment(); }},
        {"CZebMessage::DeleteAttachment", [](World& w) { w.zmessage.DeleteAttachment(7); }},
        {"CZebMessage::GetAttachmentTable", [](World& w) { w.zmessage.GetAttachmentTable(); }},
        {"CZebMessage::GetAttachments",
         [](World& w)
         {
             CZebRowSet rows;
             w.zmessage.GetAttachments(rows);
         }},
        {"CZebMessage::GetRecipientTable", [](World& w) { w.zmessage.GetRecipientTable(); }},
        {"CZebMessage::GetRecipients",
         [](World& w)
         {
             CZebRowSet rows;
             w.zmessage.GetRecipients(rows);
         }},
        {"CZebMessage::OpenAttachment", [](World& w) { w.zmessage.OpenAttachment(7); }},
        {"CZebMessage::RemoveRecipient", [](World& w) { w.zmessage.RemoveRecipient(3); }},
        {"CZebAttachment::CZebAttachment", &Copy<CZebAttachment>},
        {"CZebAttachment::CZebAttachment", [](World&) { CZebAttachment attachment; }},
        {"CZebAttachment::CreateMessage",
         [](World& w)
         {
             w.attachment.m_property = &w.message;
             w.zattachment.CreateMessage();
         }},
        {"CZebAttachment::GetInterfaceCIID", &Identify<CZebAttachment>},
        {"CZebAttachment::GetMAPIType", &Type<CZebAttachment>},
        {"CZebAttachment::OpenMessage",
         [](World& w)
         {
             w.attachment.m_property = &w.message;
             w.zattachment.OpenMessage();
         }},
        {"CZebAttachment::SaveTo", [](World& w) { w.zattachment.SaveTo(&w.file); }},
        {"CZebAttachment::SetContent", [](World& w) { w.zattachment.SetContent("bytes", 5); }},
        {"CZebAttachment::SetContent", [](World& w) { w.zattachment.SetContent(&w.file); }},
        {"CZebAttachment::SetFileName", [](World& w) { w.zattachment.SetFileName(ZEBW("a longer name.txt")); }},
        {"CZebAttachment::operator=", &Assign<CZebAttachment>},
        {"CZebMailUser::CZebMailUser", &Copy<CZebMailUser>},
        {"CZebMailUser::CZebMailUser", [](World&) { CZebMailUser user; }},
        {"CZebMailUser::GetInterfaceCIID", &Identify<CZebMailUser>},
        {"CZebMailUser::GetMAPIType", &Type<CZebMailUser>},
        {"CZebMailUser::operator=", &Assign<CZebMailUser>},
        {"CZebPropObj::CZebPropObj", &Copy<CZebPropObj>},
        {"CZebPropObj::CZebPropObj", [](World&) { CZebPropObj object; }},
        {"CZebPropObj::IsMAPITypeAcceptable", [](World& w) { w.zobject.IsMAPITypeAcceptable(MAPI_FOLDER); }},
        {"CZebPropObj::operator=", &Assign<CZebPropObj>},
        {"CZebDistList::CZebDistList", &Copy<CZebDistList>},
        {"CZebDistList::CZebDistList", [](World&) { CZebDistList list; }},
        {"CZebDistList::GetDistList", [](World& w) { w.zlist.GetDistList(); }},
        {"CZebDistList::GetInterfaceCIID", &Identify<CZebDistList>},
        {"CZebDistList::GetMAPIType", &Type<CZebDistList>},
        {"CZebDistList::operator=", &Assign<CZebDistList>},
        {"CZebABContainer::CZebABContainer", &Copy<CZebABContainer>},
        {"CZebABContainer::CZebABContainer", [](World&) { CZebABContainer container; }},
        {"CZebABContainer::GetMAPIType", &Type<CZebABContainer>},
        {"CZebABContainer::operator=", &Assign<CZebABContainer>},
        {"CZebABItem::CZebABItem", &Copy<CZebABItem>},
        {"CZebABItem::CZebABItem", [](World&) { CZebABItem item; }},
        {"CZebABItem::GetInterfaceCIID", &Identify<CZebABItem>},
        {"CZebABItem::GetMAPIType", &Type<CZebABItem>},
        {"CZebABItem::IsMAPITypeAcceptable", [](World& w) { w.zitem.IsMAPITypeAcceptable(MAPI_MAILUSER); }},
        {"CZebABItem::operator type", [](World& w) { w.zitem.operator CZebDistList(); }},
        {"CZebABItem::operator type", [](World& w) { w.zitem.operator CZebMailUser(); }},
        {"CZebABItem::operator type", [](World& w) { w.zitem.operator CZebMessage(); }},
        {"CZebABItem::operator=", &Assign<CZebABItem>},
        {"CZebABItem::operator=", [](World& w) { w.zitem = static_cast<const CZebDistList&>(w.zlist); }},
        {"CZebABItem::operator=", [](World& w) { w.zitem = w.zuser; }},
        {"CZebABItem::operator=", [](World& w) { w.zitem = static_cast<const CZebMessage&>(w.zmessage); }},

        {"CZebContainer::CZebContainer", &Copy<CZebContainer>},
        {"CZebContainer::CZebContainer", [](World&) { CZebContainer container; }},
        {"CZebContainer::GetABItemDisplayNameTagForContainer",
         [](World& w) { w.zcontainer.GetABItemDisplayNameTagForContainer(true); }},
        {"CZebContainer::GetContainer", [](World& w) { w.zcontainer.GetContainer(); }},
        {"CZebContainer::GetContentsTable", [](World& w) { w.zcontainer.GetContentsTable(0); }},
        {"CZebContainer::GetHierarchyTable", [](World& w) { w.zcontainer.GetHierarchyTable(0); }},
        {"CZebContainer::GetInterfaceCIID", &Identify<CZebContainer>},
        {"CZebContainer::GetMAPIType", &Type<CZebContainer>},
        {"CZebContainer::IsExchange", [](World& w) { w.zcontainer.IsExchange(); }},
        {"CZebContainer::IsExchangeProviderID", [](World& w) { CZebContainer::IsExchangeProviderID(w.binary); }},
        {"CZebContainer::IsMobileContainer", [](World&) { CZebContainer::IsMobileContainer("Contacts (mobile), a longer name"); }},
        {"CZebContainer::OpenEntry",
         [](World& w)
         {
             CZebMessage target;
             w.zcontainer.OpenEntry(World::Id("one"), target, 0);
         }},
        {"CZebContainer::OpenEntry",
         [](World& w)
         {
             CZebFolder target;
             w.zcontainer.OpenEntry(World::Id("one"), target, 0);
         }},
        {"CZebContainer::operator type", [](World& w) { w.zcontainer.operator CZebContainer*(); }},
        {"CZebContainer::operator type",
         [](World& w) { static_cast<const CZebContainer&>(w.zcontainer).operator const CZebContainer*(); }},
        {"CZebContainer::operator=", &Assign<CZebContainer>},
        {"CZebContainer::operator=",
         [](World& w)
         {
             w.zcontainer.IsExchange();
             CZebContainer target;
             target = static_cast<const CZebContainer&>(w.zcontainer);
         }},

        {"CZebFolder::CZebFolder", &Copy<CZebFolder>},
        {"CZebFolder::CZebFolder", [](World&) { CZebFolder folder; }},
        {"CZebFolder::CopyMessage",
         [](World& w)
         {
             w.rest.isExpected = true;
             w.zfolder.CopyMessage(World::Id("one"), w.zchild, 0);
         }},
        {"CZebFolder::CopyMessages", [](World& w) { w.zfolder.CopyMessages(&w.ids, w.zchild, 0, nullptr, nullptr); }},
        {"CZebFolder::CreateFolder",
         [](World& w) { w.zfolder.CreateFolder("New", true, true, OPEN_IF_EXISTS, nullptr, FOLDER_GENERIC); }},
        {"CZebFolder::CreateFolder",
         [](World& w)
         {
             w.hierarchy.m_rows.clear();
             w.zfolder.CreateFolder("New", true, true, OPEN_IF_EXISTS, nullptr, FOLDER_GENERIC);
         }},
        {"CZebFolder::CopyFolder", [](World& w) { w.zfolder.CopyFolder(World::Id("one"), w.zchild, ZEBW("New")); }},
        {"CZebFolder::CreateFolderW", [](World& w) { w.zfolder.CreateFolderW(ZEBW("New")); }},
        {"CZebFolder::MoveFolder", [](World& w) { w.zfolder.MoveFolder(World::Id("one"), w.zchild); }},
        {"CZebFolder::CreateMessage", [](World& w) { w.zfolder.CreateMessage(0); }},
        {"CZebFolder::CreateMessage", [](World& w) { w.zfolder.CreateMessage(w.values, true, 0); }},
        {"CZebFolder::CreateQorInfoMessage", [](World& w) { w.zfolder.CreateQorInfoMessage(true, true); }},
        {"CZebFolder::CreateQorInfoMessage",
         [](World& w)
         {
             w.contents.m_rows.clear();
             w.zfolder.CreateQorInfoMessage(true, true);
         }},
        {"CZebFolder::DeleteFolder", [](World& w) { w.zfolder.DeleteFolder(World::Id("child"), nullptr, 0, nullptr); }},
        {"CZebFolder::DeleteMessage",
         [](World& w)
         {
             w.rest.isExpected = true;
             w.zfolder.DeleteMessage(World::Id("one"));
         }},
        {"CZebFolder::DeleteMessages", [](World& w) { w.zfolder.DeleteMessages(&w.ids, nullptr, 0, nullptr); }},
        {"CZebFolder::EmptyFolder", [](World& w) { w.zfolder.EmptyFolder(nullptr, 0, nullptr); }},
        {"CZebFolder::GetFolder", [](World& w) { w.zfolder.GetFolder(); }},
        {"CZebFolder::GetFolder", [](World&) { OpenFolder().GetFolder(); }},
        {"CZebFolder::GetFolderEntryIdByName", [](World& w) { w.zfolder.GetFolderEntryIdByName("QorInfo"); }},
        {"CZebFolder::GetFolderEntryIdByNameA", [](World& w) { w.zfolder.GetFolderEntryIdByNameA("Nobody"); }},
        {"CZebFolder::GetFolderEntryIdByNameW", [](World& w) { w.zfolder.GetFolderEntryIdByNameW(ZEBW("QorInfo")); }},
        {"CZebFolder::GetInterfaceCIID", &Identify<CZebFolder>},
        {"CZebFolder::GetMAPIType", &Type<CZebFolder>},
        {"CZebFolder::GetPropsOfChild",
         [](World& w)
         {
             CZebPropValArray values;
             w.zfolder.GetPropsOfChild(w.zsession, World::Id("one"), values, ULONG{1}, PR_SUBJECT_A);
         }},
        {"CZebFolder::GetPropsOfChild",
         [](World& w)
         {
             CZebPropValArray values;
             w.zfolder.GetPropsOfChild(w.zsession, World::Id("one"), w.tags, values);
         }},
        {"CZebFolder::MoveMessage",
         [](World& w)
         {
             w.rest.isExpected = true;
             w.zfolder.MoveMessage(World::Id("one"), w.zchild, 0);
         }},
        {"CZebFolder::MoveMessages", [](World& w) { w.zfolder.MoveMessages(&w.ids, w.zchild, 0, nullptr, nullptr); }},
        {"CZebFolder::OpenFolderByName", [](World& w) { w.zfolder.OpenFolderByName("QorInfo"); }},
        {"CZebFolder::OpenFolderByNameA", [](World& w) { w.zfolder.OpenFolderByNameA("QorInfo"); }},
        {"CZebFolder::OpenFolderByNameW", [](World& w) { w.zfolder.OpenFolderByNameW(ZEBW("QorInfo")); }},
        {"CZebFolder::OpenQorInfoMessage", [](World& w) { w.zfolder.OpenQorInfoMessage(); }},
        {"CZebFolder::operator=", &Assign<CZebFolder>},

        {"CZebMsgStore::CZebMsgStore", &Copy<CZebMsgStore>},
        {"CZebMsgStore::CZebMsgStore", [](World&) { CZebMsgStore store; }},
        {"CZebMsgStore::DeleteMessage",
         [](World& w)
         {
             w.rest.isExpected = true;
             w.zstore.DeleteMessage(World::Id("one"), false);
         }},
        {"CZebMsgStore::DeleteMessages", [](World& w) { w.zstore.DeleteMessages(&w.ids, true); }},
        {"CZebMsgStore::GetInterfaceCIID", &Identify<CZebMsgStore>},
        {"CZebMsgStore::GetMAPIType", &Type<CZebMsgStore>},
        {"CZebMsgStore::GetSpecialFolderEntryID",
         [](World& w) { w.zstore.GetSpecialFolderEntryID(PR_IPM_WASTEBASKET_ENTRYID); }},
        {"CZebMsgStore::GetStore", [](World& w) { w.zstore.GetStore(); }},
        {"CZebMsgStore::GetStore", [](World&) { OpenStore().GetStore(); }},
        {"CZebMsgStore::IsUnderDeleted", [](World& w) { w.zstore.IsUnderDeleted(w.zsession, w.zprop); }},
        {"CZebMsgStore::OpenContactsFolder", [](World& w) { w.zstore.OpenContactsFolder(0); }},
        {"CZebMsgStore::OpenEntry",
         [](World& w)
         {
             CZebMessage target;
             w.zstore.OpenEntry(World::Id("one"), target, 0);
         }},
        {"CZebMsgStore::OpenInboxFolder", [](World& w) { w.zstore.OpenInboxFolder(0); }},
        {"CZebMsgStore::OpenRootFolder", [](World& w) { w.zstore.OpenRootFolder(0); }},
        {"CZebMsgStore::OpenSpecialFolder",
         [](World& w) { w.zstore.OpenSpecialFolder(PR_IPM_WASTEBASKET_ENTRYID, 0); }},
        {"CZebMsgStore::operator=", &Assign<CZebMsgStore>},

        {"CZebAddressBook::CZebAddressBook", &Copy<CZebAddressBook>},
        {"CZebAddressBook::CZebAddressBook", [](World&) { CZebAddressBook book; }},
        {"CZebAddressBook::CompareEntryIDs", [](World& w) { w.zbook.CompareEntryIDs("00", "01"); }},
        {"CZebAddressBook::CompareEntryIDs", [](World& w) { w.zbook.CompareEntryIDs("no hexadecimal text", nullptr); }},
        {"CZebAddressBook::Free", [](World& w) { w.zbook.Free(); }},
        {"CZebAddressBook::GetAddrBook", [](World& w) { w.zbook.GetAddrBook(); }},
        {"CZebAddressBook::GetDefaultDirEntryID", [](World& w) { w.zbook.GetDefaultDirEntryID(); }},
        {"CZebAddressBook::GetInterfaceCIID", &Identify<CZebAddressBook>},
        {"CZebAddressBook::GetMAPIType", &Type<CZebAddressBook>},
        {"CZebAddressBook::OpenContainer", [](World& w) { w.zbook.OpenContainer(World::Id("container"), 0); }},
        {"CZebAddressBook::OpenEntry",
         [](World& w)
         {
             CZebABItem target;
             w.zbook.OpenEntry(World::Id("one"), target, 0);
         }},
        {"CZebAddressBook::OpenEntry",
         [](World& w)
         {
             w.zbook.SetSession(nullptr);
             CZebABItem target;
             w.zbook.OpenEntry(World::Id("one"), target, 0);
         }},
        {"CZebAddressBook::OpenMainContainer", [](World& w) { w.zbook.OpenMainContainer(nullptr); }},
        {"CZebAddressBook::OpenRootContainer", [](World& w) { w.zbook.OpenRootContainer(0); }},
        {"CZebAddressBook::SetSession", [](World& w) { w.zbook.SetSession(&w.session); }},
        {"CZebAddressBook::SetWABObject", [](World& w) { w.zbook.SetWABObject(&w.wab); }},
        {"CZebAddressBook::operator=", &Assign<CZebAddressBook>},

        {"CZebSession::CZebSession", [](World& w) { CZebSession session(&w.session); }},
        {"CZebSession::CZebSession", [](World& w) { CZebSession session(static_cast<const CZebSession&>(w.zsession)); }},
        {"CZebSession::CompareEntryIDs", [](World& w) { w.zsession.CompareEntryIDs(World::Id("one"), World::Id("two")); }},
        {"CZebSession::Free", [](World& w) { w.zsession.Free(); }},
        {"CZebSession::GetInterface", [](World& w) { w.zsession.GetInterface(); }},
        {"CZebSession::GetMsgStoresTable", [](World& w) { w.zsession.GetMsgStoresTable(); }},
        {"CZebSession::IsValid", [](World& w) { w.zsession.IsValid(); }},
        {"CZebSession::Logoff", [](World& w) { w.zsession.Logoff(0, 0, 0); }},
        {"CZebSession::OpenAddressBook", [](World& w) { w.zsession.OpenAddressBook(nullptr, 0); }},
        {"CZebSession::OpenDefaultMsgStore", [](World& w) { w.zsession.OpenDefaultMsgStore(nullptr, 0); }},
        {"CZebSession::OpenEntry",
         [](World& w)
         {
             CZebMessage target;
             w.zsession.OpenEntry(World::Id("one"), target, 0);
         }},
        {"CZebSession::OpenMsgStore", [](World& w) { w.zsession.OpenMsgStore(World::Id("store"), nullptr, 0); }},
        {"CZebSession::operator=",
         [](World& w)
         {
             CZebSession target;
             target = static_cast<const CZebSession&>(w.zsession);
         }},
        {"CZebSession::operator=", [](World& w) { static_cast<CZebSession&>(w.zsession) = CZebSession(); }},
        {"Zeb_IsClassSubclassOf",
         [](World&) { Zeb_IsClassSubclassOf("IPM.Note.Something.Longer.Than.A.Few", "IPM.Note.Something.Longer"); }},

        {"CZebProfAdmin::CZebProfAdmin", [](World& w) { CZebProfAdmin admin(&w.admin); }},
        {"CZebProfAdmin::CZebProfAdmin", [](World& w) { CZebProfAdmin admin(static_cast<const CZebProfAdmin&>(w.zadmin)); }},
        {"CZebProfAdmin::Close", [](World& w) { w.zadmin.Close(); }},
        {"CZebProfAdmin::Free", [](World& w) { w.zadmin.Free(); }},
        {"CZebProfAdmin::GetDefaultProfileName", [](World& w) { w.zadmin.GetDefaultProfileName(); }},
        {"CZebProfAdmin::GetInterface", [](World& w) { w.zadmin.GetInterface(); }},
        {"CZebProfAdmin::GetProfileTable", [](World& w) { w.zadmin.GetProfileTable(); }},
        {"CZebProfAdmin::IsValid", [](World& w) { w.zadmin.IsValid(); }},
        {"CZebProfAdmin::operator=",
         [](World& w)
         {
             CZebProfAdmin target;
             target = static_cast<const CZebProfAdmin&>(w.zadmin);
         }},

        {"CZebException::AddContext", [](World&) { WithException([](auto& e) { e.AddContext("a thing with a long name"); }); }},
        {"CZebException::CZebException", [](World&) { WithException([](auto&) {}); }},
        {"CZebException::Construct", [](World&) { ThrowIfFailed(MAPI_E_NOT_FOUND, "file", 1); }},
        {"CZebException::GetContext", [](World&) { WithException([](auto& e) { e.GetContext(); }); }},
        {"CZebException::GetErrorMessage",
         [](World&)
         {
             WithException(
                 [](auto& e)
                 {
                     char text[64];
                     e.GetErrorMessage(text, sizeof text, nullptr);
                 });
         }},
        {"CZebException::GetResult", [](World&) { WithException([](auto& e) { e.GetResult(); }); }},
        {"CZebException::GetRuntimeClass", [](World&) { WithException([](auto& e) { e.GetRuntimeClass(); }); }},
        {"CZebException::GetThisClass", [](World&) { CZebException::GetThisClass(); }},
        {"CZebException::Throw", [](World&) { CZebException::Throw(MAPI_E_NOT_FOUND, "file", 1); }},
        {"CZebException::ThrowWithError",
         [](World&) { CZebException::ThrowWithError(MAPI_E_NOT_FOUND, "the reason for it, at some length", "file", 1); }},
        {"Zeb_DescribeException", [](World&) { WithException([](auto& e) { Zeb_DescribeException(&e); }); }},
        {"Zeb_GetExceptionDescription", [](World&) { WithException([](auto& e) { Zeb_GetExceptionDescription(&e); }); }},
        {"Zeb_GetResultDescription", [](World&) { Zeb_GetResultDescription(MAPI_E_NOT_ENOUGH_MEMORY); }},

        {"Zeb_FreeProws",
         [](World& w)
         {
             SRowSet* rows = nullptr;
             {
                 const ProviderScope inside;
                 rows = NewRowSet(w.contents.m_rows);
             }
             Zeb_FreeProws(rows);
         }},
        {"Zeb_MemAllocate", [](World&) { Zeb_MemFree(Zeb_MemAllocate(9, nullptr)); }},
        {"Zeb_MemExFree",
         [](World&)
         {
             void* block = Zeb_MemAllocate(9, nullptr);
             Zeb_MemExFree(block);
         }},
        {"Zeb_MemFree", [](World&) { Zeb_MemFree(nullptr); }},
        {"Zeb_MemInitialize", [](World& w) { w.memory.Bind(); }},
        {"Zeb_MemInitialize",
         [](World& w)
         {
             Zeb_MemInitialize(&w.wab);
             Zeb_MemInitialize(nullptr);
         }},
        {"Zeb_MemReallocate", [](World&) { Zeb_MemFree(Zeb_MemReallocate(nullptr, 9, 0)); }},
        {"Zeb_MemUninitialize",
         [](World& w)
         {
             Zeb_MemUninitialize();
             w.memory.Bind();
         }},
        {"Zeb_PropCopyMore",
         [](World& w)
         {
             SPropValue copy = {};
             SPropValue* const values = w.values;
             Zeb_PropCopyMore(&copy, &values[2], values);
         }},
    };
    return calls;
}

} // namespace zeb::test
