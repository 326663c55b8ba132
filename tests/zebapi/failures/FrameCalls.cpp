// The library object: finding, loading, starting and stopping a provider, logging
// on; and what is read from the registry.
#include "Calls.h"

namespace zeb::test
{

const std::vector<Call<FrameWorld>>& FrameCalls()
{
    static const std::vector<Call<FrameWorld>> calls = {
        {"CZebAPI::CZebAPI", [](FrameWorld&) { CZebAPI other; }},
        {"CZebAPI::GetDefaultProfileName", [](FrameWorld& w) { w.Library().GetDefaultProfileName(); }},
        {"CZebAPI::GetGlobalMAPICriticalSection", [](FrameWorld& w) { w.Library().GetGlobalMAPICriticalSection(); }},
        {"CZebAPI::GetWABAddressBook", [](FrameWorld& w) { w.Library().GetWABAddressBook(false); }},
        {"CZebAPI::GetWABAddressBook",
         [](FrameWorld& w)
    {
        w.Start(true);
        w.Library().GetWABAddressBook(true);
    }},
        {"CZebAPI::Initialize", [](FrameWorld& w) { w.Library().Initialize(false); }},
        {"CZebAPI::Initialize", [](FrameWorld& w) { w.Library().Initialize(true); }},
        {"CZebAPI::IsWAB", [](FrameWorld& w) { w.Library().IsWAB(); }},
        {"CZebAPI::OpenSession",
         [](FrameWorld& w)
    {
        w.Start(false);
        w.Library().OpenSession(nullptr, "A profile");
    }},
        {"CZebAPI::OpenSession", [](FrameWorld& w) { w.Library().OpenSession(nullptr, nullptr); }},
        {"CZebAPI::OpenSessionW",
         [](FrameWorld& w)
    {
        w.Start(false);
        w.Library().OpenSessionW(nullptr, ZEBW("A profile"));
    }},
        {"CZebAPI::SetWasFailed", [](FrameWorld& w) { w.Library().SetWasFailed(false); }},
        {"CZebAPI::Uninitialize",
         [](FrameWorld& w)
    {
        w.Start(false);
        CZebSession session(&w.session);
        w.Library().Uninitialize(&session);
    }},
        {"CZebAPI::Uninitialize",
         [](FrameWorld& w)
    {
        w.Start(true);
        w.Library().Uninitialize(nullptr);
    }},
        {"CZebAPI::WasFailed", [](FrameWorld& w) { w.Library().WasFailed(); }},
        {"CZebAPI::WasInitialized", [](FrameWorld& w) { w.Library().WasInitialized(); }},
        {"CZebProfAdmin::Open",
         [](FrameWorld& w)
    {
        w.Start(false);
        CZebProfAdmin::Open();
    }},
        {"CZebProfAdmin::Open", [](FrameWorld&) { CZebProfAdmin::Open(); }},
        {"CZebProfileNames::CZebProfileNames", [](FrameWorld&) { CZebProfileNames names; }},
        {"CZebProfileNames::GetDefaultProfile", [](FrameWorld&) { CZebProfileNames().GetDefaultProfile(); }},
        {"CZebProfileNames::GetNextName",
         [](FrameWorld&)
    {
        CZebProfileNames names;
        CString name;
        while (names.GetNextName(name) != 0)
        {
        }
    }},
        {"CZebProfileNames::GetProfilesKey", [](FrameWorld&) { CZebProfileNames::GetProfilesKey(); }},
        {"CZebProfileNames::Reset", [](FrameWorld&) { CZebProfileNames().Reset(); }},
        {"Zeb_GetMAPI", [](FrameWorld&) { Zeb_GetMAPI(); }},
        {"Zeb_GetMapiDllPath",
         [](FrameWorld&)
    {
        EnumOfficeBitness bitness = OfficeBitnessNone;
        Zeb_GetMapiDllPath(bitness);
    }},
        {"Zeb_GetMapiDllPath",
         [](FrameWorld&)
    {
        // Without Outlook's library the search goes all its way.
        {
            const ProviderScope outside;
            platform::RegistryKey::DeleteTree(platform::RegistryRoot::LocalMachine, OutlookClientKey);
        }
        EnumOfficeBitness bitness = OfficeBitnessNone;
        Zeb_GetMapiDllPath(bitness);
    }},
        {"Zeb_GetVersion", [](FrameWorld&) { Zeb_GetVersion(); }},
        {"Zeb_HasDefaultProfile", [](FrameWorld&) { Zeb_HasDefaultProfile(); }},
        {"Zeb_HasDefaultStaticProfile", [](FrameWorld&) { Zeb_HasDefaultStaticProfile(); }},
    };
    return calls;
}

} // namespace zeb::test
