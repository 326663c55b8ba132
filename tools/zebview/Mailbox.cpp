#include "tools/zebview/Mailbox.h"

namespace zeb::view
{

Mailbox::Mailbox(const std::string& profile)
    : m_session(profile)
    , m_store(m_session.OpenStore())
    , m_book(nullptr)
{
}

CZebAddressBook& Mailbox::Book()
{
    if (!m_book.IsValid())
    {
        m_book = Session().OpenAddressBook(nullptr, AB_NO_DIALOG);
    }
    return m_book;
}

std::string Mailbox::StoreName()
{
    return tools::TextOf(m_store, PR_DISPLAY_NAME_W);
}

CZebFolder Mailbox::TopFolder(bool all)
{
    return all ? m_store.OpenRootFolder(MAPI_BEST_ACCESS)
               : m_store.OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
}

std::string KeyOf(const SBinary& entryId)
{
    return {reinterpret_cast<const char*>(entryId.lpb), entryId.cb};
}

SBinary EntryIdOf(const std::string& key)
{
    SBinary entryId;
    entryId.cb = static_cast<ULONG>(key.size());
    entryId.lpb = reinterpret_cast<BYTE*>(const_cast<char*>(key.data()));
    return entryId;
}

} // namespace zeb::view
