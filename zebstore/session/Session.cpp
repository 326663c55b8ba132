#include "zebstore/session/Session.h"

#include "zebstore/addressbook/AddressBook.h"
#include "zebstore/addressbook/AddressId.h"
#include "zebstore/addressbook/AddressObjects.h"
#include "zebstore/base/Locks.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/objects/EntryIdBytes.h"
#include "zebstore/objects/Folder.h"
#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/objects/OpenFlags.h"
#include "zebstore/objects/Store.h"
#include "zebstore/objects/StoreSinks.h"
#include "zebstore/profiles/ServiceAdmin.h"

#include <cstring>

namespace zebstore
{
namespace
{

/// A logged-on profile. The store is opened on first use and shared by all objects that the session opens; it stays
/// open until the last of these objects is released. Threads: any.
class Session final : public Object<IMAPISession>
{
public:
    explicit Session(std::string profile)
        : m_profile(std::move(profile))
    {
    }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT code, ULONG flags, LPMAPIERROR* error) override
    {
        return Guarded("IMAPISession::GetLastError", [&] { return LastErrorAsMapi(code, flags, error); });
    }

    HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG flags, LPMAPITABLE* table) override
    {
        return Guarded("IMAPISession::GetMsgStoresTable", [&]
        {
            Require(table != nullptr, "the output pointer is null");
            *table = nullptr;
            RequireFlags(flags, MAPI_UNICODE);
            RequireLoggedOn();
            std::vector<PropertySet> rows;
            for (const Service& each : profiles::Services(m_profile))
            {
                rows.push_back(StoreRow(each));
            }
            *table =
                NewMemoryTable(std::move(rows),
                               {PR_DEFAULT_STORE, PR_ENTRYID, PR_DISPLAY_NAME_A, PR_PROVIDER_DISPLAY_A, PR_MDB_PROVIDER,
                                PR_RESOURCE_TYPE, PR_RESOURCE_FLAGS, PR_RECORD_KEY, PR_OBJECT_TYPE, PR_INSTANCE_KEY},
                               flags);
        });
    }

    HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR, ULONG size, LPENTRYID id, LPCIID iid, ULONG flags,
                                           LPMDB* store) override
    {
        return Guarded("IMAPISession::OpenMsgStore", [&]
        {
            Require(store != nullptr, "the output pointer is null");
            *store = nullptr;
            RequireFlags(flags, MDB_NO_DIALOG | MDB_WRITE | MDB_TEMPORARY | MDB_NO_MAIL | OpenEntryFlags | MdbOnline);
            *store = static_cast<IMsgStore*>(OpenStore(size, id, iid, flags));
        });
    }

    HRESULT STDMETHODCALLTYPE OpenAddressBook(ULONG_PTR, LPCIID iid, ULONG flags, LPADRBOOK* book) override
    {
        return Guarded("IMAPISession::OpenAddressBook", [&]
        {
            Require(book != nullptr, "the output pointer is null");
            *book = nullptr;
            RequireFlags(flags, AB_NO_DIALOG);
            *book = static_cast<IAddrBook*>(Answer(NewAddressBook(Opened(), MostAccess()).Get(), iid));
        });
    }
    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID, LPCIID, ULONG, LPPROFSECT*) override
    {
        return Refuse("IMAPISession::OpenProfileSection");
    }

    HRESULT STDMETHODCALLTYPE GetStatusTable(ULONG flags, LPMAPITABLE* table) override
    {
        return Guarded("IMAPISession::GetStatusTable", [&]
        {
            Require(table != nullptr, "the output pointer is null");
            RequireFlags(flags, MAPI_UNICODE);
            *table = NewMemoryTable({}, {PR_DISPLAY_NAME_A, PR_ENTRYID, PR_RESOURCE_TYPE}, flags);
        });
    }

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override
    {
        return Guarded("IMAPISession::OpenEntry", [&]
        {
            Require(object != nullptr, "the output pointer is null");
            *object = nullptr;
            if (!size || id == nullptr)
            {
                throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier is empty");
            }
            if (LooksLikeStoreEntryId(id, size))
            {
                *object = OpenStore(size, id, iid, flags);
                if (objectType != nullptr)
                {
                    *objectType = MAPI_STORE;
                }
                return;
            }
            *object = IsAddressId(id, size) ? OpenAddress(Opened(), size, id, iid, flags, MostAccess(), objectType)
                                            : OpenItem(Opened(), size, id, iid, flags, MostAccess(), objectType);
        });
    }

    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG sizeA, LPENTRYID a, ULONG sizeB, LPENTRYID b, ULONG flags,
                                              ULONG* same) override
    {
        return Guarded("IMAPISession::CompareEntryIDs", [&]
        {
            Require(same != nullptr, "the output pointer is null");
            RequireFlags(flags, 0);
            *same = SameEntry(sizeA, a, sizeB, b) ? TRUE : FALSE;
        });
    }

    HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID id, ULONG events, LPMAPIADVISESINK sink,
                                     ULONG_PTR* connection) override
    {
        return Guarded("IMAPISession::Advise", [&]
        {
            RequireObjectEvents(events, sink, connection);
            if (!size || id == nullptr)
            {
                throw Error(MAPI_E_NO_SUPPORT, "the session itself has no notifications");
            }
            std::optional<ItemId> item;
            if (LooksLikeStoreEntryId(id, size))
            {
                RequireOurs(size, id);
            }
            else
            {
                item = Opened()->Parse(id, size);
            }
            *connection = Sinks()->Advise(item, events, sink);
        });
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR connection) override
    {
        return Guarded("IMAPISession::Unadvise", [&] { Sinks()->Unadvise(connection); });
    }
    HRESULT STDMETHODCALLTYPE MessageOptions(ULONG_PTR, ULONG, LPTSTR, LPMESSAGE) override
    {
        return Refuse("IMAPISession::MessageOptions");
    }
    HRESULT STDMETHODCALLTYPE QueryDefaultMessageOpt(LPTSTR, ULONG, ULONG*, LPSPropValue*) override
    {
        return Refuse("IMAPISession::QueryDefaultMessageOpt");
    }

    HRESULT STDMETHODCALLTYPE EnumAdrTypes(ULONG, ULONG* count, LPTSTR** types) override
    {
        return Guarded("IMAPISession::EnumAdrTypes", [&]
        {
            Require(count != nullptr && types != nullptr, "the output pointer is null");
            *count = 0;
            *types = nullptr;
        });
    }

    HRESULT STDMETHODCALLTYPE QueryIdentity(ULONG* size, LPENTRYID* id) override
    {
        return Guarded("IMAPISession::QueryIdentity", [&]
        {
            Require(size != nullptr && id != nullptr, "the output pointer is null");
            *size = 0;
            *id = nullptr;
            throw Error(MAPI_E_NOT_FOUND, "the profile has no identity");
        });
    }

    HRESULT STDMETHODCALLTYPE Logoff(ULONG_PTR, ULONG, ULONG) override
    {
        return Guarded("IMAPISession::Logoff", [&]
        {
            CloseSinks();
            const std::lock_guard hold(m_lock);
            m_loggedOn = false;
            m_store.reset();
        });
    }

    HRESULT STDMETHODCALLTYPE SetDefaultStore(ULONG, ULONG size, LPENTRYID id) override
    {
        return Guarded("IMAPISession::SetDefaultStore", [&] { RequireOurs(size, id); });
    }

    HRESULT STDMETHODCALLTYPE AdminServices(ULONG flags, LPSERVICEADMIN* admin) override
    {
        return Guarded("IMAPISession::AdminServices", [&]
        {
            Require(admin != nullptr, "the output pointer is null");
            *admin = nullptr;
            RequireFlags(flags, 0);
            RequireLoggedOn();
            *admin = NewServiceAdmin(m_profile);
        });
    }

    HRESULT STDMETHODCALLTYPE ShowForm(ULONG_PTR, LPMDB, LPMAPIFOLDER, LPCIID, ULONG_PTR, LPMESSAGE, ULONG, ULONG,
                                       ULONG, ULONG, LPSTR) override
    {
        return Refuse("IMAPISession::ShowForm");
    }
    HRESULT STDMETHODCALLTYPE PrepareForm(LPCIID, LPMESSAGE, ULONG_PTR*) override
    {
        return Refuse("IMAPISession::PrepareForm");
    }

private:
    ~Session() override { CloseSinks(); }

    /// The session's sinks, created on first use.
    std::shared_ptr<StoreSinks> Sinks()
    {
        const StorePtr store = Opened();
        const std::lock_guard hold(m_lock);
        if (!m_sinks)
        {
            m_sinks = std::make_shared<StoreSinks>(store);
        }
        return m_sinks;
    }

    void CloseSinks() noexcept
    {
        std::shared_ptr<StoreSinks> sinks;
        {
            const std::lock_guard hold(m_lock);
            sinks.swap(m_sinks);
        }
        // Not under the lock: this waits for calls in progress, which may use the session.
        if (sinks)
        {
            sinks->Close();
        }
    }

    static HRESULT Refuse(const char* method)
    {
        return Guarded(method, [] { throw Error(MAPI_E_NO_SUPPORT, "the provider supports only stores"); });
    }

    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPISession}); }

    void RequireLoggedOn()
    {
        const std::lock_guard hold(m_lock);
        if (!m_loggedOn)
        {
            throw Error(MAPI_E_END_OF_SESSION, "the session was logged off");
        }
    }

    /// The profile's store, opened for writing when that is allowed.
    StorePtr Opened()
    {
        const std::lock_guard hold(m_lock);
        if (!m_loggedOn)
        {
            throw Error(MAPI_E_END_OF_SESSION, "the session was logged off");
        }
        if (m_store)
        {
            return m_store;
        }
        const std::vector<Service> services = profiles::Services(m_profile);
        if (services.empty() || services.front().path.empty())
        {
            throw Error(MAPI_E_NOT_FOUND, "the profile '" + m_profile + "' has no store");
        }
        m_store = std::make_shared<StoreContext>(OpenServiceFile(services.front(), &Notifier::The()));
        return m_store;
    }

    Access MostAccess() { return Opened()->File().IsReadOnly() ? Access::Read : Access::Write; }

    StorePtr RequireOurs(ULONG size, const ENTRYID* id)
    {
        const StoreId asked = ParseStoreEntryId(id, size);
        StorePtr store = Opened();
        if (std::memcmp(asked.uid.ab, store->Uid().ab, sizeof(MAPIUID)) != 0)
        {
            throw Error(MAPI_E_NOT_FOUND, "the store does not belong to the profile '" + m_profile + "'");
        }
        return store;
    }

    IUnknown* OpenStore(ULONG size, const ENTRYID* id, const IID* iid, ULONG flags)
    {
        const StorePtr store = RequireOurs(size, id);
        Access access = Access::Read;
        if (flags & (MDB_WRITE | MAPI_MODIFY | MAPI_BEST_ACCESS))
        {
            access = MostAccess();
        }
        if ((flags & MDB_WRITE) && access == Access::Read)
        {
            throw Error(MAPI_E_NO_ACCESS, store->File().Path() + " is read-only");
        }
        return Answer(NewStore(store, access).Get(), iid);
    }

    PropertySet StoreRow(const Service& service)
    {
        const StorePtr store = Opened();
        PropertySet row;
        row.SetBool(PR_DEFAULT_STORE, true);
        row.SetBinary(PR_ENTRYID, store->EntryId().data(), store->EntryId().size());
        row.SetBinary(PR_RECORD_KEY, store->Uid().ab, sizeof(MAPIUID));
        row.SetText(PR_DISPLAY_NAME_W, store->File().Properties().Text(PR_DISPLAY_NAME_W));
        row.SetText(PR_PROVIDER_DISPLAY_W, ZEBSTORE_SERVICE_NAME);
        row.SetBinary(PR_MDB_PROVIDER, ProviderUid.ab, sizeof(MAPIUID));
        row.SetLong(PR_RESOURCE_TYPE, MAPI_STORE_PROVIDER);
        row.SetLong(PR_RESOURCE_FLAGS, STATUS_DEFAULT_STORE);
        row.SetLong(PR_OBJECT_TYPE, MAPI_STORE);
        row.SetBinary(PR_INSTANCE_KEY, service.uid.ab, sizeof(MAPIUID));
        row.SetText(PR_ZEBSTORE_PATH_W, store->File().Path());
        return row;
    }

    const std::string m_profile;
    MutexOf<lockorder::Session> m_lock;
    bool m_loggedOn = true;
    StorePtr m_store;
    std::shared_ptr<StoreSinks> m_sinks;
};

} // namespace

IMAPISession* Logon(const char* profile, ULONG flags)
{
    std::string name = TextArgument(profile, flags);
    if (name.empty())
    {
        name = profiles::Default().value_or("");
    }
    // MAPI would show a dialog here; this provider has no user interface.
    if (name.empty())
    {
        throw Error(MAPI_E_LOGON_FAILED, "no profile is given, and there is no default profile");
    }
    if (!profiles::Exists(name))
    {
        throw Error(MAPI_E_LOGON_FAILED, "the profile '" + name + "' does not exist");
    }
    return new Session(name);
}

} // namespace zebstore
