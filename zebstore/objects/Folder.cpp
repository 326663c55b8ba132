#include "zebstore/objects/Folder.h"

#include "platform/datetime.h"
#include "zebstore/objects/Defaults.h"
#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/Message.h"
#include "zebstore/objects/OpenFlags.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/HierarchyRows.h"
#include "zebstore/storage/MemoryRows.h"
#include "zebstore/tables/Table.h"

namespace zebstore
{
namespace
{

// Only this provider's folders answer to it: it identifies our own folders among those that a host passes in.
constexpr IID OwnFolderId = {0x7B1D8A52, 0x3C5E, 0x4F0B, {0x9A, 0x41, 0x66, 0xE2, 0x0D, 0x57, 0xB8, 0x13}};
constexpr ULONG PrContactsFolder = PROP_TAG(PT_BINARY, 0x36D1);

/// The table of recoverable deleted items: deletions are permanent, so it has no rows.
std::shared_ptr<RowSource> NothingOf(const ComputedProperties& computed)
{
    return std::make_shared<MemoryRows>(std::vector<PropertySet>(), computed.MessageTags());
}

} // namespace

Ref<IMAPIFolder> OpenFolder(const StorePtr& store, FolderId folder, Access access)
{
    store->File().Folders().Info(folder);
    return Ref<IMAPIFolder>::Adopt(new Folder(store, folder, access));
}

IUnknown* OpenItem(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                   ULONG* objectType)
{
    RequireFlags(flags, OpenEntryFlags | ShowSoftDeletes);
    const ItemId item = store->Parse(id, size);
    const Access access = AccessFor(flags, most);
    IUnknown* answer = nullptr;
    if (item.objectType == MAPI_FOLDER)
    {
        answer = Answer(OpenFolder(store, item.key, access).Get(), iid);
    }
    else
    {
        answer = Answer(OpenMessage(store, item.key, access).Get(), iid);
    }
    if (objectType)
    {
        *objectType = item.objectType;
    }
    return answer;
}

Folder* OwnFolder(void* object)
{
    void* asked = nullptr;
    if (!object || FAILED(static_cast<IUnknown*>(object)->QueryInterface(OwnFolderId, &asked)))
    {
        return nullptr;
    }
    const Ref<IMAPIFolder> folder = Ref<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(asked));
    return static_cast<Folder*>(folder.Get());
}

bool Folder::Answers(REFIID iid) const
{
    return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMAPIContainer, &IID_IMAPIFolder, &OwnFolderId});
}

const PropertySet& Folder::Stored()
{
    m_properties = File().Folders().Properties(m_folder);
    return m_properties;
}

const std::vector<ULONG>& Folder::ComputedTags()
{
    static const std::vector<ULONG> folders = {
        PR_ENTRYID,           PR_RECORD_KEY,       PR_PARENT_ENTRYID, PR_OBJECT_TYPE,         PR_ACCESS,
        PR_STORE_ENTRYID,     PR_STORE_RECORD_KEY, PR_INSTANCE_KEY,   PR_ACCESS_LEVEL,        PR_STORE_SUPPORT_MASK,
        PR_MAPPING_SIGNATURE, PR_CONTENT_COUNT,    PR_CONTENT_UNREAD, PR_ASSOC_CONTENT_COUNT, PR_SUBFOLDERS,
        PR_FOLDER_TYPE,       PrSourceKey,         PrParentSourceKey};
    static const std::vector<ULONG> inbox = []
    {
        std::vector<ULONG> tags = folders;
        tags.push_back(PrContactsFolder);
        return tags;
    }();
    return m_folder == IdOf(StandardFolder::Inbox) ? inbox : folders;
}

bool Folder::Compute(ULONG tag, PropertySet& out)
{
    if (PROP_ID(tag) == PROP_ID(PR_ACCESS_LEVEL))
    {
        out.SetLong(PR_ACCESS_LEVEL, AccessGiven() == Access::Write ? 1 : 0);
        return true;
    }
    if (!HasId(ComputedTags(), tag))
    {
        return false;
    }
    return Store()->Computed()->OfFolder(tag, File().Folders().Info(m_folder), out);
}

// Not listed: synchronizing clients ask for these by tag.
bool Folder::Lists(ULONG tag)
{
    return PROP_ID(tag) != PROP_ID(PrSourceKey) && PROP_ID(tag) != PROP_ID(PrParentSourceKey);
}

bool Folder::Default(ULONG tag, PropertySet& out)
{
    const auto times = [this] { return File().Folders().Times(m_folder); };
    return Store()->Computed()->DefaultOfFolder(tag, times, out);
}

void Folder::Edit(const std::function<void(PropertySet&)>& change)
{
    const std::lock_guard<std::recursive_mutex> hold(File().Lock());
    const PropertySet before = File().Folders().Properties(m_folder);
    PropertySet properties = before;
    change(properties);
    CompleteChangeKeys(Store()->Uid(), properties.Binary(PrChangeKey) == before.Binary(PrChangeKey), properties);
    // A time that a client wrote holds until the next change.
    if (before.Has(PR_LAST_MODIFICATION_TIME) &&
        properties.Find(PR_LAST_MODIFICATION_TIME).bytes == before.Find(PR_LAST_MODIFICATION_TIME).bytes)
    {
        properties.SetTime(PR_LAST_MODIFICATION_TIME, zeb::platform::CurrentFileTime());
    }
    File().Folders().SaveProperties(m_folder, properties);
}

IUnknown* Folder::OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags)
{
    const bool contents = PROP_ID(tag) == PROP_ID(PR_CONTAINER_CONTENTS);
    const bool associated = PROP_ID(tag) == PROP_ID(PR_FOLDER_ASSOCIATED_CONTENTS);
    if (!IsEqualGUID(iid, IID_IMAPITable) ||
        (!contents && !associated && PROP_ID(tag) != PROP_ID(PR_CONTAINER_HIERARCHY)))
    {
        return PropBase::OpenObject(tag, iid, options, flags);
    }
    if (contents || associated)
    {
        return Contents((options & MAPI_UNICODE) | (associated ? MAPI_ASSOCIATED : 0));
    }
    return Hierarchy(options & (MAPI_UNICODE | CONVENIENT_DEPTH));
}

IMAPITable* Folder::Contents(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_ASSOCIATED | MAPI_DEFERRED_ERRORS | ShowSoftDeletes);
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    if (flags & ShowSoftDeletes)
    {
        return CreateTable(NothingOf(*Store()->Computed()), options).Detach();
    }
    return CreateTable(
               MakeContentsRows(Store()->SharedFile(), {m_folder, (flags & MAPI_ASSOCIATED) != 0}, Store()->Computed()),
               options)
        .Detach();
}

IMAPITable* Folder::Hierarchy(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | CONVENIENT_DEPTH | MAPI_DEFERRED_ERRORS | ShowSoftDeletes);
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    if (flags & ShowSoftDeletes)
    {
        return CreateTable(NothingOf(*Store()->Computed()), options).Detach();
    }
    return CreateTable(
               MakeHierarchyRows(Store()->SharedFile(), m_folder, (flags & CONVENIENT_DEPTH) != 0, Store()->Computed()),
               options)
        .Detach();
}

HRESULT Folder::GetContentsTable(ULONG flags, LPMAPITABLE* table)
{
    return Guarded("IMAPIContainer::GetContentsTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = Contents(flags);
    });
}

HRESULT Folder::GetHierarchyTable(ULONG flags, LPMAPITABLE* table)
{
    return Guarded("IMAPIContainer::GetHierarchyTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = Hierarchy(flags);
    });
}

HRESULT Folder::OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType, LPUNKNOWN* object)
{
    return Guarded("IMAPIContainer::OpenEntry", [&]
    {
        Require(object != nullptr, "the output pointer is null");
        *object = nullptr;
        const Access most = File().IsReadOnly() ? Access::Read : Access::Write;
        *object = OpenItem(Store(), size, id, iid, flags, most, objectType);
    });
}

HRESULT Folder::SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG)
{
    return Guarded("IMAPIContainer::SetSearchCriteria",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "the store has no search folders"); });
}

HRESULT Folder::GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*)
{
    return Guarded("IMAPIContainer::GetSearchCriteria",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "the store has no search folders"); });
}

} // namespace zebstore
