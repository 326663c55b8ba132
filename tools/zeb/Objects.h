// How the commands name what they work on: folders by path, messages by number or subject, anything by its
// entry identifier.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/HostSession.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// Whether an argument is an entry identifier and no path: hexadecimal digits only, at least as many as the
/// shortest identifier has.
bool LooksLikeEntryId(const std::string& text);

/// The bytes that hexadecimal text says. @throws UsageError for text that is none
CZebBinary EntryIdFromText(const std::string& text);

/// An entry identifier as a sentence names it: its first and last digits.
std::string NamedEntryId(const std::string& hex);

/// A message and where it was looked for.
struct FoundMessage
{
    CZebBinary entryId;
    std::string name; ///< as a sentence names it
};

/// The folder of the messages, and the messages.
struct FoundMessages
{
    CZebFolder folder{nullptr};
    FolderPath path;
    std::vector<FoundMessage> messages;
};

/// The default store of a profile while one command works on it.
class Mailbox
{
public:
    explicit Mailbox(const std::string& profile);

    CZebSession& Session() { return m_session.Session(); }
    CZebMsgStore& Store() { return m_store; }
    FolderTree& Folders() { return m_folders; }

    /// A folder by path or entry identifier. @throws ToolError naming it
    CZebFolder OpenFolder(const std::string& text);
    /// The path of a folder of the store: below the top folder where it lies there, else below the root.
    FolderPath PathOf(CZebFolder& folder);
    /// Whether a folder is the one that users see as the top of their mail.
    bool IsTop(CZebFolder& folder);
    /// Any object by its entry identifier. @throws ToolError naming it
    CZebPropObj OpenAny(const std::string& hex);
    /// A message of a folder, by its number in the folder (1 is the one that came first), its subject or its
    /// entry identifier. "subject:" before a subject makes it one whatever it looks like.
    /// @throws ToolError when there is none, or several of that subject
    FoundMessage FindMessage(CZebFolder& folder, const FolderPath& path, const std::string& text,
                             bool associated = false);
    /// Messages as a command line names them: a folder and its messages, or entry identifiers of messages
    /// of one folder.
    /// @throws UsageError when no message is named; ToolError
    FoundMessages FindMessages(const std::vector<std::string>& arguments);

private:
    FoundMessages MessagesById(const std::vector<std::string>& identifiers);

    HostSession m_session;
    CZebMsgStore m_store;
    FolderTree m_folders;
    CZebBinary m_top; ///< not valid when the store has none
};

} // namespace zeb::tools
