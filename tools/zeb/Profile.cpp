// zeb profile list|create|delete|default
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/Property.h"
#include "tools/zeb/Command.h"
#include "zebstore/zebstore.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>

namespace zeb::tools
{
namespace
{

struct Options
{
    std::string name;
    std::string store;
    std::string durability;
    bool makeDefault = false;
    bool json = false;
};

/// MAPI's profile administration for one command.
class Administration
{
public:
    Administration()
        : m_profiles(CZebProfAdmin::Open())
    {
    }
    ~Administration() { m_profiles.Close(); }

    CZebProfAdmin& Profiles() { return m_profiles; }
    IProfAdmin* Interface() { return m_profiles.GetInterface().Checked(); }

private:
    HostMapi m_mapi;
    CZebProfAdmin m_profiles;
};

/// MAPI declares its text arguments without const and as either kind of character.
LPTSTR Text(const std::string& narrow)
{
    return reinterpret_cast<LPTSTR>(const_cast<char*>(narrow.c_str()));
}

/// Runs one call on the administration; a failure names what was being done.
void Do(const std::string& what, const std::string& name, IProfAdmin* profiles, HRESULT result)
{
    try
    {
        ThrowIfFailed(result, profiles, __FILE__, __LINE__);
    }
    catch (...)
    {
        FailWhile(what + " profile '" + Utf8FromNarrow(name) + "'");
    }
}

int List(const Options& options)
{
    Administration administration;
    CZebTable table = administration.Profiles().GetProfileTable();
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        const CZebRow row = rows[i];
        const std::string name =
            Utf8FromNarrow(static_cast<const char*>(static_cast<CStringA>(row[PR_DISPLAY_NAME_A])));
        const bool isDefault =
            row.hasRealValue(PR_DEFAULT_PROFILE) && static_cast<bool>(row[PR_DEFAULT_PROFILE]);
        if (options.json)
            list.push_back({{"name", name}, {"default", isDefault}});
        else
            Print((isDefault ? "* " : "  ") + OneLine(name) + "\n");
    }
    if (options.json)
        Print(list.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
    return ExitDone;
}

/// The unique identifier of the profile's one service.
CZebBinary ServiceOf(IMsgServiceAdmin* services)
{
    CComPtr<IMAPITable> raw;
    ThrowIfFailed(services->GetMsgServiceTable(0, raw.Put()), services, __FILE__, __LINE__);
    CZebTable table(raw.Get());
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    for (ULONG i = 0; i < rows.Count(); ++i)
        if (rows[i].hasRealValue(PR_SERVICE_UID))
            return CZebBinary(static_cast<const SBinary&>(rows[i][PR_SERVICE_UID]));
    throw ToolError("the new profile has no message service");
}

Property TextProperty(ULONG tag, const std::string& narrow)
{
    Property property;
    property.tag = tag;
    property.values.push_back(narrow);
    return property;
}

void AddStoreService(IProfAdmin* profiles, const Options& options)
{
    CComPtr<IMsgServiceAdmin> services;
    ThrowIfFailed(profiles->AdminServices(Text(options.name), nullptr, 0, 0, services.Put()), profiles,
                  __FILE__, __LINE__);
    ThrowIfFailed(services->CreateMsgService(Text(ZEBSTORE_SERVICE_NAME), Text(ZEBSTORE_SERVICE_NAME), 0, 0),
                  services, __FILE__, __LINE__);
    const CZebBinary service = ServiceOf(services.Get());

    Properties settings;
    if (!options.store.empty())
        settings.push_back(TextProperty(
            PR_ZEBSTORE_PATH_A, std::filesystem::absolute(options.store).lexically_normal().string()));
    if (!options.durability.empty())
        settings.push_back(TextProperty(PR_ZEBSTORE_DURABILITY_A, options.durability));
    std::vector<const Property*> pointers;
    for (const Property& setting : settings)
        pointers.push_back(&setting);
    PropertyArray array;
    array.Assign(pointers);
    const SBinary& uid = service;
    ThrowIfFailed(services->ConfigureMsgService(reinterpret_cast<LPMAPIUID>(uid.lpb), 0, 0, array.Count(),
                                                array.Values()),
                  services, __FILE__, __LINE__);
}

int Create(const Options& options)
{
    Administration administration;
    IProfAdmin* profiles = administration.Interface();
    Do("creating", options.name, profiles, profiles->CreateProfile(Text(options.name), nullptr, 0, 0));
    try
    {
        AddStoreService(profiles, options);
    }
    catch (...)
    {
        // The half-made profile goes again; what made it fail is what counts.
        profiles->DeleteProfile(Text(options.name), 0);
        FailWhile("creating profile '" + Utf8FromNarrow(options.name) + "'");
    }
    if (options.makeDefault)
        Do("choosing", options.name, profiles, profiles->SetDefaultProfile(Text(options.name), 0));
    Print("profile '" + Utf8FromNarrow(options.name) + "' is there" +
          (options.makeDefault ? " and is the default\n" : "\n"));
    return ExitDone;
}

int Delete(const Options& options)
{
    Administration administration;
    IProfAdmin* profiles = administration.Interface();
    Do("deleting", options.name, profiles, profiles->DeleteProfile(Text(options.name), 0));
    Print("profile '" + Utf8FromNarrow(options.name) + "' is deleted; its store file stays\n");
    return ExitDone;
}

int Default(const Options& options)
{
    if (options.name.empty())
    {
        const CStringA name = Zeb_GetMAPI().GetDefaultProfileName();
        if (name.IsEmpty())
            throw ToolError("there is no default profile");
        Print(Utf8FromNarrow(static_cast<const char*>(name)) + "\n");
        return ExitDone;
    }
    Administration administration;
    IProfAdmin* profiles = administration.Interface();
    Do("choosing", options.name, profiles, profiles->SetDefaultProfile(Text(options.name), 0));
    Print("profile '" + Utf8FromNarrow(options.name) + "' is the default\n");
    return ExitDone;
}

} // namespace

void AddProfile(CLI::App& app, Action& action)
{
    auto options = std::make_shared<Options>();
    CLI::App* profile = app.add_subcommand("profile", "Looks after profiles");
    profile->require_subcommand(1);

    CLI::App* list = profile->add_subcommand("list", "Lists the profiles; * marks the default one");
    list->add_flag("--json", options->json, "Print JSON");
    list->callback([options, &action] { action = [options] { return List(*options); }; });

    CLI::App* create = profile->add_subcommand("create", "Creates a profile with one zebstore store");
    create->add_option("name", options->name, "The profile's name")->required()->type_name("NAME");
    create->add_option("--store", options->store, "The store's file; made when it is not there")
        ->type_name("FILE");
    create
        ->add_option("--durability", options->durability,
                     "normal: a commit survives the death of the process; full: also the loss of power")
        ->check(CLI::IsMember({"normal", "full"}));
    create->add_flag("--default", options->makeDefault, "Make it the default profile");
    create->callback([options, &action] { action = [options] { return Create(*options); }; });

    CLI::App* remove = profile->add_subcommand("delete", "Deletes a profile; its store file stays");
    remove->add_option("name", options->name, "The profile's name")->required()->type_name("NAME");
    remove->callback([options, &action] { action = [options] { return Delete(*options); }; });

    CLI::App* choose =
        profile->add_subcommand("default", "Shows the default profile, or makes NAME the default");
    choose->add_option("name", options->name, "The profile's name")->type_name("NAME");
    choose->callback([options, &action] { action = [options] { return Default(*options); }; });
}

} // namespace zeb::tools
