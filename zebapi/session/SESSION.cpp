#include "zebapi/session/SESSION.h"

#include "zebapi/frame/Exception.h"
#include "zebapi/objects/internal/OpenEntry.h"
#include "zebapi/tables/RowSet.h"
#include "zebapi/values/internal/Received.h"

#include <cstring>

namespace
{

bool IsDefaultStore(const CZebRow& row)
{
    if (!row.IsExists(PR_DEFAULT_STORE))
    {
        return false;
    }
    const CZebOnePropVal value = row[PR_DEFAULT_STORE];
    return value.GetType() == PT_BOOLEAN && value.operator bool();
}

} // namespace

CZebSession::CZebSession(IMAPISession* session)
    : m_session(session)
{
}

CZebSession::CZebSession(const CZebSession& other) = default;

CZebSession::~CZebSession()
{
    CZebSession::Free();
}

void CZebSession::Free()
{
    zeb::Guarded([&] { m_session.Release(); });
}

CZebSession& CZebSession::operator=(const CZebSession& other)
{
    zeb::Guarded([&]
    {
        CComPtr<IMAPISession> session;
        if (other.IsValid())
        {
            other.m_session.QueryInterface(IID_IMAPISession, session);
        }
        m_session = session;
        if (!IsValid())
        {
            CZebException::Throw(MAPI_E_INTERFACE_NOT_SUPPORTED);
        }
    });
    return *this;
}

bool CZebSession::IsValid() const
{
    return static_cast<bool>(m_session);
}

CComPtr<IMAPISession> CZebSession::GetInterface() const
{
    return m_session;
}

void CZebSession::Logoff(ULONG uiParam, ULONG flags, ULONG reserved)
{
    zeb::Guarded([&] { ThrowIfFailed(m_session->Logoff(uiParam, flags, reserved), m_session); });
    Free();
}

CZebTable CZebSession::GetMsgStoresTable()
{
    CComPtr<IMAPITable> table;
    ThrowIfFailed(m_session->GetMsgStoresTable(0, table.Put()), m_session);
    zeb::RequireObject(static_cast<bool>(table));
    return CZebTable(table.Get());
}

void CZebSession::OpenEntry(const SBinary& entryId, CZebIProp& target, ULONG flags)
{
    zeb::OpenEntry(m_session.Checked(), entryId, target, flags);
}

CZebMsgStore CZebSession::OpenMsgStore(const SBinary& entryId, HWND parent, ULONG flags)
{
    CComPtr<IMsgStore> store;
    zeb::ThrowIfFailedAbout([&] { return zeb::EntryText(entryId); },
                            m_session->OpenMsgStore(zeb::UIParam(parent), entryId.cb, zeb::EntryID(entryId),
                                                    &IID_IMsgStore, flags, store.Put()),
                            m_session);
    zeb::RequireObject(static_cast<bool>(store));
    return CZebMsgStore(store.Get());
}

CZebAddressBook CZebSession::OpenAddressBook(HWND parent, ULONG flags)
{
    CComPtr<IAddrBook> book;
    ThrowIfFailed(m_session->OpenAddressBook(zeb::UIParam(parent), nullptr, flags, book.Put()), m_session);
    zeb::RequireObject(static_cast<bool>(book));
    CZebAddressBook result(book.Get());
    result.SetSession(m_session.Get());
    return result;
}

CZebMsgStore CZebSession::OpenDefaultMsgStore(HWND parent, ULONG flags)
{
    CZebTable table = GetMsgStoresTable();
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    const ULONG count = rows.IsValid() ? rows.Count() : 0;
    for (ULONG i = 0; i < count; ++i)
    {
        const CZebRow row = rows[i];
        if (IsDefaultStore(row))
        {
            return OpenMsgStore(zeb::Received(row[PR_ENTRYID]), parent, flags);
        }
    }
    CZebException::Throw(MAPI_E_NOT_FOUND);
}

bool CZebSession::CompareEntryIDs(const SBinary& a, const SBinary& b)
{
    ULONG equal = 0;
    zeb::ThrowIfFailedAbout([&] { return zeb::EntryText(a) + ", " + zeb::EntryText(b); },
                            m_session->CompareEntryIDs(a.cb, zeb::EntryID(a), b.cb, zeb::EntryID(b), 0, &equal),
                            m_session);
    return equal != 0;
}

bool Zeb_IsClassSubclassOf(const CString& messageClass, const char* baseClass)
{
    return baseClass != nullptr &&
           messageClass.Left(static_cast<int>(std::strlen(baseClass))).CompareNoCase(baseClass) == 0;
}
