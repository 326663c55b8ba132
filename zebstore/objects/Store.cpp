#include "zebstore/objects/Store.h"

#include "zebstore/objects/EntryIdBytes.h"
#include "zebstore/objects/Folder.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/objects/PropObject.h"
#include "zebstore/objects/StoreSinks.h"
#include "zebstore/storage/Text.h"

namespace zebstore
{
namespace
{

struct SpecialFolder
{
    ULONG tag;
    StandardFolder folder;
};

constexpr SpecialFolder SpecialFolders[] = {
    {PR_IPM_SUBTREE_ENTRYID, StandardFolder::IpmSubtree},
    {PR_IPM_WASTEBASKET_ENTRYID, StandardFolder::DeletedItems},
    {PR_IPM_OUTBOX_ENTRYID, StandardFolder::Outbox},
    {PR_IPM_SENTMAIL_ENTRYID, StandardFolder::SentItems},
    {PR_FINDER_ENTRYID, StandardFolder::Finder},
    {PR_VIEWS_ENTRYID, StandardFolder::Views},
    {PR_COMMON_VIEWS_ENTRYID, StandardFolder::CommonViews},
};

constexpr LONG ValidFolders = FOLDER_IPM_SUBTREE_VALID | FOLDER_IPM_INBOX_VALID | FOLDER_IPM_OUTBOX_VALID |
                              FOLDER_IPM_WASTEBASKET_VALID | FOLDER_IPM_SENTMAIL_VALID | FOLDER_VIEWS_VALID |
                              FOLDER_COMMON_VIEWS_VALID | FOLDER_FINDER_VALID;

class StoreObject final : public PropObject<IMsgStore>
{
public:
    StoreObject(const StorePtr& store, Access access)
        : PropObject(store, access)
        , m_sinks(std::make_shared<StoreSinks>(store))
    {
    }

    HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID id, ULONG events, LPMAPIADVISESINK sink,
                                     ULONG_PTR* connection) override
    {
        return Guarded("IMsgStore::Advise", [&]
        {
            RequireObjectEvents(events, sink, connection);
            std::optional<ItemId> item;
            if (size && !LooksLikeStoreEntryId(id, size))
            {
                item = Store()->Parse(id, size);
            }
            *connection = m_sinks->Advise(item, events, sink);
        });
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR connection) override
    {
        return Guarded("IMsgStore::Unadvise", [&] { m_sinks->Unadvise(connection); });
    }

    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG sizeA, LPENTRYID a, ULONG sizeB, LPENTRYID b, ULONG flags,
                                              ULONG* same) override
    {
        return Guarded("IMsgStore::CompareEntryIDs", [&]
        {
            Require(same != nullptr, "the output pointer is null");
            RequireFlags(flags, 0);
            *same = SameEntry(sizeA, a, sizeB, b) ? TRUE : FALSE;
        });
    }

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override
    {
        return Guarded("IMsgStore::OpenEntry", [&]
        {
            Require(object != nullptr, "the output pointer is null");
            *object = nullptr;
            *object = OpenItem(Store(), size, id, iid, flags, AccessGiven(), objectType);
        });
    }

    HRESULT STDMETHODCALLTYPE SetReceiveFolder(LPTSTR messageClass, ULONG flags, ULONG size, LPENTRYID id) override
    {
        return Run("IMsgStore::SetReceiveFolder", [&]
        {
            RequireFlags(flags, MAPI_UNICODE);
            RequireWrite();
            const FolderId folder = size ? Store()->ParseFolder(id, size) : 0;
            if (folder)
            {
                File().Folders().Info(folder);
            }
            File().ReceiveFolders().Set(TextArgument(messageClass, flags), folder);
        });
    }

    HRESULT STDMETHODCALLTYPE GetReceiveFolder(LPTSTR messageClass, ULONG flags, ULONG* size, LPENTRYID* id,
                                               LPTSTR* explicitClass) override
    {
        return Guarded("IMsgStore::GetReceiveFolder", [&]
        {
            RequireFlags(flags, MAPI_UNICODE);
            const ReceiveFolder found = File().ReceiveFolders().Of(TextArgument(messageClass, flags));
            const FolderEntryId entry = Store()->IdOfFolder(found.folder);
            Buffer<char> text;
            if (explicitClass != nullptr)
            {
                text =
                    Buffer<char>(flags & MAPI_UNICODE
                                     ? static_cast<void*>(CopyWide(WideFromStored(found.messageClass).c_str(), nullptr))
                                     : CopyNarrow(found.messageClass.c_str(), nullptr));
            }
            GiveBytes(entry.data(), entry.size(), size, id);
            if (explicitClass != nullptr)
            {
                *explicitClass = text.Detach();
            }
        });
    }

    HRESULT STDMETHODCALLTYPE GetReceiveFolderTable(ULONG flags, LPMAPITABLE* table) override
    {
        return Guarded("IMsgStore::GetReceiveFolderTable", [&]
        {
            Require(table != nullptr, "the output pointer is null");
            *table = nullptr;
            RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
            std::vector<PropertySet> rows;
            for (const ReceiveFolder& each : File().ReceiveFolders().All())
            {
                const FolderEntryId entry = Store()->IdOfFolder(each.folder);
                PropertySet row;
                row.SetBinary(PR_ENTRYID, entry.data(), entry.size());
                row.SetBinary(PR_RECORD_KEY, entry.data(), entry.size());
                row.SetText(PR_MESSAGE_CLASS_W, each.messageClass);
                rows.push_back(std::move(row));
            }
            *table = NewMemoryTable(std::move(rows), {PR_ENTRYID, PR_RECORD_KEY, PR_MESSAGE_CLASS_A}, flags);
        });
    }

    HRESULT STDMETHODCALLTYPE StoreLogoff(ULONG* flags) override
    {
        return Guarded("IMsgStore::StoreLogoff", [&]
        {
            if (flags != nullptr)
            {
                *flags = LOGOFF_COMPLETE;
            }
        });
    }

    HRESULT STDMETHODCALLTYPE AbortSubmit(ULONG, LPENTRYID, ULONG) override { return Refuse("IMsgStore::AbortSubmit"); }
    HRESULT STDMETHODCALLTYPE GetOutgoingQueue(ULONG, LPMAPITABLE*) override
    {
        return Refuse("IMsgStore::GetOutgoingQueue");
    }
    HRESULT STDMETHODCALLTYPE SetLockState(LPMESSAGE, ULONG) override { return Refuse("IMsgStore::SetLockState"); }
    HRESULT STDMETHODCALLTYPE FinishedMsg(ULONG, ULONG, LPENTRYID) override { return Refuse("IMsgStore::FinishedMsg"); }
    HRESULT STDMETHODCALLTYPE NotifyNewMail(LPNOTIFICATION) override { return Refuse("IMsgStore::NotifyNewMail"); }

private:
    ~StoreObject() override { m_sinks->Close(); }

    static HRESULT Refuse(const char* method)
    {
        return Guarded(method, [] { throw Error(MAPI_E_NO_SUPPORT, "this store cannot submit messages"); });
    }

    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMsgStore}); }

    const PropertySet& Stored() override
    {
        m_properties = File().Properties();
        return m_properties;
    }

    void Edit(const std::function<void(PropertySet&)>& change) override
    {
        PropertySet properties = File().Properties();
        change(properties);
        File().SaveProperties(properties);
    }

    void Save(ULONG) override {}

    const std::vector<ULONG>& ComputedTags() override
    {
        static const std::vector<ULONG> tags = []
        {
            std::vector<ULONG> all = {PR_ENTRYID,           PR_STORE_ENTRYID,      PR_RECORD_KEY,   PR_STORE_RECORD_KEY,
                                      PR_MAPPING_SIGNATURE, PR_OBJECT_TYPE,        PR_MDB_PROVIDER, PR_RESOURCE_TYPE,
                                      PR_VALID_FOLDER_MASK, PR_STORE_SUPPORT_MASK, PR_ACCESS,       PR_ACCESS_LEVEL,
                                      PR_ZEBSTORE_CHECK_W};
            for (const SpecialFolder& each : SpecialFolders)
            {
                all.push_back(each.tag);
            }
            return all;
        }();
        return tags;
    }

    // The check reads the whole file: returned only when requested by tag.
    bool Lists(ULONG tag) override { return PROP_ID(tag) != PROP_ID(PR_ZEBSTORE_CHECK_W); }

    bool Compute(ULONG tag, PropertySet& out) override
    {
        for (const SpecialFolder& each : SpecialFolders)
        {
            if (PROP_ID(each.tag) == PROP_ID(tag))
            {
                const FolderEntryId entry = Store()->IdOfFolder(IdOf(each.folder));
                out.SetBinary(each.tag, entry.data(), entry.size());
                return true;
            }
        }
        return ComputeIdentity(tag, out) || ComputeState(tag, out);
    }

    bool ComputeIdentity(ULONG tag, PropertySet& out)
    {
        switch (PROP_ID(tag))
        {
        case PROP_ID(PR_ENTRYID):
        case PROP_ID(PR_STORE_ENTRYID):
            out.SetBinary(CHANGE_PROP_TYPE(tag, PT_BINARY), Store()->EntryId().data(), Store()->EntryId().size());
            return true;
        case PROP_ID(PR_RECORD_KEY):
        case PROP_ID(PR_STORE_RECORD_KEY):
        case PROP_ID(PR_MAPPING_SIGNATURE):
            out.SetBinary(CHANGE_PROP_TYPE(tag, PT_BINARY), Store()->Uid().ab, sizeof(MAPIUID));
            return true;
        case PROP_ID(PR_MDB_PROVIDER):
            out.SetBinary(PR_MDB_PROVIDER, ProviderUid.ab, sizeof(MAPIUID));
            return true;
        case PROP_ID(PR_OBJECT_TYPE):
            out.SetLong(PR_OBJECT_TYPE, MAPI_STORE);
            return true;
        case PROP_ID(PR_RESOURCE_TYPE):
            out.SetLong(PR_RESOURCE_TYPE, MAPI_STORE_PROVIDER);
            return true;
        default:
            return false;
        }
    }

    bool ComputeState(ULONG tag, PropertySet& out)
    {
        const bool writable = AccessGiven() == Access::Write;
        switch (PROP_ID(tag))
        {
        case PROP_ID(PR_VALID_FOLDER_MASK):
            out.SetLong(PR_VALID_FOLDER_MASK, ValidFolders);
            return true;
        case PROP_ID(PR_STORE_SUPPORT_MASK):
            out.SetLong(PR_STORE_SUPPORT_MASK, StoreSupportMask);
            return true;
        case PROP_ID(PR_ACCESS):
            out.SetLong(PR_ACCESS, MAPI_ACCESS_READ | (writable ? MAPI_ACCESS_MODIFY : 0));
            return true;
        case PROP_ID(PR_ACCESS_LEVEL):
            out.SetLong(PR_ACCESS_LEVEL, writable ? 1 : 0);
            return true;
        case PROP_ID(PR_ZEBSTORE_CHECK_W):
            out.SetText(PR_ZEBSTORE_CHECK_W, CheckText());
            return true;
        default:
            return false;
        }
    }

    std::string CheckText()
    {
        std::string text;
        for (const std::string& line : File().CheckWhole())
        {
            text += (text.empty() ? "" : "\n") + line;
        }
        return text.empty() ? "ok" : text;
    }

    PropertySet m_properties;
    const std::shared_ptr<StoreSinks> m_sinks;
};

} // namespace

Ref<IMsgStore> NewStore(const StorePtr& store, Access access)
{
    return Ref<IMsgStore>::Adopt(new StoreObject(store, access));
}

} // namespace zebstore
