#include "zebapi/objects/AddressBook.h"

#include "qorth/TimeProfile.h"
#include "zebapi/entryid/EntryIDInfo.h"
#include "zebapi/frame/Exception.h"
#include "zebapi/objects/internal/OpenEntry.h"
#include "zebapi/session/SESSION.h"

namespace
{

// A contact identifier of this type names a contacts folder of a message store and wraps that folder's own identifier.
constexpr ULONG ContactFolder = 3;

/// Whether the identifier is an address book entry for a contacts folder.
bool IsContactsFolder(const zeb::CEntryIDInfo& info)
{
    return info.Type() == zeb::eidtContact && info.Contact() != nullptr && info.Contact()->Type() == ContactFolder;
}

CZebBinary WrappedFolder(const zeb::CEntryIDInfo& info)
{
    CZebBinary wrapped;
    if (info.Contact()->Wrapped() != nullptr)
    {
        wrapped.String(info.WrappedString());
    }
    if (!wrapped.IsValid() || wrapped.IsEmpty())
    {
        // An identifier without bytes would open the root instead.
        CZebException::Throw(MAPI_E_INVALID_ENTRYID);
    }
    return wrapped;
}

const char* OrEmpty(const char* text)
{
    return text != nullptr ? text : "";
}

} // namespace

CZebABContainer::CZebABContainer(IMAPIProp* prop)
    : CZebContainer(prop)
{
}

CZebABContainer::CZebABContainer(const CZebABContainer& other) = default;

CZebABContainer& CZebABContainer::operator=(const CZebABContainer& other) = default;

ULONG CZebABContainer::GetMAPIType()
{
    return MAPI_ABCONT;
}

CZebABItem::CZebABItem(IMAPIProp* prop)
    : CZebIProp(prop)
{
}

CZebABItem::CZebABItem(const CZebABItem& other)
    : CZebIProp(nullptr)
{
    CZebABItem::operator=(other);
}

const GUID* CZebABItem::GetInterfaceCIID()
{
    return &IID_IMAPIProp;
}

ULONG CZebABItem::GetMAPIType()
{
    return 0;
}

bool CZebABItem::IsMAPITypeAcceptable(unsigned int type)
{
    return type == MAPI_MESSAGE || type == MAPI_MAILUSER || type == MAPI_DISTLIST;
}

CZebABItem& CZebABItem::operator=(const CZebABItem& other)
{
    CZebIProp::operator=(other);
    return *this;
}

CZebABItem& CZebABItem::operator=(const CZebDistList& other)
{
    CZebIProp::operator=(other);
    return *this;
}

CZebABItem& CZebABItem::operator=(const CZebMailUser& other)
{
    CZebIProp::operator=(other);
    return *this;
}

CZebABItem& CZebABItem::operator=(const CZebMessage& other)
{
    CZebIProp::operator=(other);
    return *this;
}

CZebABItem::operator CZebDistList() const
{
    return CZebDistList(GetInterface().Get());
}

CZebABItem::operator CZebMailUser() const
{
    return CZebMailUser(GetInterface().Get());
}

CZebABItem::operator CZebMessage() const
{
    return CZebMessage(GetInterface().Get());
}

CZebAddressBook::CZebAddressBook(IMAPIProp* prop)
    : CZebIProp(prop)
{
}

CZebAddressBook::CZebAddressBook(const CZebAddressBook& other)
    : CZebIProp(nullptr)
{
    CZebAddressBook::operator=(other);
}

CZebAddressBook::~CZebAddressBook()
{
    CZebAddressBook::Free();
}

const GUID* CZebAddressBook::GetInterfaceCIID()
{
    return &IID_IAddrBook;
}

ULONG CZebAddressBook::GetMAPIType()
{
    return MAPI_ADDRBOOK;
}

void CZebAddressBook::Free()
{
    zeb::Guarded([&] { m_wabObject.Release(); });
    zeb::Guarded([&] { m_session.Release(); });
    CZebIProp::Free();
}

CComPtr<IAddrBook> CZebAddressBook::GetAddrBook()
{
    return QueryFor<IAddrBook>(IID_IAddrBook);
}

CZebAddressBook& CZebAddressBook::operator=(const CZebAddressBook& other)
{
    // Taken first: the base's assignment frees this object, which other may be.
    const CComPtr<IUnknown> wabObject(other.m_wabObject);
    const CComPtr<IMAPISession> session(other.m_session);
    CZebIProp::operator=(other);
    m_wabObject = wabObject;
    m_session = session;
    return *this;
}

void CZebAddressBook::SetWABObject(IUnknown* wabObject)
{
    m_wabObject = wabObject;
}

void CZebAddressBook::SetSession(IMAPISession* session)
{
    m_session = session;
}

CZebABContainer CZebAddressBook::OpenRootContainer(ULONG flags)
{
    const CTimeProfile profile("CZebAddressBook::OpenRootContainer");
    CComPtr<IAddrBook> book = GetAddrBook();
    CZebABContainer container;
    zeb::OpenEntry(book.Checked(), SBinary{0, nullptr}, container, flags);
    container.SetWAB(*this);
    return container;
}

CZebContainer CZebAddressBook::OpenContainer(const SBinary& entryID, ULONG flags)
{
    const zeb::CEntryIDInfo info = zeb::framework::WithMemory([&] { return zeb::CEntryIDInfo(CZebBinary(entryID)); });
    CZebContainer container;
    if (IsContactsFolder(info))
    {
        CZebSession session(m_session.Get());
        session.OpenEntry(WrappedFolder(info), container, flags);
        return container;
    }
    OpenEntry(entryID, container, flags);
    return container;
}

void CZebAddressBook::OpenEntry(const SBinary& entryID, CZebIProp& target, ULONG flags)
{
    if (!IsWAB() && m_session)
    {
        CZebSession session(m_session.Get());
        session.OpenEntry(entryID, target, flags);
        return;
    }
    CComPtr<IAddrBook> book = GetAddrBook();
    const bool isWAB = IsWAB();
    zeb::OpenEntry(book.Checked(), entryID, target, flags);
    PassWAB(isWAB, target);
}

CZebBinary CZebAddressBook::GetDefaultDirEntryID()
{
    CComPtr<IAddrBook> book = GetAddrBook();
    CZebEntryIDRequest directory;
    ThrowIfFailed(book->GetDefaultDir(directory, directory), book);
    return directory;
}

CZebContainer CZebAddressBook::OpenMainContainer(const char* entryIDHex)
{
    const CTimeProfile profile("CZebAddressBook::OpenMainContainer");
    CStringA hex(OrEmpty(entryIDHex));
    if (hex.IsEmpty())
    {
        const CZebBinary directory = GetDefaultDirEntryID();
        hex = directory.String();
    }
    return OpenContainer(CZebBinary(hex), MAPI_BEST_ACCESS);
}

bool CZebAddressBook::CompareEntryIDs(const char* entryIDHex1, const char* entryIDHex2)
{
    const CStringA first(OrEmpty(entryIDHex1));
    const CStringA second(OrEmpty(entryIDHex2));
    if (IsWAB())
    {
        return first.CompareNoCase(second) == 0;
    }
    const CZebBinary firstID(first.GetString());
    const CZebBinary secondID(second.GetString());
    const SBinary& a = firstID;
    const SBinary& b = secondID;
    ULONG equal = 0;
    zeb::ThrowIfFailedAbout([&] { return zeb::EntryText(a) + ", " + zeb::EntryText(b); },
                            m_session->CompareEntryIDs(a.cb, zeb::EntryID(a), b.cb, zeb::EntryID(b), 0, &equal),
                            m_session);
    return equal != 0;
}
