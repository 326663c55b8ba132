#include "tools/common/Profiles.h"

#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "zebstore/zebstore.h"

#include <algorithm>

namespace zeb::tools
{
namespace
{

std::vector<ProfileEntry> Read(CZebTable& table, ULONG nameTag)
{
    std::vector<ProfileEntry> entries;
    for (CZebRow row : table.Rows({nameTag, PR_DEFAULT_PROFILE}))
    {
        ProfileEntry entry;
        if (nameTag == PR_DISPLAY_NAME_W)
        {
            entry.name = TextOf(row, nameTag);
        }
        else if (row.hasRealValue(nameTag))
        {
            entry.name = Utf8FromNarrow(static_cast<const char*>(static_cast<CStringA>(row[nameTag])));
        }
        entry.isDefault = row.hasRealValue(PR_DEFAULT_PROFILE) && static_cast<bool>(row[PR_DEFAULT_PROFILE]);
        entries.push_back(std::move(entry));
    }
    return entries;
}

} // namespace

ProfileName::ProfileName(const std::string& name)
    : m_narrow(NarrowFromUtf8(name).c_str())
    , m_wide(WideFromUtf8(name))
    , m_isWide(Utf8FromNarrow(static_cast<const char*>(m_narrow)) != ValidUtf8(name))
{
}

LPTSTR ProfileName::Text() const
{
    const void* text = m_isWide ? static_cast<const void*>(Wide()) : Narrow();
    return static_cast<LPTSTR>(const_cast<void*>(text));
}

std::vector<ProfileEntry> ListProfiles(CZebProfAdmin& administration)
{
    CZebTable table = administration.GetProfileTable();
    std::vector<ProfileEntry> entries = Read(table, PR_DISPLAY_NAME_W);
    // Some providers support only narrow names.
    if (std::any_of(entries.begin(), entries.end(), [](const ProfileEntry& each) { return each.name.empty(); }))
    {
        entries = Read(table, PR_DISPLAY_NAME_A);
    }
    return entries;
}

std::string NameOfProfile(CZebProfAdmin& administration, const std::string& profile)
{
    if (!profile.empty())
    {
        return profile;
    }
    for (const ProfileEntry& each : ListProfiles(administration))
    {
        if (each.isDefault)
        {
            return each.name;
        }
    }
    return {};
}

std::string FileOfStore(CZebProfAdmin& administration, const std::string& profile)
{
    const std::string name = NameOfProfile(administration, profile);
    const ProfileName asked(name);
    IProfAdmin* const profiles = administration.GetInterface().Checked();
    CComPtr<IMsgServiceAdmin> services;
    try
    {
        ThrowIfFailed(profiles->AdminServices(asked.Text(), nullptr, 0, asked.Flags(), services.Put()), profiles);
    }
    catch (...)
    {
        FailWhile("cannot read profile '" + ValidUtf8(name) + "'");
    }
    CComPtr<IMAPITable> raw;
    ThrowIfFailed(services->GetMsgServiceTable(0, raw.Put()), services);
    for (CZebRow row : CZebTable(raw.Get()).Rows({PR_ZEBSTORE_PATH_W}))
    {
        if (row.hasRealValue(PR_ZEBSTORE_PATH_W))
        {
            return TextOf(row, PR_ZEBSTORE_PATH_W);
        }
    }
    return {};
}

} // namespace zeb::tools
