// The address book, its containers and its entries.
#pragma once

#include "platform/overloads.h"
#include "zebapi/objects/Container.h"
#include "zebapi/objects/Message.h"

/// A container of the address book.
class ZEBAPI_EXPORT CZebABContainer : public CZebContainer
{
public:
    /// MAPI_ABCONT.
    ULONG GetMAPIType() override;

    /// Adds a reference on prop, which may be null.
    explicit CZebABContainer(IMAPIProp* prop = nullptr);
    /// Shares the object of other.
    CZebABContainer(const CZebABContainer& other);
    /// Shares the object of other. Never throws.
    CZebABContainer& operator=(const CZebABContainer& other);
};

/// An entry of an address book container: a mail user, a distribution list or a message.
///
/// Converts into the wrapper of its kind, which then shares the object; the kind is not checked, and the WAB
/// marking is not carried over.
class ZEBAPI_EXPORT CZebABItem : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// 0.
    ULONG GetMAPIType() override;
    /// MAPI_MESSAGE, MAPI_MAILUSER and MAPI_DISTLIST are accepted.
    bool IsMAPITypeAcceptable(unsigned int type) override;
    ZEB_OVERLOADS(
        /// Shares the object of other. Never throws.
        virtual CZebABItem& operator=(const CZebABItem& other),
        /// Shares the object of other. Never throws.
        virtual CZebABItem& operator=(const CZebDistList& other),
        /// Shares the object of other. Never throws.
        virtual CZebABItem& operator=(const CZebMailUser& other),
        /// Shares the object of other. Never throws.
        virtual CZebABItem& operator=(const CZebMessage& other));
    /// The entry as a distribution list; shares the object.
    virtual operator CZebDistList() const;
    /// The entry as a mail user; shares the object.
    virtual operator CZebMailUser() const;
    /// The entry as a message; shares the object.
    virtual operator CZebMessage() const;

    /// Adds a reference on prop, which may be null.
    explicit CZebABItem(IMAPIProp* prop = nullptr);
    /// Shares the object of other.
    CZebABItem(const CZebABItem& other);
};

/// The address book of a session, or the Windows Address Book.
///
/// In addition it holds references to the session that opened it and to its WAB object; copies share both. Threads:
/// none of its own; use one object from one thread at a time.
class ZEBAPI_EXPORT CZebAddressBook : public CZebIProp
{
    friend class CZebAPI;
    friend class CZebSession;

public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_ADDRBOOK.
    ULONG GetMAPIType() override;
    /// Releases both extra references, then what CZebIProp::Free does. Never throws.
    void Free() override;

protected:
    /// The object's IAddrBook.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IAddrBook> GetAddrBook();

public:
    /// Shares the object of other and both extra references. Never throws.
    virtual CZebAddressBook& operator=(const CZebAddressBook& other);
    /// Opens the root container, by IAddrBook::OpenEntry of an identifier without bytes.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the root is no address book container
    virtual CZebABContainer OpenRootContainer(ULONG flags);
    /// Opens a container. The identifier of an address book entry for a contacts folder opens that folder, through the
    /// session.
    /// @throws CZebException* MAPI_E_INVALID_ENTRYID when such an identifier names no folder
    virtual CZebContainer OpenContainer(const SBinary& entryID, ULONG flags);
    /// Opens any entry: through the session when there is one and this is not the Windows Address Book, else by
    /// IAddrBook::OpenEntry; only the latter gives the target this object's WAB marking.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the target does not accept the object's type; the
    /// target is
    ///         empty then
    virtual void OpenEntry(const SBinary& entryID, CZebIProp& target, ULONG flags);
    /// IAddrBook::GetDefaultDir.
    virtual CZebBinary GetDefaultDirEntryID();
    /// Opens a container by its identifier in hexadecimal text, with the best access; null or empty text
    /// means the default directory.
    virtual CZebContainer OpenMainContainer(const char* entryIDHex);
    /// Whether two identifiers in hexadecimal text name one object: in the Windows Address Book when the
    /// texts are equal in any letter case, else by IMAPISession::CompareEntryIDs. Null counts as empty.
    /// @throws _com_error E_POINTER without a session
    virtual bool CompareEntryIDs(const char* entryIDHex1, const char* entryIDHex2);

    /// Adds a reference on prop, which may be null.
    explicit CZebAddressBook(IMAPIProp* prop = nullptr);
    /// Shares the object of other, its session and its WAB object.
    CZebAddressBook(const CZebAddressBook& other);
    ~CZebAddressBook() override;

protected:
    /// Keeps a reference on the WAB object that this address book came from; null drops it.
    void SetWABObject(IUnknown* wabObject);
    /// Keeps a reference on the session that opened this address book; null drops it.
    void SetSession(IMAPISession* session);

private:
    zeb::CComPtr<IUnknown> m_wabObject;
    zeb::CComPtr<IMAPISession> m_session;
};
