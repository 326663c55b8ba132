// Lists the profiles: first from the registry, without MAPI; then through MAPI, with the services of each.
#include "Mapi.h"

/// The services of a profile. IProfAdmin has no wrapper for this: call the interface, check with ThrowIfFailed, and give
/// what it returns to the classes.
void PrintServices(IProfAdmin* admin, const char* profile)
{
    CComPtr<IMsgServiceAdmin> services;
    ThrowIfFailed(
        admin->AdminServices(reinterpret_cast<LPTSTR>(const_cast<char*>(profile)), nullptr, 0, 0, services.Put()),
        admin);
    CComPtr<IMAPITable> found;
    ThrowIfFailed(services->GetMsgServiceTable(0, found.Put()), services);
    for (CZebRow row : CZebTable(found.Get()).Rows({PR_SERVICE_NAME_A, PR_DISPLAY_NAME_A}))
    {
        std::printf("  service %s\n", row[PR_SERVICE_NAME_A].StringUtf8().GetString());
    }
}

int main()
try
{
    CZebProfileNames names;
    const CStringA standard = names.GetDefaultProfile();
    CString name;
    while (names.GetNextName(name) == 1)
    {
        std::printf("%s%s\n", name.GetString(), name == standard ? " (default)" : "");
    }

    Mapi mapi;
    CZebProfAdmin admin = CZebProfAdmin::Open();
    for (CZebRow row : admin.GetProfileTable().Rows({PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE}))
    {
        const CStringA profile = row[PR_DISPLAY_NAME_A];
        std::printf("profile %s\n", profile.GetString());
        PrintServices(admin.GetInterface().Checked(), profile.GetString());
    }
}
catch (...)
{
    return ReportFailure();
}
