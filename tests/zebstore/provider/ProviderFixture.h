// A started provider with one profile and its store, in its own registry and folder.
#pragma once

#include "platform/mapi.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"
#include "zebstore/base/Object.h"
#include "zebstore/zebstore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zebstore
{

using Bytes = std::vector<BYTE>;

inline LPTSTR Text(const char* text)
{
    return const_cast<LPTSTR>(text);
}

inline LPENTRYID Id(const Bytes& bytes)
{
    return reinterpret_cast<LPENTRYID>(const_cast<BYTE*>(bytes.data()));
}

inline SPropValue NarrowValue(ULONG tag, const char* text)
{
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszA = const_cast<char*>(text);
    return value;
}

inline SPropValue LongValue(ULONG tag, LONG number)
{
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.l = number;
    return value;
}

inline SPropValue BinaryValue(ULONG tag, const Bytes& bytes)
{
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.bin.cb = static_cast<ULONG>(bytes.size());
    value.Value.bin.lpb = const_cast<BYTE*>(bytes.data());
    return value;
}

/// A one-entry list for calls on messages; `bytes` must outlive it.
struct EntryList : ENTRYLIST
{
    explicit EntryList(const Bytes& bytes)
        : entry{static_cast<ULONG>(bytes.size()), const_cast<BYTE*>(bytes.data())}
    {
        cValues = 1;
        lpbin = &entry;
    }
    SBinary entry;
};

/// One property, or null when HrGetOneProp failed; `code` receives its result.
inline Buffer<SPropValue> Get(IMAPIProp* object, ULONG tag, HRESULT* code = nullptr)
{
    SPropValue* value = nullptr;
    const HRESULT result = HrGetOneProp(object, tag, &value);
    if (code)
    {
        *code = result;
    }
    return Buffer<SPropValue>(value);
}

inline std::string GetText(IMAPIProp* object, ULONG tag)
{
    const auto value = Get(object, CHANGE_PROP_TYPE(tag, PT_STRING8));
    return value.Get() ? value->Value.lpszA : "<none>";
}

inline LONG GetLong(IMAPIProp* object, ULONG tag)
{
    const auto value = Get(object, tag);
    return value.Get() ? value->Value.l : -1;
}

inline Bytes GetBytes(IMAPIProp* object, ULONG tag)
{
    const auto value = Get(object, tag);
    return value.Get() ? Bytes(value->Value.bin.lpb, value->Value.bin.lpb + value->Value.bin.cb) : Bytes();
}

inline HRESULT Set(IMAPIProp* object, SPropValue value)
{
    return HrSetOneProp(object, &value);
}

/// The rows of a table, freed with it.
class Rows
{
public:
    explicit Rows(IMAPITable* table, std::vector<ULONG> columns = {})
    {
        const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
        std::vector<ULONG> tags = {static_cast<ULONG>(columns.size())};
        tags.insert(tags.end(), columns.begin(), columns.end());
        EXPECT_EQ(HrQueryAllRows(table, columns.empty() ? nullptr : reinterpret_cast<LPSPropTagArray>(tags.data()),
                                 nullptr, nullptr, 0, &m_rows),
                  S_OK);
    }
    ~Rows() { FreeProws(m_rows); }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;

    ULONG Count() const { return m_rows ? m_rows->cRows : 0; }
    const SPropValue& Cell(ULONG row, ULONG column) const { return m_rows->aRow[row].lpProps[column]; }
    std::string TextCell(ULONG row, ULONG column) const
    {
        const SPropValue& cell = Cell(row, column);
        return PROP_TYPE(cell.ulPropTag) == PT_STRING8 ? cell.Value.lpszA : "<none>";
    }
    Bytes BytesCell(ULONG row, ULONG column) const
    {
        const SBinary& binary = Cell(row, column).Value.bin;
        return Bytes(binary.lpb, binary.lpb + binary.cb);
    }

private:
    LPSRowSet m_rows = nullptr;
};

/// A profile "Main" with a store file; each test ends without live objects or buffers, and without bad frees.
class Provider : public testing::Test
{
protected:
    Provider()
    {
        ApplySwitches({});
        EXPECT_EQ(MAPIInitialize(nullptr), S_OK);
        m_path = m_folder.File("main.zeb");
        EXPECT_EQ(MakeProfile("Main", m_path), S_OK);
    }
    ~Provider() override
    {
        m_session = {};
        MAPIUninitialize();
        ApplySwitches({});
        EXPECT_EQ(g_liveObjects.load(), 0);
        EXPECT_EQ(g_liveBuffers.load(), 0);
        EXPECT_EQ(g_badFrees.load(), 0);
    }

    static Ref<IProfAdmin> Admin()
    {
        IProfAdmin* admin = nullptr;
        EXPECT_EQ(MAPIAdminProfiles(0, &admin), S_OK);
        return Ref<IProfAdmin>::Adopt(admin);
    }

    static Ref<IMsgServiceAdmin> Services(const char* profile)
    {
        IMsgServiceAdmin* services = nullptr;
        Admin()->AdminServices(Text(profile), nullptr, 0, 0, &services);
        return Ref<IMsgServiceAdmin>::Adopt(services);
    }

    /// Creates the profile with the provider's service and configures its store.
    static HRESULT MakeProfile(const char* name, const std::string& path, bool create = true)
    {
        HRESULT result = Admin()->CreateProfile(Text(name), nullptr, 0, 0);
        const Ref<IMsgServiceAdmin> services = Services(name);
        if (SUCCEEDED(result))
        {
            result = services->CreateMsgService(Text(ZEBSTORE_SERVICE_NAME), Text("Mail of Main"), 0, 0);
        }
        return SUCCEEDED(result) ? Configure(*services, path, create) : result;
    }

    static HRESULT Configure(IMsgServiceAdmin& services, const std::string& path, bool create = true)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(services.GetMsgServiceTable(0, &table), S_OK);
        const Rows rows(table, {PR_SERVICE_UID});
        SPropValue createValue{};
        createValue.ulPropTag = PR_ZEBSTORE_CREATE;
        createValue.Value.b = create;
        SPropValue values[] = {NarrowValue(PR_ZEBSTORE_PATH_A, path.c_str()), createValue};
        MAPIUID uid;
        std::copy_n(rows.BytesCell(0, 0).data(), sizeof(uid.ab), uid.ab);
        return services.ConfigureMsgService(&uid, 0, 0, 2, values);
    }

    IMAPISession& Session()
    {
        if (!m_session)
        {
            IMAPISession* session = nullptr;
            EXPECT_EQ(MAPILogonEx(0, Text("Main"), nullptr, MAPI_EXTENDED | MAPI_NEW_SESSION, &session), S_OK);
            m_session = Ref<IMAPISession>::Adopt(session);
        }
        return *m_session;
    }

    Bytes StoreId()
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(Session().GetMsgStoresTable(0, &table), S_OK);
        const Rows rows(table, {PR_ENTRYID});
        return rows.Count() ? rows.BytesCell(0, 0) : Bytes();
    }

    Ref<IMsgStore> OpenStore(ULONG flags = MAPI_BEST_ACCESS)
    {
        const Bytes id = StoreId();
        IMsgStore* store = nullptr;
        EXPECT_EQ(Session().OpenMsgStore(0, static_cast<ULONG>(id.size()), Id(id), &IID_IMsgStore, flags, &store),
                  S_OK);
        return Ref<IMsgStore>::Adopt(store);
    }

    template <class Interface>
    Ref<Interface> Open(const Bytes& id, const IID& iid, ULONG flags = MAPI_BEST_ACCESS)
    {
        ULONG type = 0;
        IUnknown* object = nullptr;
        EXPECT_EQ(Session().OpenEntry(static_cast<ULONG>(id.size()), Id(id), &iid, flags, &type, &object), S_OK);
        return Ref<Interface>::Adopt(static_cast<Interface*>(object));
    }

    Ref<IMAPIFolder> OpenFolder(const Bytes& id, ULONG flags = MAPI_BEST_ACCESS)
    {
        return Open<IMAPIFolder>(id, IID_IMAPIFolder, flags);
    }
    Ref<IMessage> OpenMessage(const Bytes& id, ULONG flags = MAPI_BEST_ACCESS)
    {
        return Open<IMessage>(id, IID_IMessage, flags);
    }

    Bytes InboxId()
    {
        ULONG size = 0;
        ENTRYID* id = nullptr;
        EXPECT_EQ(OpenStore()->GetReceiveFolder(nullptr, 0, &size, &id, nullptr), S_OK);
        const Buffer<ENTRYID> owner(id);
        const BYTE* bytes = reinterpret_cast<const BYTE*>(id);
        return id ? Bytes(bytes, bytes + size) : Bytes();
    }
    Ref<IMAPIFolder> Inbox() { return OpenFolder(InboxId()); }

    static Ref<IMessage> NewMessage(IMAPIFolder& folder, const char* subject = "Hello", ULONG flags = 0)
    {
        IMessage* message = nullptr;
        EXPECT_EQ(folder.CreateMessage(nullptr, flags, &message), S_OK);
        const Ref<IMessage> result = Ref<IMessage>::Adopt(message);
        EXPECT_EQ(Set(message, NarrowValue(PR_SUBJECT_A, subject)), S_OK);
        return result;
    }

    /// Saves a new message. @return its identifier
    static Bytes SaveMessage(IMAPIFolder& folder, const char* subject = "Hello")
    {
        const Ref<IMessage> message = NewMessage(folder, subject);
        EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        return GetBytes(message.Get(), PR_ENTRYID);
    }

    static Ref<IMAPIFolder> NewFolder(IMAPIFolder& parent, const char* name, ULONG flags = 0)
    {
        IMAPIFolder* folder = nullptr;
        EXPECT_EQ(parent.CreateFolder(FOLDER_GENERIC, Text(name), nullptr, nullptr, flags, &folder), S_OK);
        return Ref<IMAPIFolder>::Adopt(folder);
    }

    static std::vector<std::string> Subjects(IMAPIFolder& folder, ULONG flags = 0)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(folder.GetContentsTable(flags, &table), S_OK);
        const Rows rows(table, {PR_SUBJECT_A});
        std::vector<std::string> subjects;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            subjects.push_back(rows.TextCell(i, 0));
        }
        return subjects;
    }

    static std::string ErrorText(IMAPIProp& object, HRESULT code)
    {
        MAPIERROR* error = nullptr;
        EXPECT_EQ(object.GetLastError(code, 0, &error), S_OK);
        const Buffer<MAPIERROR> owner(error);
        return error ? reinterpret_cast<const char*>(error->lpszError) : "";
    }

    RegistryScope m_registry;
    zeb::test::TempFolder m_folder;
    std::string m_path;
    Ref<IMAPISession> m_session;
};

using Texts = std::vector<std::string>;

} // namespace zebstore
