// Messages, mail users, distribution lists and plain property objects.
#pragma once

#include "zebapi/objects/Container.h"

class CZebAttachment;

/// A message, with its recipients and attachments.
///
/// What is changed of them, by any of the operations below, is in the store once the message is saved (SaveChanges).
class ZEBAPI_EXPORT CZebMessage : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_MESSAGE.
    ULONG GetMAPIType() override;

protected:
    /// The object's IMessage.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IMessage> GetMessageA();

public:
    /// Shares the object of other. Never throws.
    virtual CZebMessage& operator=(const CZebMessage& other);

    /// Adds a reference on prop, which may be null.
    explicit CZebMessage(IMAPIProp* prop = nullptr);
    /// Shares the object of other.
    CZebMessage(const CZebMessage& other);

    /// The table of recipients, one row each. (IMessage::GetRecipientTable)
    /// @param flags  MAPI_UNICODE, or 0 for a provider that has 8-bit text only (MAPI_E_BAD_CHARWIDTH)
    CZebTable GetRecipientTable(ULONG flags = MAPI_UNICODE);
    /// Reads all recipients into rows: PR_ROWID, which RemoveRecipient takes, PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W,
    /// PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_ENTRYID. A recipient without one of them has PT_ERROR there.
    void GetRecipients(CZebRowSet& rows);
    /// Adds a recipient. One with an address is resolved: it gets a one-off entry identifier and a search key. One
    /// without is left to be resolved against the address book. (IMessage::ModifyRecipients with MODRECIP_ADD)
    /// @param type         MAPI_TO, MAPI_CC or MAPI_BCC
    /// @param name         the display name; null or empty: the address
    /// @param address      may be null or empty
    /// @param addressType  of the address, "SMTP" or another
    /// @throws CZebException* also MAPI_E_INVALID_PARAMETER without name and address, or without the address's type
    void AddRecipient(ULONG type, const WCHAR* name, const WCHAR* address, const WCHAR* addressType = ZEBW("SMTP"));
    /// Adds recipients with all their properties, in one call. (IMessage::ModifyRecipients with MODRECIP_ADD)
    /// @param recipients  `count` pointers, none of them null; up to the first free entry of each array
    void AddRecipients(ULONG count, CZebPropValArray* const* recipients);
    /// Removes the recipient with this PR_ROWID. (IMessage::ModifyRecipients with MODRECIP_REMOVE)
    void RemoveRecipient(ULONG rowID);

    /// The table of attachments, one row each. (IMessage::GetAttachmentTable)
    /// @param flags  as for GetRecipientTable
    CZebTable GetAttachmentTable(ULONG flags = MAPI_UNICODE);
    /// Reads a row for each attachment: PR_ATTACH_NUM, which OpenAttachment and DeleteAttachment take,
    /// PR_ATTACH_METHOD, PR_ATTACH_SIZE, PR_ATTACH_LONG_FILENAME_W, PR_ATTACH_FILENAME_W, PR_DISPLAY_NAME_W.
    void GetAttachments(CZebRowSet& rows);
    /// Opens an attachment by its PR_ATTACH_NUM. (IMessage::OpenAttach)
    /// @param flags  MAPI_BEST_ACCESS, MAPI_MODIFY, or 0 for reading only
    CZebAttachment OpenAttachment(ULONG number, ULONG flags = MAPI_BEST_ACCESS);
    /// Creates an attachment, which is the message's once it is saved itself. (IMessage::CreateAttach)
    /// @param number  receives its PR_ATTACH_NUM; may be null
    CZebAttachment CreateAttachment(ULONG* number = nullptr);
    /// Adds and saves a file's content as an attachment. When it throws, none is added.
    /// @param fileName  the name that users see, with its extension; not null or empty
    /// @param bytes     may be null when size is 0
    /// @return its PR_ATTACH_NUM
    /// @throws CZebException* also MAPI_E_INVALID_PARAMETER without a name or bytes
    ULONG AddAttachment(const WCHAR* fileName, const void* bytes, ULONG size);
    /// The same with what content gives from its position to its end.
    ULONG AddAttachment(const WCHAR* fileName, IStream* content);
    /// Deletes an attachment by its PR_ATTACH_NUM. (IMessage::DeleteAttach)
    void DeleteAttachment(ULONG number);

    /// Marks the message as read or unread, at once. (IMessage::SetReadFlag)
    /// @param flags  0 marks it as read, CLEAR_READ_FLAG as unread; SUPPRESS_RECEIPT sends no receipt
    void SetReadFlag(ULONG flags);
};

/// An attachment of a message: a file, or another message. CZebMessage opens and creates it.
///
/// It lives on its own: what is changed is the message's once the attachment is saved, and the store's once the message
/// is saved too.
class ZEBAPI_EXPORT CZebAttachment : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_ATTACH.
    ULONG GetMAPIType() override;

    /// Adds a reference on prop, which may be null.
    explicit CZebAttachment(IMAPIProp* prop = nullptr);
    /// Shares the object of other.
    CZebAttachment(const CZebAttachment& other);
    /// Shares the object of other. Never throws.
    CZebAttachment& operator=(const CZebAttachment& other);

    /// Makes the attachment a file of this name (PR_ATTACH_METHOD ATTACH_BY_VALUE); its content is written apart.
    /// @throws CZebException* also MAPI_E_INVALID_PARAMETER for a name that is null or empty
    void SetFileName(const WCHAR* fileName);
    /// Writes the content of a file, in place of what was there (PR_ATTACH_DATA_BIN, through a stream).
    /// @throws CZebException* also MAPI_E_INVALID_PARAMETER for null bytes with a size
    void SetContent(const void* bytes, ULONG size);
    /// The same with what content gives from its position to its end.
    /// @throws CZebException* also MAPI_E_INVALID_PARAMETER for null
    void SetContent(IStream* content);
    /// Writes the content of a file to target, from its position on; target is not committed.
    /// @throws CZebException* also MAPI_E_NOT_FOUND when it has none (an embedded message), MAPI_E_INVALID_PARAMETER for null
    void SaveTo(IStream* target);
    /// Opens the message that is embedded (PR_ATTACH_DATA_OBJ, by IMAPIProp::OpenProperty).
    /// @param flags  MAPI_MODIFY, or 0 for reading only; MAPI_CREATE | MAPI_MODIFY makes an empty message of an
    ///               attachment whose other properties the host sets itself
    CZebMessage OpenMessage(ULONG flags = 0);
    /// Makes the attachment an embedded message, empty (PR_ATTACH_METHOD ATTACH_EMBEDDED_MSG). Save that message first,
    /// then the attachment, then the message around it.
    CZebMessage CreateMessage();
};

/// A mail user. Opened as IMAPIProp; only the object's type is checked.
class ZEBAPI_EXPORT CZebMailUser : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_MAILUSER.
    ULONG GetMAPIType() override;
    /// Shares the object of other. Never throws.
    virtual CZebMailUser& operator=(const CZebMailUser& other);

    /// Adds a reference on prop, which may be null.
    explicit CZebMailUser(IMAPIProp* prop = nullptr);
    /// Shares the object of other.
    CZebMailUser(const CZebMailUser& other);
};

/// A distribution list.
class ZEBAPI_EXPORT CZebDistList : public CZebContainer
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_DISTLIST.
    ULONG GetMAPIType() override;

protected:
    /// The object's IDistList.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IDistList> GetDistList();

public:
    /// Shares the object of other. The cached result of IsExchange stays. Never throws.
    virtual CZebDistList& operator=(const CZebDistList& other);

    /// Adds a reference on prop, which may be null.
    explicit CZebDistList(IMAPIProp* prop = nullptr);
    /// Shares the object of other; IsExchange is not cached yet.
    CZebDistList(const CZebDistList& other);
};

/// Any object, to read its properties: every type from MAPI_STORE to MAPI_DISTLIST is accepted.
class ZEBAPI_EXPORT CZebPropObj : public CZebIProp
{
public:
    bool IsMAPITypeAcceptable(unsigned int type) override;

    /// Adds a reference on prop, which may be null.
    explicit CZebPropObj(IMAPIProp* prop = nullptr);
    /// Shares the object of other.
    CZebPropObj(const CZebPropObj& other);
    /// Shares the object of other. Never throws.
    CZebPropObj& operator=(const CZebPropObj& other);
};
