// The opened store that its objects share.
#pragma once

#include "zebstore/base/EntryId.h"
#include "zebstore/storage/ComputedProperties.h"
#include "zebstore/storage/StoreFile.h"

namespace zebstore
{

/// The store file, its identifiers and its computed properties. Each object of the store holds a reference: the file
/// stays open until the last one is released. Threads: any.
class StoreContext : public std::enable_shared_from_this<StoreContext>
{
public:
    explicit StoreContext(std::shared_ptr<StoreFile> file);

    StoreFile& File() const { return *m_file; }
    const std::shared_ptr<StoreFile>& SharedFile() const { return m_file; }
    const MAPIUID& Uid() const { return m_uid; }
    /// True also when another session opened the same file.
    bool IsSameStore(const StoreContext& other) const;
    /// The store's own identifier.
    const std::vector<BYTE>& EntryId() const { return m_entryId; }

    FolderEntryId IdOfFolder(FolderId folder) const { return MakeFolderEntryId(m_uid, folder); }
    MessageEntryId IdOfMessage(MessageId message) const { return MakeMessageEntryId(m_uid, message); }
    /// An empty identifier is the root folder. @throws Error MAPI_E_INVALID_ENTRYID
    ItemId Parse(const void* bytes, size_t size) const;
    /// @throws Error MAPI_E_INVALID_ENTRYID when it names something else
    FolderId ParseFolder(const void* bytes, size_t size) const;
    MessageId ParseMessage(const SBinary& id) const;
    /// Each identifier of a list; messages only.
    std::vector<MessageId> ParseMessages(const ENTRYLIST* list) const;

    const std::shared_ptr<const ComputedProperties>& Computed() const { return m_computed; }

private:
    std::shared_ptr<StoreFile> m_file;
    MAPIUID m_uid{};
    std::vector<BYTE> m_entryId;
    std::shared_ptr<const ComputedProperties> m_computed;
};

/// The value of PR_STORE_SUPPORT_MASK.
constexpr LONG StoreSupportMask = STORE_ENTRYID_UNIQUE | STORE_MODIFY_OK | STORE_CREATE_OK | STORE_ATTACH_OK |
                                  STORE_NOTIFY_OK | STORE_MV_PROPS_OK | STORE_RESTRICTION_OK | STORE_SORT_OK |
                                  0x00040000 /* STORE_UNICODE_OK */;

/// The provider's own UID (PR_MDB_PROVIDER).
constexpr MAPIUID ProviderUid = {
    {0x5A, 0x45, 0x42, 0x53, 0x74, 0x6F, 0x72, 0x65, 0x8D, 0x2C, 0x41, 0x77, 0xB0, 0x93, 0x1E, 0x64}};

using StorePtr = std::shared_ptr<StoreContext>;

/// True when `tags` has a tag with the identifier of `tag`.
bool HasId(const std::vector<ULONG>& tags, ULONG tag);

/// A text argument of a MAPI method: 16-bit when `flags` has MAPI_UNICODE, else narrow. Null gives an empty text.
/// @return stored text (UTF-8)
std::string TextArgument(const void* text, ULONG flags);

} // namespace zebstore
