// The store and the address book of a profile.
#pragma once

#include "tools/common/HostSession.h"

#include <string>

namespace zeb::view
{

/// Open as long as the object lives. What is opened from it must be released before.
class Mailbox
{
public:
    /// @param profile UTF-8; empty: the default profile @throws ToolError with the reason and its code
    explicit Mailbox(const std::string& profile);

    CZebSession& Session() { return m_session.Session(); }
    CZebMsgStore& Store() { return m_store; }
    /// Opened when it is first asked for. @throws CZebException*
    CZebAddressBook& Book();
    /// The display name of the store, UTF-8.
    std::string StoreName();
    /// @param all the root of the store, instead of the top of the mail folders
    CZebFolder TopFolder(bool all);

private:
    tools::HostSession m_session;
    CZebMsgStore m_store;
    CZebAddressBook m_book;
};

/// An entry identifier as a key for look-ups.
std::string KeyOf(const SBinary& entryId);
SBinary EntryIdOf(const std::string& key);

} // namespace zeb::view
