#include "zebstore/objects/Defaults.h"

#include "platform/datetime.h"
#include "platform/tags.h"

#include <algorithm>
#include <map>

namespace zebstore
{
namespace
{

void SetKey(PropertySet& out, ULONG tag, const std::string& key)
{
    out.SetBinary(tag, key.data(), key.size());
}

/// The change number in a key of this store; 0 for a key of another store.
std::int64_t NumberOf(const MAPIUID& store, std::string_view key)
{
    const std::string_view own(reinterpret_cast<const char*>(store.ab), sizeof(store.ab));
    if (key.size() != own.size() + sizeof(std::int64_t) || key.substr(0, own.size()) != own)
    {
        return 0;
    }
    std::int64_t number = 0;
    for (const char byte : key.substr(own.size()))
    {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

bool AddSyncKey(const MAPIUID& store, ULONG tag, const MessageOrigin& origin, PropertySet& out)
{
    // A message that is not stored, or is embedded in an attachment, has none.
    if (origin.id == 0)
    {
        return false;
    }
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_SOURCE_KEY):
        SetKey(out, PR_SOURCE_KEY, SyncKey(store, origin.id));
        return true;
    case PROP_ID(PR_PARENT_SOURCE_KEY):
        SetKey(out, PR_PARENT_SOURCE_KEY, SyncKey(store, ContentsKey::Of(origin.id).Folder()));
        return true;
    case PROP_ID(PR_CHANGE_KEY):
        SetKey(out, PR_CHANGE_KEY, SyncKey(store, origin.change()));
        return true;
    default:
        SetKey(out, PR_PREDECESSOR_CHANGE_LIST, WithChange({}, SyncKey(store, origin.change())));
        return true;
    }
}

bool AddTime(ULONG tag, std::int64_t time, PropertySet& out)
{
    if (time != 0)
    {
        out.SetTime(tag, {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)});
    }
    return time != 0;
}

} // namespace

bool IsMessageDefault(ULONG tag)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_IMPORTANCE):
    case PROP_ID(PR_SENSITIVITY):
    case PROP_ID(PR_PRIORITY):
    case PROP_ID(PR_MSG_STATUS):
    case PROP_ID(PR_DISPLAY_TO_W):
    case PROP_ID(PR_DISPLAY_CC_W):
    case PROP_ID(PR_DISPLAY_BCC_W):
    case PROP_ID(PR_SOURCE_KEY):
    case PROP_ID(PR_PARENT_SOURCE_KEY):
    case PROP_ID(PR_CHANGE_KEY):
    case PROP_ID(PR_PREDECESSOR_CHANGE_LIST):
        return true;
    default:
        return false;
    }
}

bool AddMessageDefault(const MAPIUID& store, ULONG tag, const MessageOrigin& origin, PropertySet& out)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_IMPORTANCE):
        out.SetLong(PR_IMPORTANCE, IMPORTANCE_NORMAL);
        return true;
    case PROP_ID(PR_SENSITIVITY):
    case PROP_ID(PR_PRIORITY):
    case PROP_ID(PR_MSG_STATUS):
        out.SetLong(CHANGE_PROP_TYPE(tag, PT_LONG), 0);
        return true;
    case PROP_ID(PR_DISPLAY_TO_W):
    case PROP_ID(PR_DISPLAY_CC_W):
    case PROP_ID(PR_DISPLAY_BCC_W):
        out.SetText(tag, {});
        return true;
    default:
        return IsMessageDefault(tag) && AddSyncKey(store, tag, origin, out);
    }
}

bool AddFolderDefault(const MAPIUID& store, ULONG tag, const FolderTimesReader& times, PropertySet& out)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_CREATION_TIME):
        return AddTime(PR_CREATION_TIME, times().created, out);
    case PROP_ID(PR_LAST_MODIFICATION_TIME):
        return AddTime(PR_LAST_MODIFICATION_TIME, times().modified, out);
    case PROP_ID(PR_CHANGE_KEY):
        SetKey(out, PR_CHANGE_KEY, SyncKey(store, times().modified));
        return true;
    case PROP_ID(PR_PREDECESSOR_CHANGE_LIST):
        SetKey(out, PR_PREDECESSOR_CHANGE_LIST, WithChange({}, SyncKey(store, times().modified)));
        return true;
    default:
        return false;
    }
}

void CompleteChangeKeys(const MAPIUID& store, bool isNext, PropertySet& properties)
{
    if (!properties.Has(PR_CHANGE_KEY) && !properties.Has(PR_PREDECESSOR_CHANGE_LIST))
    {
        return;
    }
    std::string key = properties.Binary(PR_CHANGE_KEY);
    std::string list = properties.Binary(PR_PREDECESSOR_CHANGE_LIST);
    if (isNext || key.empty())
    {
        list = WithChange(list, key);
        key = NextChangeKey(store, key);
        SetKey(properties, PR_CHANGE_KEY, key);
    }
    SetKey(properties, PR_PREDECESSOR_CHANGE_LIST, WithChange(list, key));
}

std::string SyncKey(const MAPIUID& store, std::int64_t number)
{
    std::string key(reinterpret_cast<const char*>(store.ab), sizeof(store.ab));
    for (int shift = 56; shift >= 0; shift -= 8)
    {
        key.push_back(static_cast<char>(static_cast<std::uint64_t>(number) >> shift & 0xFF));
    }
    return key;
}

std::string NextChangeKey(const MAPIUID& store, const std::string& before)
{
    const FILETIME time = zeb::platform::CurrentFileTime();
    const std::int64_t now = static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    return SyncKey(store, std::max(now, NumberOf(store, before) + 1));
}

std::string WithChange(std::string_view list, std::string_view key)
{
    std::map<std::string, std::string> byStore;
    const auto put = [&](std::string_view each)
    {
        if (each.size() > sizeof(MAPIUID) && each.size() <= 0xFF)
        {
            byStore[std::string(each.substr(0, sizeof(MAPIUID)))] = each;
        }
    };
    while (!list.empty())
    {
        const size_t size = static_cast<unsigned char>(list[0]);
        put(list.substr(1, size));
        list.remove_prefix(std::min(size + 1, list.size()));
    }
    put(key);
    std::string merged;
    for (const auto& each : byStore)
    {
        merged.push_back(static_cast<char>(each.second.size()));
        merged += each.second;
    }
    return merged;
}

} // namespace zebstore
