#include "tools/zeb-import/Duplicates.h"

#include "platform/tags.h"
#include "tools/common/Failure.h"
#include "tools/common/PropertyValues.h"
#include "tools/zeb-import/MessageKey.h"

namespace zeb::tools
{
namespace
{

constexpr ULONG KeyColumns[] = {PR_INTERNET_MESSAGE_ID_W, PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME};

/// The columns of a row that the short key is made of.
Properties KeyProperties(const CZebRow& row)
{
    Properties properties;
    for (const ULONG tag : KeyColumns)
    {
        if (row.hasRealValue(tag))
        {
            Property& property = properties.emplace_back();
            property.tag = tag;
            property.values = ValueBytes(row[tag]);
        }
    }
    return properties;
}

} // namespace

Duplicates::Known& Duplicates::KnownIn(const FolderPath& target, bool associated)
{
    const auto [entry, isNew] = m_known.try_emplace((associated ? "a" : "m") + target.Text());
    if (!isNew)
    {
        return entry->second;
    }
    CZebFolder* const folder = m_folders.IfExists(target);
    if (folder != nullptr)
    {
        CZebTable table = folder->GetContentsTable(MAPI_UNICODE | (associated ? MAPI_ASSOCIATED : 0));
        for (const CZebRow row :
             table.Rows({PR_ENTRYID, PR_INTERNET_MESSAGE_ID_W, PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME}))
        {
            entry->second.unread[ShortKeyOf(KeyProperties(row))].emplace_back(
                static_cast<const SBinary&>(row[PR_ENTRYID]));
        }
    }
    return entry->second;
}

void Duplicates::Open(Known& known, const std::string& shortKey, const FolderPath& target)
{
    const auto candidates = known.unread.find(shortKey);
    if (candidates == known.unread.end())
    {
        return;
    }
    for (const CZebBinary& entryId : candidates->second)
    {
        CZebMessage message;
        m_folders.Existing(target).OpenEntry(entryId, message, 0);
        known.keys.insert(KeyOf(m_reader.ReadMessage(message)));
    }
    known.unread.erase(candidates);
    m_reader.TakeUnread();
}

bool Duplicates::Has(const MessageContent& content, const FolderPath& target, bool associated)
{
    const std::string key = KeyOf(content);
    if (m_run.count(key) != 0)
    {
        return true;
    }
    Known& known = KnownIn(target, associated);
    Open(known, ShortKeyOf(content.properties), target);
    return known.keys.count(key) != 0;
}

} // namespace zeb::tools
