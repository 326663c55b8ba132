// Folders of a message store.
#pragma once

#include "platform/overloads.h"
#include "zebapi/objects/Container.h"
#include "zebapi/objects/Message.h"

/// A folder of a message store.
///
/// Windows are parents of a provider's dialogs and may be null, as may the progress object. Threads: none of its own;
/// use one object from one thread at a time.
class ZEBAPI_EXPORT CZebFolder : public CZebContainer
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_FOLDER.
    ULONG GetMAPIType() override;

protected:
    /// The object's IMAPIFolder, always queried for.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IMAPIFolder> GetFolder();

public:
    /// Shares the object of other and takes its provider identifier. Never throws.
    virtual CZebFolder& operator=(const CZebFolder& other);
    /// IMAPIFolder::CreateFolder. With flags exactly OPEN_IF_EXISTS an existing subfolder of that name is returned
    /// unchanged, neither hidden nor saved.
    /// @param hidden      sets PR_ATTR_HIDDEN on the new folder
    /// @param save        saves the new folder
    /// @param folderType  FOLDER_GENERIC or FOLDER_SEARCH
    virtual CZebFolder CreateFolder(const char* name, bool hidden, bool save, ULONG flags, const char* comment,
                                    ULONG folderType);
    /// The entry identifier of the first direct subfolder with this display name.
    /// @throws CZebException* 1168 when there is none, MAPI_E_INVALID_PARAMETER for a null name
    virtual CZebBinary GetFolderEntryIdByNameA(const char* name);
    /// The same by a wide name.
    virtual CZebBinary GetFolderEntryIdByNameW(const WCHAR* name);
    /// As GetFolderEntryIdByNameA.
    virtual CZebBinary GetFolderEntryIdByName(const char* name);
    /// Opens the first direct subfolder with this display name, with the best access.
    /// @throws CZebException* 1168 when there is none
    virtual CZebFolder OpenFolderByNameA(const char* name);
    /// The same by a wide name.
    virtual CZebFolder OpenFolderByNameW(const WCHAR* name);
    /// As OpenFolderByNameA.
    virtual CZebFolder OpenFolderByName(const char* name);
    /// IMAPIFolder::DeleteFolder.
    virtual void DeleteFolder(const SBinary& entryID, HWND parent, ULONG flags, IMAPIProgress* progress);
    /// IMAPIFolder::DeleteMessages.
    virtual void DeleteMessages(SBinaryArray* list, HWND parent, ULONG flags, IMAPIProgress* progress);
    /// Deletes one message.
    virtual void DeleteMessage(const SBinary& entryID);
    /// IMAPIFolder::CopyMessages into dest.
    virtual void CopyMessages(SBinaryArray* list, CZebFolder& dest, ULONG flags, HWND parent, IMAPIProgress* progress);
    /// Copies one message into dest.
    virtual void CopyMessage(const SBinary& entryID, CZebFolder& dest, ULONG flags);
    /// CopyMessages with MESSAGE_MOVE.
    virtual void MoveMessages(SBinaryArray* list, CZebFolder& dest, ULONG flags, HWND parent, IMAPIProgress* progress);
    /// CopyMessage with MESSAGE_MOVE.
    virtual void MoveMessage(const SBinary& entryID, CZebFolder& dest, ULONG flags);
    /// IMAPIFolder::EmptyFolder.
    virtual void EmptyFolder(HWND parent, ULONG flags, IMAPIProgress* progress);
    ZEB_OVERLOADS(
        /// Creates a message with these properties, up to the first free entry.
        /// @param save  saves the message when anything was written, and this folder in any case
        virtual CZebMessage CreateMessage(CZebPropValArray& props, bool save, ULONG flags),
        /// IMAPIFolder::CreateMessage.
        virtual CZebMessage CreateMessage(ULONG flags));
    /// Creates the library's information message in this folder.
    /// @param openExisting  return the existing one, if any; a failure to open it is logged
    /// @param save          saves the new message
    virtual CZebMessage CreateQorInfoMessage(bool openExisting, bool save);
    /// Opens the library's information message of this folder, with the best access.
    /// @throws CZebException* 1168 when there is none
    virtual CZebMessage OpenQorInfoMessage();
    ZEB_OVERLOADS(
        /// Reads exactly n properties of a direct child, given as n tags (ULONG each). See the other form.
        virtual void GetPropsOfChild(CZebSession& session, const SBinary& childID, CZebPropValArray& result,
                                     ULONG n, ...),
        /// Reads properties of a direct child of this folder.
        /// @throws CZebException* MAPI_E_NOT_FOUND when the object is in another folder; result still contains its
        /// properties
        virtual void GetPropsOfChild(CZebSession& session, const SBinary& childID, SPropTagArray* tags,
                                     CZebPropValArray& result));

    /// Adds a reference on prop, which may be null.
    explicit CZebFolder(IMAPIProp* prop = nullptr);
    /// Shares the object of other and takes its provider identifier.
    CZebFolder(const CZebFolder& other);
    /// Creates a subfolder by a wide name. (IMAPIFolder::CreateFolder with MAPI_UNICODE)
    /// @param comment     may be null
    /// @param flags       OPEN_IF_EXISTS opens a subfolder of that name
    /// @param folderType  FOLDER_GENERIC or FOLDER_SEARCH
    /// @throws CZebException* also MAPI_E_COLLISION when there is a subfolder of that name
    CZebFolder CreateFolderW(const WCHAR* name, const WCHAR* comment = nullptr, ULONG flags = 0,
                             ULONG folderType = FOLDER_GENERIC);
    /// Copies a direct subfolder into dest, with its subfolders. (IMAPIFolder::CopyFolder)
    /// @param newName  of the copy; null or empty: the folder's own
    /// @param flags    COPY_SUBFOLDERS, or 0 for the folder with its messages alone
    void CopyFolder(const SBinary& entryID, CZebFolder& dest, const WCHAR* newName = nullptr,
                    ULONG flags = COPY_SUBFOLDERS);
    /// Moves a direct subfolder into dest. (IMAPIFolder::CopyFolder with FOLDER_MOVE)
    /// @param newName  null or empty: the folder keeps its name
    void MoveFolder(const SBinary& entryID, CZebFolder& dest, const WCHAR* newName = nullptr);
};
