// The target of every import: writes folders and messages of any source to one store.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/HostSession.h"
#include "tools/common/Progress.h"
#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/Duplicates.h"
#include "tools/zeb-import/ImportChoice.h"
#include "tools/zeb-import/Notes.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zeb::tools
{

class Importer;

/// Thrown by the importer between two messages after Ctrl-C.
struct Interruption
{
};

/// A source of messages; reads one file or folder tree and passes everything to an Importer.
class MailSource
{
public:
    virtual ~MailSource() = default;
    /// All folders of the source, in its order, parents before children.
    virtual std::vector<FolderPath> Folders() = 0;
    /// The number of messages, for the progress; 0 when unknown.
    virtual uint64_t MessageCount() = 0;
    /// Passes every folder and message to the importer.
    virtual void Run(Importer& importer) = 0;
};

/// What became of the messages of a source: read = imported + duplicates + older + damaged.
struct MessageCounts
{
    uint64_t read = 0;
    uint64_t imported = 0; ///< in a dry run: to be imported
    uint64_t duplicates = 0;
    uint64_t older = 0; ///< than ImportChoice::since
    uint64_t damaged = 0;
};

/// A folder of the target and the number of messages that were imported into it.
struct FilledFolder
{
    std::string path;
    uint64_t messages = 0;
};

/// Threads: none of its own.
class Importer
{
public:
    /// @param inbox the source folders that become the inbox
    Importer(HostSession& session, const ImportChoice& choice, std::vector<FolderPath> inbox, uint64_t messages);

    /// Creates the folder when it does not exist, and sets the properties of the source's folder. Failures are reported
    /// and counted, not thrown.
    /// @throws Interruption
    void AddFolder(const FolderPath& source, Properties properties);

    /// Reads and adds one message. Exceptions of `read` or of the store are reported with `item` and counted; the store
    /// then contains nothing of the message. A message that the choice leaves out is only counted. Notes of `read` are reported too, and the message counts as repaired.
    /// @throws Interruption
    void AddMessage(const FolderPath& source, bool associated, const std::string& item,
                    const std::function<MessageContent(Notes& notes)>& read);

    /// Reports an item that could not be read.
    void Skip(const std::string& item, const std::string& reason);

    /// Reports a file that is not mail.
    void PassOver(const std::string& item, const std::string& reason);

    /// Clears the progress line.
    void Finish() { m_progress.Clear(); }

    const MessageCounts& Messages() const { return m_counts; }
    /// The target folders, in the order in which the source has them.
    const std::vector<FilledFolder>& Filled() const { return m_filled; }
    uint64_t Folders() const { return m_folders; }
    uint64_t Skipped() const { return m_skipped; }
    uint64_t Repaired() const { return m_repaired; }
    uint64_t PassedOver() const { return m_passedOver; }

private:
    FolderPath TargetOf(const FolderPath& source) const;
    FilledFolder& FilledAt(const FolderPath& target);
    void WriteFolder(const FolderPath& source, const FolderPath& target, Properties properties);
    bool IsLeftOut(const MessageContent& content, const FolderPath& target, bool associated);
    void Write(const FolderPath& target, bool associated, const std::string& item, MessageContent& content);
    void Report(const std::string& item, const std::string& what);
    void ReportNotes(const std::string& item, const Notes& notes);
    void ReportRefusals(const std::string& item, const std::vector<Refusal>& refusals);

    const ImportChoice m_choice;
    CZebMsgStore m_store;
    FolderTree m_tree;
    Duplicates m_duplicates;
    FolderPath m_inboxTarget;
    std::vector<FolderPath> m_inbox;
    NameResolver m_names;
    std::set<std::string> m_described; ///< the folders whose properties have been set
    std::vector<FilledFolder> m_filled;
    std::map<std::string, size_t> m_filledByPath;
    Progress m_progress;
    MessageCounts m_counts;
    uint64_t m_folders = 0, m_skipped = 0, m_repaired = 0, m_passedOver = 0;
};

} // namespace zeb::tools
