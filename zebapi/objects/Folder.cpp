#include "zebapi/objects/Folder.h"

#include "platform/tags.h"
#include "zebapi/frame/Exception.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/objects/internal/OpenEntry.h"
#include "zebapi/objects/internal/SaveFlags.h"
#include "zebapi/session/SESSION.h"
#include "zebapi/tables/Restrict.h"
#include "zebapi/tables/RowSet.h"
#include "zebapi/values/BinArray.h"
#include "zebapi/values/PROPVALArray.h"
#include "zebapi/values/TAGS.h"
#include "zebapi/values/internal/Received.h"

#include <cstdarg>
#include <cstring>
#include <iterator>

namespace
{

// Windows' code for "element not found": positive, so no check throws it.
constexpr LONG ElementNotFound = 1168;
const char InfoSubject[] = "QorInfo";
const char InfoClass[] = "IPM.Note.QorInfo";

/// The entry identifier of the first row whose text property equals `text`; the table keeps columns and restriction.
/// @throws CZebException* 1168 when there is none
template <class Char>
CZebBinary FindByString(CZebTable table, ULONG tag, const Char* text, const char* operation = ZEB_CALLER)
{
    table.SetColumns(2, PR_ENTRYID, tag);
    CZebRestrictionAllocator filter;
    filter.Allocate();
    filter.CreateProp(tag, RELOP_EQ) = text;
    table.Restrict(filter, 0);
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    if (!rows.IsValid())
    {
        zeb::ThrowAbout([text] { return zeb::NameText(text); }, ElementNotFound, __FILE__, __LINE__, operation);
    }
    return CZebBinary(zeb::Received(rows[0][PR_ENTRYID]));
}

/// A wide text for a call with MAPI_UNICODE: MAPI declares it narrow, and without const.
LPTSTR WideArgument(const WCHAR* text)
{
    return reinterpret_cast<LPTSTR>(const_cast<WCHAR*>(text));
}

/// The context text of a call on a list of messages.
auto CountOf(const SBinaryArray* list)
{
    return [list] { return zeb::CountText(list != nullptr ? list->cValues : 0, "message"); };
}

SPropValue Text(ULONG tag, const char* text)
{
    SPropValue value = {};
    value.ulPropTag = tag;
    value.Value.lpszA = const_cast<char*>(text);
    return value;
}

} // namespace

CZebFolder::CZebFolder(IMAPIProp* prop)
    : CZebContainer(prop)
{
}

CZebFolder::CZebFolder(const CZebFolder& other)
    : CZebContainer(nullptr)
{
    CZebFolder::operator=(other);
}

const GUID* CZebFolder::GetInterfaceCIID()
{
    return &IID_IMAPIFolder;
}

ULONG CZebFolder::GetMAPIType()
{
    return MAPI_FOLDER;
}

CComPtr<IMAPIFolder> CZebFolder::GetFolder()
{
    return QueryFor<IMAPIFolder>(IID_IMAPIFolder);
}

CZebFolder& CZebFolder::operator=(const CZebFolder& other)
{
    CZebContainer::operator=(other);
    return *this;
}

CZebFolder CZebFolder::CreateFolder(const char* name, bool hidden, bool save, ULONG flags, const char* comment,
                                    ULONG folderType)
{
    CZebFolder result;
    if (flags == OPEN_IF_EXISTS && zeb::Guarded([&] { result = OpenFolderByNameA(name); }))
    {
        return result;
    }
    CComPtr<IMAPIFolder> folder = GetFolder();
    CComPtr<IMAPIFolder> created;
    zeb::AboutName(name, [&]
    {
        ThrowIfFailed(folder->CreateFolder(folderType, const_cast<char*>(name), const_cast<char*>(comment),
                                           &IID_IMAPIFolder, flags, created.Put()),
                      folder, __FILE__, __LINE__, "CreateFolder");
    });
    zeb::RequireObject(static_cast<bool>(created));
    result = CZebFolder(created.Get());
    if (hidden)
    {
        CZebPropValArray values(1);
        values[PR_ATTR_HIDDEN] = true;
        result.SetProps(values, false, nullptr);
    }
    if (save)
    {
        result.SaveChanges(SaveFlags);
    }
    return result;
}

CZebBinary CZebFolder::GetFolderEntryIdByNameA(const char* name)
{
    return FindByString(GetHierarchyTable(MAPI_DEFERRED_ERRORS), PR_DISPLAY_NAME_A, name);
}

CZebBinary CZebFolder::GetFolderEntryIdByNameW(const WCHAR* name)
{
    return FindByString(GetHierarchyTable(MAPI_DEFERRED_ERRORS), PR_DISPLAY_NAME_W, name);
}

CZebBinary CZebFolder::GetFolderEntryIdByName(const char* name)
{
    return GetFolderEntryIdByNameA(name);
}

CZebFolder CZebFolder::OpenFolderByNameA(const char* name)
{
    CZebFolder folder;
    OpenEntry(GetFolderEntryIdByNameA(name), folder, MAPI_BEST_ACCESS);
    return folder;
}

CZebFolder CZebFolder::OpenFolderByNameW(const WCHAR* name)
{
    CZebFolder folder;
    OpenEntry(GetFolderEntryIdByNameW(name), folder, MAPI_BEST_ACCESS);
    return folder;
}

CZebFolder CZebFolder::OpenFolderByName(const char* name)
{
    return OpenFolderByNameA(name);
}

CZebFolder CZebFolder::CreateFolderW(const WCHAR* name, const WCHAR* comment, ULONG flags, ULONG folderType)
{
    CComPtr<IMAPIFolder> folder = GetFolder();
    CComPtr<IMAPIFolder> created;
    zeb::ThrowIfFailedAbout([name] { return zeb::NameText(name); },
                            folder->CreateFolder(folderType, WideArgument(name), WideArgument(comment),
                                                 &IID_IMAPIFolder, flags | MAPI_UNICODE, created.Put()),
                            folder);
    zeb::RequireObject(static_cast<bool>(created));
    return CZebFolder(created.Get());
}

void CZebFolder::CopyFolder(const SBinary& entryID, CZebFolder& dest, const WCHAR* newName, ULONG flags)
{
    CComPtr<IMAPIFolder> folder = GetFolder();
    CComPtr<IMAPIFolder> target = dest.GetFolder();
    const WCHAR* const name = newName != nullptr && *newName != 0 ? newName : nullptr;
    zeb::ThrowIfFailedAbout([&] { return zeb::EntryText(entryID); },
                            folder->CopyFolder(entryID.cb, zeb::EntryID(entryID), dest.GetInterfaceCIID(),
                                               target.Checked(), WideArgument(name), 0, nullptr, flags | MAPI_UNICODE),
                            folder);
}

void CZebFolder::MoveFolder(const SBinary& entryID, CZebFolder& dest, const WCHAR* newName)
{
    CopyFolder(entryID, dest, newName, FOLDER_MOVE);
}

void CZebFolder::DeleteFolder(const SBinary& entryID, HWND parent, ULONG flags, IMAPIProgress* progress)
{
    CComPtr<IMAPIFolder> folder = GetFolder();
    zeb::ThrowIfFailedAbout(
        [&] { return zeb::EntryText(entryID); },
        folder->DeleteFolder(entryID.cb, zeb::EntryID(entryID), zeb::UIParam(parent), progress, flags), folder);
}

void CZebFolder::DeleteMessages(SBinaryArray* list, HWND parent, ULONG flags, IMAPIProgress* progress)
{
    CComPtr<IMAPIFolder> folder = GetFolder();
    zeb::ThrowIfFailedAbout(CountOf(list), folder->DeleteMessages(list, zeb::UIParam(parent), progress, flags), folder);
}

void CZebFolder::DeleteMessage(const SBinary& entryID)
{
    CZebBinArray list(entryID);
    DeleteMessages(list, nullptr, 0, nullptr);
}

void CZebFolder::CopyMessages(SBinaryArray* list, CZebFolder& dest, ULONG flags, HWND parent, IMAPIProgress* progress)
{
    CComPtr<IMAPIFolder> folder = GetFolder();
    CComPtr<IMAPIFolder> target = dest.GetFolder();
    zeb::ThrowIfFailedAbout(
        CountOf(list),
        folder->CopyMessages(list, dest.GetInterfaceCIID(), target.Checked(), zeb::UIParam(parent), progress, flags),
        folder);
}

void CZebFolder::CopyMessage(const SBinary& entryID, CZebFolder& dest, ULONG flags)
{
    CZebBinArray list(entryID);
    CopyMessages(list, dest, flags, nullptr, nullptr);
}

void CZebFolder::MoveMessages(SBinaryArray* list, CZebFolder& dest, ULONG flags, HWND parent, IMAPIProgress* progress)
{
    CopyMessages(list, dest, flags | MESSAGE_MOVE, parent, progress);
}

void CZebFolder::MoveMessage(const SBinary& entryID, CZebFolder& dest, ULONG flags)
{
    CopyMessage(entryID, dest, flags | MESSAGE_MOVE);
}

void CZebFolder::EmptyFolder(HWND parent, ULONG flags, IMAPIProgress* progress)
{
    CComPtr<IMAPIFolder> folder = GetFolder();
    ThrowIfFailed(folder->EmptyFolder(zeb::UIParam(parent), progress, flags), folder);
}

CZebMessage CZebFolder::CreateMessage(CZebPropValArray& props, bool save, ULONG flags)
{
    CZebMessage message = CreateMessage(flags);
    message.SetProps(props, save, nullptr);
    if (save)
    {
        SaveChanges(SaveFlags);
    }
    return message;
}

CZebMessage CZebFolder::CreateMessage(ULONG flags)
{
    CComPtr<IMAPIFolder> folder = GetFolder();
    CComPtr<IMessage> message;
    ThrowIfFailed(folder->CreateMessage(nullptr, flags, message.Put()), folder);
    zeb::RequireObject(static_cast<bool>(message));
    return CZebMessage(message.Get());
}

CZebMessage CZebFolder::CreateQorInfoMessage(bool openExisting, bool save)
{
    CZebMessage message;
    if (openExisting && zeb::Guarded([&] { message = OpenQorInfoMessage(); }))
    {
        return message;
    }
    message = CreateMessage(0);
    SPropValue values[] = {Text(PR_SUBJECT_A, InfoSubject), Text(PR_DISPLAY_NAME_A, InfoSubject),
                           Text(PR_MESSAGE_CLASS_A, InfoClass)};
    message.SetProps(static_cast<ULONG>(std::size(values)), values, nullptr);
    if (save)
    {
        message.SaveChanges(SaveFlags);
    }
    return message;
}

CZebMessage CZebFolder::OpenQorInfoMessage()
{
    const CZebBinary entryID = FindByString(GetContentsTable(MAPI_DEFERRED_ERRORS), PR_SUBJECT_A, InfoSubject);
    CZebMessage message;
    OpenEntry(entryID, message, MAPI_BEST_ACCESS);
    return message;
}

void CZebFolder::GetPropsOfChild(CZebSession& session, const SBinary& childID, CZebPropValArray& result, ULONG n, ...)
{
    CZebPropTagArray tags;
    tags.Reserve(n);
    va_list args;
    va_start(args, n);
    tags.Fill(n, args);
    va_end(args);
    GetPropsOfChild(session, childID, static_cast<SPropTagArray*>(tags), result);
}

void CZebFolder::GetPropsOfChild(CZebSession& session, const SBinary& childID, SPropTagArray* tags,
                                 CZebPropValArray& result)
{
    CZebPropObj child;
    OpenEntry(childID, child, MAPI_BEST_ACCESS);
    child.GetProps(tags, result.CountPtr(), &result, 0);
    if (!child.IsChildOf(session, GetEntryID(), true))
    {
        CZebException::Throw(MAPI_E_NOT_FOUND);
    }
}
