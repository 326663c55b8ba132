// zeb provider install
#include "tools/zeb/Provider.h"

#include "platform/module.h"
#include "platform/registry.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "zebstore/zebstore.h"

#include <filesystem>
#include <memory>

namespace zeb::tools
{
namespace
{

constexpr const char* OutlookKey = "SOFTWARE\\Clients\\Mail\\Microsoft Outlook";
constexpr const char* ProviderValue = "DLLPathEx";
constexpr const char* WabKey = "SOFTWARE\\Microsoft\\WAB\\DLLPath";

/// The provider that comes with zeb, under the name it has on this target.
std::string OwnProvider()
{
    const std::filesystem::path folder = platform::OwnFolder();
    const std::filesystem::path dll = folder / ZEBSTORE_DLL_NAME;
    const std::filesystem::path sharedObject = folder / ("lib" + dll.stem().string() + ".so");
    return std::filesystem::exists(dll) ? dll.string() : sharedObject.string();
}

struct Options
{
    std::string file;
    bool wab = false;
};

int Install(const Options& options)
{
    const std::string& given = options.file;
    std::error_code ignored;
    const std::filesystem::path file =
        given.empty() ? OwnProvider() : std::filesystem::absolute(given, ignored).string();
    const std::string path = file.string();
    if (!std::filesystem::is_regular_file(file, ignored))
        throw ToolError("there is no file '" + Utf8FromNarrow(path) + "'");
    const ProviderClass found = CheckMAPIDll(path, ProviderEnvironment::Machine());
    if (found.bitness == OfficeBitnessNone)
        throw ToolError("'" + Utf8FromNarrow(path) + "' is no MAPI provider: " + VerdictOn(found));
    platform::RegistryKey::Create(platform::RegistryRoot::LocalMachine, OutlookKey)
        .SetStringValue(ProviderValue, path);
    Print("HKEY_LOCAL_MACHINE\\" + std::string(OutlookKey) + "\n  " + ProviderValue + " = " +
          Utf8FromNarrow(path) + "\n");
    if (options.wab)
    {
        platform::RegistryKey::Create(platform::RegistryRoot::LocalMachine, WabKey).SetStringValue("", path);
        Print("HKEY_LOCAL_MACHINE\\" + std::string(WabKey) + "\n  (default) = " + Utf8FromNarrow(path) +
              "\n");
    }
    return ExitDone;
}

} // namespace

std::string VerdictOn(const ProviderClass& found)
{
    if (found.bitness == OfficeBitness32)
        return "usable, a provider with decorated names";
    if (found.bitness == OfficeBitness64)
        return "usable, a provider with undecorated names";
    if (!found.loaded)
        return "unusable, it does not load" +
               (found.loadError.empty() ? "" : ": " + Utf8FromNarrow(found.loadError));
    const std::string plain = found.missingUndecorated ? found.missingUndecorated : "";
    const std::string decorated = found.missingDecorated ? found.missingDecorated : "";
    std::string text = "unusable, it does not export " + (plain.empty() ? decorated : plain);
    if (!plain.empty() && !decorated.empty() && plain != decorated)
        text += " (nor, with decorated names, " + decorated + ")";
    return text;
}

std::string VerdictOn(const ProviderCandidate& candidate)
{
    if (!candidate.examined)
        return "names no file to try";
    return VerdictOn(candidate.found);
}

void AddProvider(CLI::App& app, Action& action)
{
    auto options = std::make_shared<Options>();
    CLI::App* provider = app.add_subcommand("provider", "Registers MAPI providers");
    provider->require_subcommand(1);
    CLI::App* install = provider->add_subcommand(
        "install",
        "Registers a provider where the library looks first, the mail client's entry in the registry");
    install
        ->add_option("--dll", options->file,
                     "The provider's file; without it the zebstore that stands beside zeb")
        ->type_name("PATH");
    install->add_flag("--wab", options->wab, "Register it as the Windows Address Book too");
    install->callback([options, &action] { action = [options] { return Install(*options); }; });
}

} // namespace zeb::tools
