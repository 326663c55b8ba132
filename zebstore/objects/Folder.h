// IMAPIFolder.
#pragma once

#include "zebstore/objects/OwnFolder.h"
#include "zebstore/objects/PropObject.h"

namespace zebstore
{

/// One folder. Its properties are saved as they are set. Threads: any.
class Folder final : public PropObject<OwnFolder>
{
public:
    Folder(const StorePtr& store, FolderId folder, Access access)
        : PropObject(store, access)
        , m_folder(folder)
    {
    }

    // OwnFolder
    const StorePtr& StoreOfFolder() const override { return Store(); }
    FolderId Id() const override { return m_folder; }
    void RequireChanges() const override { RequireWrite(); }

    // IMAPIContainer
    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override;
    HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction restriction, LPENTRYLIST containers,
                                                ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG flags, LPSRestriction* restriction, LPENTRYLIST* containers,
                                                ULONG* state) override;

    // IMAPIFolder
    HRESULT STDMETHODCALLTYPE CreateMessage(LPCIID iid, ULONG flags, LPMESSAGE* message) override;
    HRESULT STDMETHODCALLTYPE CopyMessages(LPENTRYLIST list, LPCIID iid, LPVOID target, ULONG_PTR window,
                                           LPMAPIPROGRESS progress, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE DeleteMessages(LPENTRYLIST list, ULONG_PTR window, LPMAPIPROGRESS progress,
                                             ULONG flags) override;
    HRESULT STDMETHODCALLTYPE CreateFolder(ULONG type, LPTSTR name, LPTSTR comment, LPCIID iid, ULONG flags,
                                           LPMAPIFOLDER* folder) override;
    HRESULT STDMETHODCALLTYPE CopyFolder(ULONG size, LPENTRYID id, LPCIID iid, LPVOID target, LPTSTR name,
                                         ULONG_PTR window, LPMAPIPROGRESS progress, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE DeleteFolder(ULONG size, LPENTRYID id, ULONG_PTR window, LPMAPIPROGRESS progress,
                                           ULONG flags) override;
    HRESULT STDMETHODCALLTYPE SetReadFlags(LPENTRYLIST list, ULONG_PTR window, LPMAPIPROGRESS progress,
                                           ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetMessageStatus(ULONG size, LPENTRYID id, ULONG flags, ULONG* status) override;
    HRESULT STDMETHODCALLTYPE SetMessageStatus(ULONG size, LPENTRYID id, ULONG status, ULONG mask, ULONG* old) override;
    HRESULT STDMETHODCALLTYPE SaveContentsSort(LPSSortOrderSet order, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE EmptyFolder(ULONG_PTR window, LPMAPIPROGRESS progress, ULONG flags) override;

private:
    bool Answers(REFIID iid) const override;
    const PropertySet& Stored() override;
    bool Compute(ULONG tag, PropertySet& out) override;
    const std::vector<ULONG>& ComputedTags() override;
    bool Lists(ULONG tag) override;
    bool Default(ULONG tag, PropertySet& out) override;
    void Edit(const std::function<void(PropertySet&)>& change) override;
    void Save(ULONG) override {}
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags) override;
    std::vector<ULONG> ObjectTags() override
    {
        return {PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY, PR_FOLDER_ASSOCIATED_CONTENTS};
    }

    IMAPITable* Contents(ULONG flags);
    IMAPITable* Hierarchy(ULONG flags);
    /// The messages of a list that are in this folder; the rest is counted in `others`.
    std::vector<MessageId> MessagesHere(const ENTRYLIST* list, size_t& others) const;
    MessageId MessageHere(ULONG size, const ENTRYID* id) const;

    const FolderId m_folder;
    PropertySet m_properties;
};

/// IMAPIFolder. @throws Error MAPI_E_NOT_FOUND when the folder no longer exists
Ref<IMAPIFolder> OpenFolder(const StorePtr& store, FolderId folder, Access access);

/// Opens a folder or message by its identifier (empty: the root folder), as IMsgStore::OpenEntry does.
/// @param iid null: the object's own interface
/// @param most the access that MAPI_BEST_ACCESS grants
/// @return the interface, owned by the caller
IUnknown* OpenItem(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                   ULONG* objectType);

} // namespace zebstore
