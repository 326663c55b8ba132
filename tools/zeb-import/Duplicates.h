// The messages that are already there.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/PropertyReader.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace zeb::tools
{

/// Knows the messages of the target folders and those of this run, by their keys (MessageKey.h).
class Duplicates
{
public:
    /// @param folders of the target; must outlive the object
    explicit Duplicates(FolderTree& folders)
        : m_folders(folders)
    {
    }

    /// Whether the folder has a message with that content, or one came before in this run. Opens nothing but messages
    /// with the same Message-ID and date. @throws CZebException*, ToolError
    bool Has(const MessageContent& content, const FolderPath& target, bool associated);

    /// Remembers a message of this run by its key.
    void Add(const std::string& key) { m_run.insert(key); }

private:
    /// The messages of a folder before this run, by their short keys.
    struct Known
    {
        std::map<std::string, std::vector<CZebBinary>> unread; ///< not yet opened
        std::set<std::string> keys;                            ///< of those that were opened
    };

    Known& KnownIn(const FolderPath& target, bool associated);
    void Open(Known& known, const std::string& shortKey, const FolderPath& target);

    FolderTree& m_folders;
    PropertyReader m_reader{ReadWhat::Values};
    std::map<std::string, Known> m_known;
    std::set<std::string> m_run;
};

} // namespace zeb::tools
