// Sessions.
#pragma once

#include "framework/CString.h"
#include "framework/ComPtr.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "zebapi/objects/AddressBook.h"
#include "zebapi/objects/IProp.h"
#include "zebapi/objects/MsgStore.h"
#include "zebapi/tables/Table.h"

/// One logged-on session: stores, the address book, and any object by entry identifier.
///
/// Holds one counted reference on an IMAPISession (none: the session is empty); copies share the session. A
/// failing MAPI result is thrown as CZebException* with the session's extended error; using an empty session
/// raises _com_error with E_POINTER. Windows are parents of a provider's dialogs and may be null. Threads: none of its
/// own; use one object from one thread at a time.
class ZEBAPI_EXPORT CZebSession
{
protected:
    /// Releases the reference. Never throws.
    virtual void Free();

public:
    virtual ~CZebSession();
    /// Shares the session of other, which is queried for IMAPISession. Never throws: an empty other leaves this one
    /// empty, with one logged exception line.
    virtual CZebSession& operator=(const CZebSession& other);
    /// Whether a session is held.
    virtual bool IsValid() const;
    /// IMAPISession::Logoff, then always releases the session. Never throws: a failure is logged.
    virtual void Logoff(ULONG uiParam, ULONG flags, ULONG reserved);
    /// IMAPISession::GetMsgStoresTable.
    virtual CZebTable GetMsgStoresTable();
    /// Opens an object by IMAPISession::OpenEntry, asking for the target's interface.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the target does not accept the object's type; the
    /// target is
    ///         empty then
    virtual void OpenEntry(const SBinary& entryId, CZebIProp& target, ULONG flags);
    /// IMAPISession::OpenMsgStore.
    virtual CZebMsgStore OpenMsgStore(const SBinary& entryId, HWND parent, ULONG flags);
    /// IMAPISession::OpenAddressBook. The address book keeps a reference on this session.
    virtual CZebAddressBook OpenAddressBook(HWND parent, ULONG flags);
    /// Opens the first store of the stores table whose PR_DEFAULT_STORE is set.
    /// @throws CZebException* MAPI_E_NOT_FOUND when the profile has none
    virtual CZebMsgStore OpenDefaultMsgStore(HWND parent, ULONG flags);
    /// Whether two entry identifiers name one object, by IMAPISession::CompareEntryIDs.
    virtual bool CompareEntryIDs(const SBinary& a, const SBinary& b);

    /// Adds a reference on session, which may be null.
    explicit CZebSession(IMAPISession* session = nullptr);
    /// Shares the session of other, or is empty like it.
    CZebSession(const CZebSession& other);
    /// A separate reference to the session; empty when this object is.
    zeb::CComPtr<IMAPISession> GetInterface() const;

private:
    zeb::CComPtr<IMAPISession> m_session;
};

/// Whether messageClass begins with baseClass, in any letter case ("IPM.Note", "IPM.Note.Private" and
/// "IPM.NoteX" all begin with "IPM.Note"); false for a null baseClass.
ZEBAPI_EXPORT bool Zeb_IsClassSubclassOf(const zeb::CString& messageClass, const char* baseClass);
