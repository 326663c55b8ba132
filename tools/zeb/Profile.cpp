// zeb profile list|create|delete|default
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Profiles.h"
#include "tools/zeb/Command.h"
#include "zebstore/zebstore.h"

#include <filesystem>
#include <memory>

namespace zeb::tools
{
namespace
{

struct ProfileOptions
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

/// Runs one call on the administration; a failure names the operation.
void Do(const std::string& what, const std::string& name, IProfAdmin* profiles, HRESULT result)
{
    try
    {
        ThrowIfFailed(result, profiles);
    }
    catch (...)
    {
        FailWhile(what + " profile '" + ValidUtf8(name) + "'");
    }
}

int List(const ProfileOptions& options)
{
    Administration administration;
    Lister lister(options.json);
    for (const ProfileEntry& each : ListProfiles(administration.Profiles()))
    {
        lister.Row([&] { return Json{{"name", each.name}, {"default", each.isDefault}}; },
                   [&] { Print((each.isDefault ? "* " : "  ") + OneLine(each.name) + "\n"); });
    }
    lister.EndAs("profiles");
    return ExitDone;
}

/// The UID of the profile's only service, and the file of its store.
struct StoreService
{
    CZebBinary uid;
    std::string file; ///< empty until the service is configured
};

StoreService ServiceOf(IMsgServiceAdmin* services)
{
    CComPtr<IMAPITable> raw;
    ThrowIfFailed(services->GetMsgServiceTable(0, raw.Put()), services);
    for (CZebRow row : CZebTable(raw.Get()).Rows({PR_SERVICE_UID, PR_ZEBSTORE_PATH_W}))
    {
        if (row.hasRealValue(PR_SERVICE_UID))
        {
            return {CZebBinary(static_cast<const SBinary&>(row[PR_SERVICE_UID])), TextOf(row, PR_ZEBSTORE_PATH_W)};
        }
    }
    throw ToolError("the new profile has no message service");
}

/// The absolute path, UTF-8. @throws ToolError when its folder does not exist
std::string WholePath(const std::string& file)
{
    namespace fs = std::filesystem;
    const fs::path path = fs::absolute(fs::u8path(file)).lexically_normal();
    std::error_code ignored;
    if (!fs::is_directory(path.parent_path(), ignored))
    {
        throw ToolError("the folder '" + ValidUtf8(path.parent_path().u8string()) + "' of the store file '" +
                        ValidUtf8(path.filename().u8string()) + "' does not exist");
    }
    return path.u8string();
}

/// @return the file of the store
std::string AddStoreService(IProfAdmin* profiles, const ProfileOptions& options, const std::string& file)
{
    CComPtr<IMsgServiceAdmin> services;
    const ProfileName name(options.name), service(ZEBSTORE_SERVICE_NAME);
    ThrowIfFailed(profiles->AdminServices(name.Text(), nullptr, 0, name.Flags(), services.Put()), profiles);
    ThrowIfFailed(services->CreateMsgService(service.Text(), service.Text(), 0, service.Flags()), services);
    const CZebBinary uid = ServiceOf(services.Get()).uid;

    CZebPropValArray settings(2);
    if (!file.empty())
    {
        settings[PR_ZEBSTORE_PATH_W].SetUtf8(file.c_str());
    }
    if (!options.durability.empty())
    {
        settings[PR_ZEBSTORE_DURABILITY_W].SetUtf8(options.durability.c_str());
    }
    settings.TruncateToExisting();
    const SBinary& bytes = uid;
    ThrowIfFailed(
        services->ConfigureMsgService(reinterpret_cast<LPMAPIUID>(bytes.lpb), 0, 0, settings.Count(), settings),
        services);
    return ServiceOf(services.Get()).file;
}

int Create(const ProfileOptions& options)
{
    const std::string file = options.store.empty() ? std::string() : WholePath(options.store);
    Administration administration;
    IProfAdmin* profiles = administration.Interface();
    const ProfileName name(options.name);
    Do("creating", options.name, profiles, profiles->CreateProfile(name.Text(), nullptr, 0, name.Flags()));
    std::string store;
    try
    {
        store = AddStoreService(profiles, options, file);
    }
    catch (...)
    {
        // Deletes the incomplete profile; its own failure is ignored in favour of the first one.
        profiles->DeleteProfile(name.Text(), name.Flags());
        FailWhile("creating profile '" + ValidUtf8(options.name) + "'");
    }
    if (options.makeDefault)
    {
        Do("choosing", options.name, profiles, profiles->SetDefaultProfile(name.Text(), name.Flags()));
    }
    Print("created profile '" + ValidUtf8(options.name) +
          (options.makeDefault ? "' and made it the default\n" : "'\n"));
    Print("  store  " + OneLine(store) + "\n");
    return ExitDone;
}

int Delete(const ProfileOptions& options)
{
    Administration administration;
    IProfAdmin* profiles = administration.Interface();
    const ProfileName name(options.name);
    Do("deleting", options.name, profiles, profiles->DeleteProfile(name.Text(), name.Flags()));
    Print("deleted profile '" + ValidUtf8(options.name) + "'; its store file was kept\n");
    return ExitDone;
}

int Default(const ProfileOptions& options)
{
    if (options.name.empty())
    {
        Administration administration;
        for (const ProfileEntry& each : ListProfiles(administration.Profiles()))
        {
            if (each.isDefault)
            {
                Print(OneLine(each.name) + "\n");
                return ExitDone;
            }
        }
        throw ToolError("there is no default profile");
    }
    Administration administration;
    IProfAdmin* profiles = administration.Interface();
    const ProfileName name(options.name);
    Do("choosing", options.name, profiles, profiles->SetDefaultProfile(name.Text(), name.Flags()));
    Print("made profile '" + ValidUtf8(options.name) + "' the default\n");
    return ExitDone;
}

} // namespace

void AddProfile(Command app)
{
    auto options = std::make_shared<ProfileOptions>();
    Command profile = app.AddCommand("profile", "Manages profiles");
    profile.NeedsCommand();

    Command list = profile.AddCommand("list", "Lists the profiles; * marks the default profile");
    list.AddFlag("--json", options->json, "Print JSON");
    list.Runs([options] { return List(*options); });

    Command create = profile.AddCommand("create", "Creates a profile with one zebstore store");
    create.AddOption("name", options->name, "The profile's name").Required().Type("NAME");
    create.AddOption("--store", options->store, "The store's file; created when it does not exist").Type("FILE");
    create
        .AddOption("--durability", options->durability,
                   "normal: a commit survives the death of the process; full: also the loss of power")
        .OneOf({"normal", "full"});
    create.AddFlag("--default", options->makeDefault, "Make it the default profile");
    create.Runs([options] { return Create(*options); });

    Command remove = profile.AddCommand("delete", "Deletes a profile; its store file is kept");
    remove.AddOption("name", options->name, "The profile's name").Required().Type("NAME");
    remove.Runs([options] { return Delete(*options); });

    Command choose = profile.AddCommand("default", "Shows the default profile, or makes NAME the default");
    choose.AddOption("name", options->name, "The profile's name").Type("NAME");
    choose.Runs([options] { return Default(*options); });
}

} // namespace zeb::tools
