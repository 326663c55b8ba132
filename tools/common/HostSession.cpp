#include "tools/common/HostSession.h"

#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/Profiles.h"
#include "tools/common/StoreUpgrade.h"

#include <algorithm>

namespace zeb::tools
{
namespace
{

/// False when MAPI's profile administration lists no profile of that name.
bool MayExist(const std::string& profile)
{
    try
    {
        CZebProfAdmin administration = CZebProfAdmin::Open();
        const CStringW wanted = WideFromUtf8(profile);
        const std::vector<ProfileEntry> profiles = ListProfiles(administration);
        return std::any_of(profiles.begin(), profiles.end(), [&](const ProfileEntry& each)
        { return WideFromUtf8(each.name).CompareNoCase(wanted) == 0; });
    }
    catch (CException* exception)
    {
        exception->Delete();
        return true;
    }
}

std::string NamedProfile(const std::string& profile)
{
    return profile.empty() ? "the default profile" : "profile '" + ValidUtf8(profile) + "'";
}

/// Only for a terminal: asks the profile for its store's file, because reading the session's table of stores already
/// opens the store.
void AnnounceUpgradeOf(const std::string& profile)
{
    if (!platform::IsTerminal(platform::OutputStream::Error))
    {
        return;
    }
    try
    {
        CZebProfAdmin administration = CZebProfAdmin::Open();
        AnnounceUpgrade(FileOfStore(administration, profile));
    }
    catch (...)
    {
        // The logon reports the problem with the profile.
        CurrentFailure();
    }
}

} // namespace

HostMapi::HostMapi()
{
    try
    {
        Zeb_GetMAPI().Initialize(false);
    }
    catch (...)
    {
        FailWhile("no usable MAPI provider ('zeb doctor' says why)");
    }
}

HostMapi::~HostMapi()
{
    Zeb_GetMAPI().Uninitialize(nullptr);
}

HostSession::HostSession(const std::string& profile)
    : m_profile(profile)
    , m_session(nullptr)
{
    if (profile.empty() && Zeb_GetMAPI().GetDefaultProfileName().IsEmpty())
    {
        throw ToolError("there is no default profile; 'zeb profile list' shows the existing profiles");
    }
    AnnounceUpgradeOf(profile);
    try
    {
        const ProfileName name(profile);
        if (name.IsWide())
        {
            m_session = Zeb_GetMAPI().OpenSessionW(nullptr, name.Wide());
        }
        else
        {
            m_session = Zeb_GetMAPI().OpenSession(nullptr, profile.empty() ? nullptr : name.Narrow());
        }
    }
    catch (...)
    {
        const ToolError failure = CurrentError("logging on to " + NamedProfile(profile) + ": ");
        if (!profile.empty() && !MayExist(profile))
        {
            throw ToolError("there is no " + NamedProfile(profile) + "; 'zeb profile list' shows the existing profiles",
                            failure.Result());
        }
        throw failure;
    }
}

HostSession::~HostSession()
{
    m_session.Logoff(0, 0, 0);
}

CZebMsgStore HostSession::OpenStore()
{
    try
    {
        return m_session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS | MDB_NO_DIALOG);
    }
    catch (...)
    {
        FailWhile("opening the default store of " + NamedProfile(m_profile));
    }
}

std::string TextOf(CZebIProp& object, ULONG wideTag)
{
    CZebPropValArray values;
    object.GetProps(values, 1, wideTag);
    if (values.hasRealValue(wideTag))
    {
        return Utf8(static_cast<CStringW>(values[wideTag]));
    }
    const SPropValue* value = values;
    const bool isLong = PROP_TYPE(value->ulPropTag) == PT_ERROR && value->Value.err == MAPI_E_NOT_ENOUGH_MEMORY;
    return isLong ? Utf8(object.GetLongStringW(wideTag)) : std::string();
}

std::string TextOf(const CZebRow& row, ULONG wideTag)
{
    return row.hasRealValue(wideTag) ? Utf8(static_cast<CStringW>(row[wideTag])) : std::string();
}

LONG NumberOf(const CZebRow& row, ULONG tag)
{
    return row.hasRealValue(tag) ? static_cast<LONG>(row[tag]) : 0;
}

} // namespace zeb::tools
