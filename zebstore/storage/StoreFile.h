// One store: an SQLite file with folders, messages, named properties.
#pragma once

#include "platform/text.h"
#include "zebstore/base/Error.h"
#include "zebstore/storage/PropertySet.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace zebstore
{

class Database;

/// Folders are numbered from 1; a number is never given twice. Below 2^30.
using FolderId = std::int64_t;
/// Messages are numbered by their place: folder, normal or associated, running number. So a message that is
/// moved gets a new identifier; none is ever given twice. Messages inside attachments have the folder 0.
using MessageId = std::int64_t;

constexpr FolderId FolderOf(MessageId message)
{
    return message >> 33;
}
constexpr bool IsAssociated(MessageId message)
{
    return ((message >> 32) & 1) != 0;
}

/// The folders that every store has, by their fixed numbers.
enum class StandardFolder : FolderId
{
    Root = 1,
    IpmSubtree,
    Inbox,
    Outbox,
    DeletedItems,
    SentItems,
    Contacts,
    Finder,
    Views,
    CommonViews,
};
constexpr FolderId IdOf(StandardFolder folder)
{
    return static_cast<FolderId>(folder);
}

struct FolderInfo
{
    FolderId id = 0;
    FolderId parent = 0; ///< 0 for the root
    ULONG type = FOLDER_GENERIC;
    ULONG messages = 0; ///< normal ones
    ULONG unread = 0;   ///< of these
    ULONG associated = 0;
    ULONG subfolders = 0; ///< direct ones
    ULONG depth = 0;      ///< only from FoldersUnder: 1 for a direct subfolder
};

/// As FILETIMEs; 0 where the file does not know.
struct FolderTimes
{
    std::int64_t created = 0;
    std::int64_t modified = 0; ///< when its properties or its parent were last saved; rises with every save
};

struct MessageContent;

/// What happens to one attachment when its message is saved.
struct AttachmentEdit
{
    ULONG number = 0; ///< PR_ATTACH_NUM
    bool removed = false;
    PropertySet properties;
    /// The embedded message as it shall be; null leaves the stored one (if any) as it is.
    std::shared_ptr<MessageContent> embedded;
    bool dropEmbedded = false; ///< removes the stored embedded message
};

/// A message as it is saved. Whatever is not given stays as it is stored.
struct MessageContent
{
    PropertySet properties; ///< all of them: what is not in here is removed
    std::optional<std::vector<PropertySet>> recipients;
    std::vector<AttachmentEdit> attachments; ///< new, changed and removed ones
};

struct StoredMessage
{
    MessageId id = 0;
    std::int64_t change = 0; ///< rises with each save of this message
    PropertySet properties;
};

/// One opened store file: a connection of its own behind one recursive lock.
///
/// Each public call that writes is one transaction: it is done whole or, when it throws, not at all. A
/// transaction that was committed survives the death of the process, and with OpenOptions::fullDurability the
/// loss of power too. Two processes may have the same file open. Threads: any; the lock is taken inside.
/// Properties that the store sets itself when a message is saved: PR_MESSAGE_SIZE, PR_HASATTACH and
/// MSGFLAG_HASATTACH in PR_MESSAGE_FLAGS. Every call may throw Error with MAPI_E_DISK_ERROR,
/// MAPI_E_CORRUPT_STORE, MAPI_E_NOT_ENOUGH_DISK, MAPI_E_BUSY (another process writes for long),
/// MAPI_E_NO_ACCESS (read-only), MAPI_E_NOT_ENOUGH_MEMORY; each text names the file.
class StoreFile : public std::enable_shared_from_this<StoreFile>
{
public:
    struct OpenOptions
    {
        bool fullDurability = false;
        bool readOnly = false;
    };

    /// Makes a new file with the standard folders and opens it. `path` is UTF-8; `displayName` (UTF-8)
    /// becomes the store's PR_DISPLAY_NAME.
    /// @throws Error MAPI_E_COLLISION when the file exists, MAPI_E_NO_ACCESS when it can not be made there
    static std::shared_ptr<StoreFile> Create(const std::string& path, const std::string& displayName,
                                             const OpenOptions& options);
    /// Opens a file; header and schema are checked, its content is not. A file of an older version is brought to
    /// this one; opened for reading one of version 2 or 3 stays as it is, without an address book or checksums.
    /// @throws Error MAPI_E_NOT_FOUND (no such file), MAPI_E_CORRUPT_STORE (not a database, not a store, truncated),
    ///   MAPI_E_VERSION (made by a newer version, or of version 1 and opened for reading), MAPI_E_NO_ACCESS (may not be read, or not be written)
    static std::shared_ptr<StoreFile> Open(const std::string& path, const OpenOptions& options);
    static bool Exists(const std::string& path);

    ~StoreFile();

    const std::string& Path() const { return m_path; }
    bool IsReadOnly() const { return m_readOnly; }
    /// The schema version of the file: an older one where it is opened for reading only.
    std::int64_t Version() const { return m_version; }
    /// @throws Error MAPI_E_NO_ACCESS, naming the file, when it can only be read
    void RequireWritable() const;
    /// Made with the file; the same for all who open it.
    const GUID& Uid() const { return m_uid; }

    /// Checks the whole file. @return a line for each problem; empty when there is none.
    std::vector<std::string> CheckWhole();

    /// The lock around the connection, for a caller that makes several calls which belong together.
    std::recursive_mutex& Lock() const { return m_lock; }

    // The store's own properties.
    PropertySet Properties();
    void SaveProperties(const PropertySet& properties);

    // Folders. MAPI_E_NOT_FOUND for a number that is not there (any more).
    FolderInfo Folder(FolderId folder);
    bool FolderExists(FolderId folder);
    PropertySet FolderProperties(FolderId folder);
    FolderTimes TimesOfFolder(FolderId folder);
    /// Direct subfolders, or the whole tree below in depth-first order, siblings by name.
    std::vector<FolderInfo> FoldersUnder(FolderId folder, bool wholeTree);
    /// Compares without case. @return 0 when there is none.
    FolderId FindFolder(FolderId parent, std::string_view utf8Name);
    /// `properties` holds PR_DISPLAY_NAME. @throws Error MAPI_E_COLLISION when the parent has a folder of
    /// this name,
    ///   MAPI_E_INVALID_PARAMETER without a name, MAPI_E_TOO_COMPLEX beyond 500 levels
    FolderId CreateFolder(FolderId parent, const PropertySet& properties, ULONG type = FOLDER_GENERIC);
    /// @throws Error MAPI_E_COLLISION when the new name is taken
    void SaveFolderProperties(FolderId folder, const PropertySet& properties);
    /// @throws Error MAPI_E_HAS_FOLDERS, MAPI_E_HAS_MESSAGES when it has content that is not to be deleted
    /// with it,
    ///   MAPI_E_NO_ACCESS for a standard folder
    void DeleteFolder(FolderId folder, bool withMessages, bool withFolders);
    /// @throws Error MAPI_E_FOLDER_CYCLE, MAPI_E_COLLISION, MAPI_E_NO_ACCESS for a standard folder
    void MoveFolder(FolderId folder, FolderId newParent, std::string_view newUtf8Name);
    /// Deletes all messages and subfolders; standard folders below stay and are emptied.
    void EmptyFolder(FolderId folder, bool withAssociated);
    /// True when `folder` is `ancestor` or lies below it.
    bool IsWithin(FolderId folder, FolderId ancestor);

    // Messages. MAPI_E_NOT_FOUND for one that is not there (any more).
    MessageId CreateMessage(FolderId folder, bool associated, const MessageContent& content);
    /// @param change the StoredMessage::change that the caller's content is based on; 0 overwrites whatever
    /// is there.
    /// @return the message's new change number.
    /// @throws Error MAPI_E_OBJECT_CHANGED when somebody saved it since, MAPI_E_OBJECT_DELETED when it is gone
    std::int64_t SaveMessage(MessageId message, const MessageContent& content, std::int64_t change);
    StoredMessage LoadMessage(MessageId message);
    bool MessageExists(MessageId message);
    /// A message with all that belongs to it, fit for CreateMessage here or in another store.
    MessageContent LoadWhole(MessageId message);
    /// Those that are not there are passed over. @return how many were deleted
    size_t DeleteMessages(const std::vector<MessageId>& messages);
    /// Keeps normal and associated apart. @return the new identifiers, 0 for one that was not there
    std::vector<MessageId> MoveMessages(const std::vector<MessageId>& messages, FolderId folder);
    std::vector<MessageId> CopyMessages(const std::vector<MessageId>& messages, FolderId folder);
    /// Sets and clears bits of PR_MESSAGE_FLAGS without touching anything else.
    void ChangeMessageFlags(const std::vector<MessageId>& messages, ULONG set, ULONG clear);
    /// All messages of a folder in their natural order.
    std::vector<MessageId> MessagesOf(FolderId folder, bool associated);

    std::vector<PropertySet> Recipients(MessageId message);
    /// In ascending order.
    std::vector<ULONG> AttachmentNumbers(MessageId message);
    PropertySet Attachment(MessageId message, ULONG number);
    std::optional<MessageId> EmbeddedMessage(MessageId message, ULONG number);

    // Named properties: stable numbers 0x8000 to 0xFFFE for this file.
    /// @param create gives a new name a number. @return property identifiers, 0 for an unknown name
    /// @throws Error 0x80040900 (MAPI_E_NAMED_PROP_QUOTA_EXCEEDED) when all are given
    std::vector<ULONG> IdsFromNames(const MAPINAMEID* const* names, size_t count, bool create);
    struct PropertyName
    {
        ULONG id = 0;
        GUID set{};
        std::optional<LONG> number;     ///< MNID_ID
        zeb::platform::WideString name; ///< MNID_STRING, when there is no number
    };
    std::optional<PropertyName> NameFromId(ULONG id);
    /// All names, in the order of their numbers.
    std::vector<PropertyName> AllNames();

    // Receive folders. Classes are ASCII and compare without case; "" is the default.
    struct ReceiveFolder
    {
        std::string messageClass;
        FolderId folder = 0;
    };
    /// The folder of the longest class that is `messageClass` or one of its super-classes.
    ReceiveFolder ReceiveFolderOf(const std::string& messageClass);
    /// folder 0 removes the entry. @throws Error MAPI_E_INVALID_PARAMETER for removing the default
    void SetReceiveFolder(const std::string& messageClass, FolderId folder);
    std::vector<ReceiveFolder> ReceiveFolders();

    /// A new empty value to write into.
    std::shared_ptr<StagedValue> Stage();
    /// A new value with the content of another (of any store).
    std::shared_ptr<StagedValue> Stage(const LargeValue& value);

    /// Compares a place's count of its rows with the rows that can be read.
    /// @throws Error MAPI_E_CORRUPT_STORE when they differ: rows are lost, or rows of another place seen
    void RequireAllRows(FolderId folder, bool associated);

    /// Rises whenever rows of this place may have changed, also by another process: the messages of a folder,
    /// or with folder 0 the folder tree.
    std::uint64_t Generation(FolderId folder, bool associated);
    /// How many rows this place has.
    ULONG Rows(FolderId folder, bool associated);

    /// Becomes another number with each change of the folder tree or of any folder's messages.
    std::uint64_t ChangeStamp();

    /// The connection, for the storage's own parts; only under Lock().
    Database& Connection() { return *m_database; }

private:
    /// What a place of rows says of itself.
    struct Place
    {
        std::uint64_t generation = 0;
        ULONG rows = 0;
    };

    StoreFile();
    void ReadUid();
    Place PlaceOf(FolderId folder, bool associated);
    Place ReadPlace(std::int64_t container);

    std::string m_path;
    bool m_readOnly = false;
    std::int64_t m_version = 0;
    GUID m_uid{};
    mutable std::recursive_mutex m_lock;
    std::unique_ptr<Database> m_database;
    // What was read since the last commit, and the number of that.
    std::unordered_map<std::int64_t, Place> m_places;
    std::uint64_t m_placesOf = 0;
};

} // namespace zebstore
