#include "tools/common/HostSession.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"

namespace zeb::tools
{
namespace
{

/// False when MAPI's administration, asked for its profiles, has none of that name.
bool MayExist(const std::string& profile)
{
    try
    {
        CZebProfAdmin profiles = CZebProfAdmin::Open();
        CZebTable table = profiles.GetProfileTable();
        CZebRowSet rows;
        table.QueryAllRows(&rows, nullptr, nullptr);
        for (ULONG i = 0; i < rows.Count(); ++i)
            if (static_cast<CStringA>(rows[i][PR_DISPLAY_NAME_A]).CompareNoCase(profile.c_str()) == 0)
                return true;
        return false;
    }
    catch (CException* exception)
    {
        exception->Delete();
        return true;
    }
}

std::string NamedProfile(const std::string& profile)
{
    return profile.empty() ? "the default profile" : "profile '" + Utf8FromNarrow(profile) + "'";
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
    : m_session(nullptr)
{
    if (profile.empty() && Zeb_GetMAPI().GetDefaultProfileName().IsEmpty())
        throw ToolError("there is no default profile; 'zeb profile list' shows the profiles there are");
    try
    {
        m_session = Zeb_GetMAPI().OpenSession(nullptr, profile.empty() ? nullptr : profile.c_str());
    }
    catch (...)
    {
        const std::string failure = CurrentFailure();
        if (!profile.empty() && !MayExist(profile))
            throw ToolError("there is no " + NamedProfile(profile) +
                            "; 'zeb profile list' shows the profiles there are");
        throw ToolError("logging on to " + NamedProfile(profile) + ": " + failure);
    }
}

HostSession::~HostSession()
{
    m_session.Logoff(0, 0, 0);
}

CZebMsgStore HostSession::OpenStore()
{
    return m_session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS | MDB_NO_DIALOG);
}

std::string TextOf(CZebIProp& object, ULONG wideTag)
{
    CZebPropValArray values;
    object.GetProps(values, 1, wideTag);
    if (values.hasRealValue(wideTag))
        return Utf8(static_cast<CStringW>(values[wideTag]));
    const SPropValue* value = values;
    const bool isLong =
        PROP_TYPE(value->ulPropTag) == PT_ERROR && value->Value.err == MAPI_E_NOT_ENOUGH_MEMORY;
    return isLong ? Utf8(object.GetLongStringW(wideTag)) : std::string();
}

std::string TextOf(const CZebRow& row, ULONG wideTag)
{
    return row.hasRealValue(wideTag) ? Utf8(static_cast<CStringW>(row[wideTag])) : std::string();
}

} // namespace zeb::tools
