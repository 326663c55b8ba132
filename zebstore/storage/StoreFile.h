// One store: an SQLite file with folders, messages, named properties.
#pragma once

#include "zebstore/storage/CommitObserver.h"
#include "zebstore/storage/FolderTable.h"
#include "zebstore/storage/NamedPropertyTable.h"
#include "zebstore/storage/ReceiveFolderTable.h"
#include "zebstore/storage/TextIndex.h"

#include <memory>
#include <string>
#include <vector>

namespace zebstore
{

/// One open store file: a connection of its own, and the tables of the file.
///
/// Each public call that writes, here and in the tables, is one transaction: it is done as a whole or, when it throws,
/// not at all. A transaction that was committed survives the death of the process, and with OpenOptions::fullDurability
/// the loss of power too. Two processes may have the same file open. Threads: any; the lock is taken inside. The tables
/// live as long as the store file. Every call may throw Error with MAPI_E_DISK_ERROR, MAPI_E_CORRUPT_STORE,
/// MAPI_E_NOT_ENOUGH_DISK, MAPI_E_BUSY (another process writes for long), MAPI_E_NO_ACCESS (read-only),
/// MAPI_E_NOT_ENOUGH_MEMORY; each text names the file.
class StoreFile
{
public:
    struct OpenOptions
    {
        bool fullDurability = false;
        bool readOnly = false;
        /// Not owned, outlives the store file and its large values; null when there is no observer.
        CommitObserver* observer = nullptr;
    };

    /// Creates a new file with the standard folders and opens it. `path` is UTF-8; `displayName` (UTF-8) becomes the
    /// store's PR_DISPLAY_NAME.
    /// @throws Error MAPI_E_COLLISION when the file exists, MAPI_E_NO_ACCESS when it cannot be created there
    static std::shared_ptr<StoreFile> Create(const std::string& path, const std::string& displayName,
                                             const OpenOptions& options);
    /// Opens a file; header and schema are checked, its content is not. A file of an older version is upgraded; one of
    /// version 2 or 3 that is opened for reading stays as it is, without an address book or checksums.
    /// @throws Error MAPI_E_NOT_FOUND (no such file), MAPI_E_CORRUPT_STORE (not a database, not a store, truncated),
    ///   MAPI_E_VERSION (made by a newer version, or of version 1 and opened for reading), MAPI_E_NO_ACCESS (may not
    ///   be read, or not be written)
    static std::shared_ptr<StoreFile> Open(const std::string& path, const OpenOptions& options);
    static bool Exists(const std::string& path);

    const std::string& Path() const { return m_connection->Path(); }
    bool IsReadOnly() const { return m_connection->IsReadOnly(); }
    /// The schema version of the file: an older one where it is opened for reading only.
    std::int64_t Version() const { return m_connection->Version(); }
    /// Created with the file; the same for all who open it.
    const GUID& Uid() const { return m_uid; }

    /// Checks the whole file. @return a line for each problem; empty when there is none.
    std::vector<std::string> CheckWhole();
    /// @param failure receives the code of the failure that ended the check early, whose text is the last line; else S_OK
    std::vector<std::string> CheckWhole(HRESULT& failure);

    /// The store's own properties.
    PropertySet Properties();
    void SaveProperties(const PropertySet& properties);

    FolderTable& Folders() { return m_folders; }
    MessageTable& Messages() { return m_messages; }
    TextIndex& Texts() { return m_texts; }
    RecipientTable& Recipients() { return m_recipients; }
    AttachmentTable& Attachments() { return m_attachments; }
    ContentsTable& Contents() { return m_contents; }
    NamedPropertyTable& NamedProperties() { return m_namedProperties; }
    ReceiveFolderTable& ReceiveFolders() { return m_receiveFolders; }

    /// A new empty value to write into.
    std::shared_ptr<StagedValue> Stage();
    /// A new value with the content of another (of any store).
    std::shared_ptr<StagedValue> Stage(const LargeValue& value);

    /// The lock around the connection, for a caller that makes several calls which belong together.
    StoreLock& Lock() const { return m_connection->Lock(); }
    StoreConnection& Connection() const { return *m_connection; }

private:
    StoreFile(std::unique_ptr<Database> database, bool readOnly, std::int64_t version);
    void Fill(const std::string& displayName);
    void ReadUid();

    const std::shared_ptr<StoreConnection> m_connection;
    ContentsTable m_contents;
    RecipientTable m_recipients;
    AttachmentTable m_attachments;
    TextIndex m_texts;
    MessageTable m_messages;
    FolderTable m_folders;
    NamedPropertyTable m_namedProperties;
    ReceiveFolderTable m_receiveFolders;
    GUID m_uid{};
};

} // namespace zebstore
