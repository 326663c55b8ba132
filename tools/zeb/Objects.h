// How command lines name objects: folders by path, messages by number or subject, any object by its entry identifier.
#pragma once

#include "tools/common/FolderPath.h"
#include "tools/common/HostSession.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// Whether an argument is an entry identifier and not a path: hexadecimal digits only, at least as many as the shortest
/// identifier has.
bool LooksLikeEntryId(const std::string& text);

/// Decodes hexadecimal text. @throws UsageError for other text
CZebBinary EntryIdFromText(const std::string& text);

/// An entry identifier as shown in messages: its first and last digits.
std::string NamedEntryId(const std::string& hex);

/// A message and its name in messages.
struct FoundMessage
{
    CZebBinary entryId;
    std::string name; ///< as shown in messages
};

/// The folder of the messages, and the messages.
struct FoundMessages
{
    CZebFolder folder{nullptr};
    FolderPath path;
    std::vector<FoundMessage> messages;
};

/// A message as shown in messages. @param row with PR_SUBJECT_W
std::string NumberedMessage(const std::string& number, const CZebRow& row, const FolderPath& path);

/// Opens a message through its folder or its store. @return false when it was deleted in the meantime
/// @throws CZebException*
template <class Container>
bool OpenExisting(Container& container, const SBinary& entryId, CZebMessage& message, ULONG flags)
{
    try
    {
        container.OpenEntry(entryId, message, flags);
        return true;
    }
    catch (CZebException* exception)
    {
        if (exception->GetResult() != MAPI_E_NOT_FOUND && exception->GetResult() != MAPI_E_OBJECT_DELETED)
        {
            throw;
        }
        exception->Delete();
        return false;
    }
}

/// All messages of several folders.
std::vector<FoundMessage> AllOf(const std::vector<FoundMessages>& groups);

/// The argument for the lines of standard input.
constexpr const char* InputMark = "-";

/// The default store of a profile for the duration of one command.
class Mailbox
{
public:
    explicit Mailbox(const std::string& profile);

    CZebSession& Session() { return m_session.Session(); }
    CZebMsgStore& Store() { return m_store; }
    FolderTree& Folders() { return m_folders; }

    /// A folder by path or entry identifier. @throws ToolError naming it
    CZebFolder OpenFolder(const std::string& text);
    /// The path of a folder of the store: relative to the top of the IPM subtree when it is in there, else to the root.
    FolderPath PathOf(CZebFolder& folder);
    /// Whether a folder is the top of the IPM subtree.
    bool IsTop(CZebFolder& folder);
    /// Any object by its entry identifier. @throws ToolError naming it
    CZebPropObj OpenAny(const std::string& hex);
    /// A message of a folder, by its number in the folder (1 is the oldest), its subject or its entry identifier. The
    /// prefix "subject:" forces a subject. @throws ToolError when there is none, or several have that subject
    FoundMessage FindMessage(CZebFolder& folder, const FolderPath& path, const std::string& text,
                             bool associated = false);
    /// Messages of a command line: a folder and its messages, each as for FindMessage or numbers and ranges ("1-3,7,12-"),
    /// or entry identifiers of messages. InputMark stands for the lines of standard input.
    /// @return the messages of each folder
    /// @throws UsageError when no message is given; ToolError
    std::vector<FoundMessages> FindMessages(const std::vector<std::string>& arguments);

private:
    std::vector<FoundMessages> MessagesById(const std::vector<std::string>& identifiers);
    void AddMessages(FoundMessages& found, const std::string& text);

    HostSession m_session;
    CZebMsgStore m_store;
    FolderTree m_folders;
    CZebBinary m_top; ///< not valid when the store has no IPM subtree
};

} // namespace zeb::tools
