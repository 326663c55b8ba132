// zeb doctor: diagnoses whether and why MAPI works on this machine.
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/MailSetup.h"
#include "tools/zeb/ProfilePlaces.h"
#include "tools/zeb/Provider.h"

#include <memory>
#include <vector>

namespace zeb::tools
{
namespace
{

struct ProfileNames
{
    std::vector<std::string> all;
    std::string chosen; ///< the default profile; empty when there is none
    std::string key;    ///< the profiles' key below HKEY_CURRENT_USER
    std::vector<ProfilePlace> elsewhere;
};

ProfileNames ReadProfiles()
{
    ProfileNames names;
    CZebProfileNames reader;
    CString name;
    while (reader.GetNextName(name))
    {
        names.all.push_back(Utf8FromNarrow(static_cast<const char*>(name)));
    }
    names.chosen = Utf8FromNarrow(static_cast<const char*>(reader.GetDefaultProfile()));
    names.key = ProfilesKey();
    names.elsewhere = ProfilePlacesNotLookedAt();
    return names;
}

void PrintField(const char* name, const std::string& value)
{
    Print("   " + Fitted(name, 9) + OneLine(value) + "\n");
}

void PrintCandidate(size_t number, const ProviderCandidate& candidate)
{
    Print(std::to_string(number) + ". " + ProviderStepName(candidate.step) + "\n");
    PrintField("from", Utf8FromNarrow(candidate.origin));
    if (!candidate.path.empty())
    {
        PrintField("path", Utf8FromNarrow(candidate.path));
    }
    if (!candidate.found.resolved.empty() && candidate.found.resolved != candidate.path)
    {
        PrintField("file", Utf8FromNarrow(candidate.found.resolved));
    }
    PrintField("verdict", VerdictOn(candidate));
    Print("\n");
}

/// Profile names are registry keys and compare without case.
bool SameName(const std::string& one, const std::string& other)
{
    return WideFromUtf8(one).CompareNoCase(WideFromUtf8(other)) == 0;
}

void PrintProfiles(const ProfileNames& profiles)
{
    Print("profiles\n");
    bool chosenIsThere = false;
    for (const std::string& name : profiles.all)
    {
        const bool chosen = SameName(name, profiles.chosen);
        chosenIsThere = chosenIsThere || chosen;
        Print((chosen ? "   * " : "     ") + OneLine(name) + "\n");
    }
    if (profiles.all.empty())
    {
        Print("     none; 'zeb profile create NAME --default' creates one\n");
    }
    else if (profiles.chosen.empty())
    {
        Print("     none of them is the default; 'zeb profile default NAME' sets the default\n");
    }
    if (!profiles.chosen.empty() && !chosenIsThere)
    {
        Print("     the default one, '" + OneLine(profiles.chosen) +
              "', does not exist; 'zeb profile default NAME' sets another\n");
    }
    PrintField("from", "HKEY_CURRENT_USER\\" + profiles.key);
    for (const ProfilePlace& place : profiles.elsewhere)
    {
        std::string names;
        for (const std::string& name : place.profiles)
        {
            names += (names.empty() ? ": " : ", ") + name;
        }
        PrintField("not seen", place.keeper + " keeps its profiles in HKEY_CURRENT_USER\\" + place.key +
                                   ", where the library does not look" + (names.empty() ? "; none exist yet" : names));
    }
    Print("\n");
}

void PrintSetup(const MailSetup& setup)
{
    if (setup.findings.empty())
    {
        return;
    }
    Print("also on this machine\n");
    for (const SetupFinding& finding : setup.findings)
    {
        Print("   " + Fitted(finding.topic, 14) + OneLine(finding.text) + "\n");
    }
    Print("\n");
}

Json JsonOf(const ProviderCandidate& candidate)
{
    Json object;
    object["step"] = ProviderStepName(candidate.step);
    object["origin"] = Utf8FromNarrow(candidate.origin);
    object["path"] = Utf8FromNarrow(candidate.path);
    object["file"] = Utf8FromNarrow(candidate.found.resolved);
    object["usable"] = candidate.found.bitness != OfficeBitnessNone;
    object["class"] = static_cast<int>(candidate.found.bitness);
    object["loaded"] = candidate.found.loaded;
    object["loadError"] = Utf8FromNarrow(candidate.found.loadError);
    const auto nameOrNull = [](const char* name) { return name != nullptr ? Json(name) : Json(nullptr); };
    object["missingDecorated"] = nameOrNull(candidate.found.missingDecorated);
    object["missingUndecorated"] = nameOrNull(candidate.found.missingUndecorated);
    object["verdict"] = VerdictOn(candidate);
    return object;
}

Json JsonOf(const ProviderReport& report, const ProfileNames& profiles, const MailSetup& setup)
{
    Json object;
    object["provider"] = TextOrNull(Utf8FromNarrow(report.path));
    object["class"] = static_cast<int>(report.bitness);
    object["candidates"] = Json::array();
    for (const ProviderCandidate& candidate : report.candidates)
    {
        object["candidates"].push_back(JsonOf(candidate));
    }
    object["profiles"] = profiles.all;
    object["defaultProfile"] = TextOrNull(profiles.chosen);
    object["profilesKey"] = "HKEY_CURRENT_USER\\" + profiles.key;
    object["profilesElsewhere"] = Json::array();
    for (const ProfilePlace& place : profiles.elsewhere)
    {
        object["profilesElsewhere"].push_back(
            {{"keeper", place.keeper}, {"key", "HKEY_CURRENT_USER\\" + place.key}, {"profiles", place.profiles}});
    }
    object["setup"] = Json::array();
    for (const SetupFinding& finding : setup.findings)
    {
        object["setup"].push_back({{"topic", finding.topic}, {"text", finding.text}});
    }
    object["stubWithoutClient"] = setup.stubWithoutClient;
    return object;
}

void PrintText(const ProviderReport& report, const ProfileNames& profiles, const MailSetup& setup)
{
    for (size_t i = 0; i < report.candidates.size(); ++i)
    {
        PrintCandidate(i + 1, report.candidates[i]);
    }
    PrintProfiles(profiles);
    PrintSetup(setup);
}

int Run(bool json)
{
    const ProviderReport report = SearchProvider();
    const ProfileNames profiles = ReadProfiles();
    const MailSetup setup = LookAtMailSetup(report);
    const Lister lister(json);
    lister.Object([&] { return JsonOf(report, profiles, setup); }, [&] { PrintText(report, profiles, setup); });
    if (report.path.empty())
    {
        FlushOutput();
        Complain("zeb", "no usable MAPI provider was found; 'zeb provider install' registers the one that "
                        "comes with zeb");
        return ExitFailed;
    }
    if (setup.stubWithoutClient)
    {
        FlushOutput();
        Complain("zeb", "'" + Utf8FromNarrow(report.path) +
                            "' is the system's stub, and no mail client with 64-bit MAPI is registered "
                            "for it, so that "
                            "logging on fails; install 64-bit Outlook, or let 'zeb provider install' "
                            "register the provider "
                            "that comes with zeb");
        return ExitFailed;
    }
    lister.Text([&] { Print("usable: " + Utf8FromNarrow(report.path) + "\n"); });
    return ExitDone;
}

} // namespace

void AddDoctor(Command app)
{
    auto json = std::make_shared<bool>(false);
    Command command = app.AddCommand(
        "doctor",
        "Searches for a MAPI provider like the library and reports the result of each step; exit code 1 when none "
        "is usable");
    command.AddFlag("--json", *json, "Print JSON");
    command.Runs([json] { return Run(*json); });
}

} // namespace zeb::tools
