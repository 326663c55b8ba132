// The receiving end of every import: puts folders and messages of any source into one store.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/HostSession.h"
#include "tools/common/Progress.h"
#include "tools/common/PropertyWriter.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace zeb::tools
{

class Importer;

/// Where the messages come from; reads one file or folder tree and hands everything to an Importer.
class MailSource
{
public:
    virtual ~MailSource() = default;
    /// All folders of the source, in the order of the source, above before below.
    virtual std::vector<FolderPath> Folders() = 0;
    /// The number of messages, for the progress; 0 when it is not known beforehand.
    virtual uint64_t MessageCount() = 0;
    /// Hands every folder and message to the importer.
    virtual void Run(Importer& importer) = 0;
};

/// Threads: none of its own.
class Importer
{
public:
    /// @param inbox the source folders that become the inbox
    Importer(HostSession& session, std::vector<FolderPath> inbox, uint64_t messages);

    /// Makes the folder when it is not there, and gives it the properties that the source has for it.
    /// Failures are reported and counted, not thrown.
    void AddFolder(const FolderPath& source, Properties properties);

    /// Reads and adds one message. What `read` or the store throws is reported and counted with `item`, and
    /// nothing of the message is in the store then.
    void AddMessage(const FolderPath& source, bool associated, const std::string& item,
                    const std::function<MessageContent()>& read);

    /// Reports an item that could not be read.
    void Skip(const std::string& item, const std::string& reason);

    uint64_t Messages() const { return m_messages; }
    uint64_t Folders() const { return m_folders; }
    uint64_t Skipped() const { return m_skipped; }

private:
    FolderPath TargetOf(const FolderPath& source) const;
    void ReportRefusals(const std::string& item, const std::vector<Refusal>& refusals);

    CZebMsgStore m_store;
    FolderTree m_tree;
    FolderPath m_inboxTarget;
    std::vector<FolderPath> m_inbox;
    NameResolver m_names;
    std::set<std::string> m_described; ///< the folders that have been given properties
    Progress m_progress;
    uint64_t m_messages = 0, m_folders = 0, m_skipped = 0;
};

} // namespace zeb::tools
