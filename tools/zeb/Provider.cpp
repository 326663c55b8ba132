// zeb provider install, remove, status
#include "tools/zeb/Provider.h"

#include "platform/imagefile.h"
#include "platform/module.h"
#include "platform/narrow.h"
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Registration.h"

#include <filesystem>
#include <memory>

namespace zeb::tools
{
namespace
{

struct ProviderOptions
{
    std::string file;
    bool wab = false;
    bool replace = false;
    bool json = false;
};

/// The provider that belongs to this program: in its folder or, as installed on Linux, in that of the libraries.
std::filesystem::path OwnProvider()
{
    namespace fs = std::filesystem;
    const fs::path own = fs::u8path(Utf8FromNarrow(platform::OwnFolder()));
    std::error_code ignored;
    const fs::path installed = (own / ZEB_STORE_FOLDER / ZEB_STORE_FILE).lexically_normal();
    return !fs::exists(own / ZEB_STORE_FILE, ignored) && fs::exists(installed, ignored) ? installed
                                                                                        : own / ZEB_STORE_FILE;
}

/// The file to register, as a path that the library can read: it reads narrow text from the registry.
std::string FileToInstall(const std::string& given)
{
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::path file = given.empty() ? OwnProvider() : fs::absolute(fs::u8path(given), ignored);
    const std::string path = file.u8string();
    if (!fs::is_regular_file(file, ignored))
    {
        throw ToolError("the provider file does not exist: '" + ValidUtf8(path) + "'");
    }
    const auto narrowable = platform::NarrowablePath(path);
    if (!narrowable)
    {
        throw ToolError("'" + path +
                        "' cannot be registered: MAPI's clients read the path in the system's code page, which "
                        "does not have all of its characters");
    }
    return *narrowable;
}

void RefuseReplacing(const Registration& registration, const std::string& path, bool replace)
{
    const auto other = registration.Current();
    if (!other || replace || registration.IsOwn(path))
    {
        return;
    }
    throw ToolError("another provider is registered: " + registration.Place() + " is '" + *other +
                    "'; --replace registers this one and saves that value for 'zeb provider remove'");
}

void PrintRegistration(const Registration& registration)
{
    Print("HKEY_LOCAL_MACHINE\\" + registration.Key() + "\n");
    const auto current = registration.Current();
    Print("  " + registration.ShownName() + (current ? " = " + ValidUtf8(*current) : " is not set") + "\n");
    if (const auto replaced = registration.Replaced())
    {
        Print("  replaced " + ValidUtf8(*replaced) + "; 'zeb provider remove' restores it\n");
    }
}

int Install(const ProviderOptions& options)
{
    const std::string path = FileToInstall(options.file);
    const ProviderClass found = CheckMAPIDll(NarrowFromUtf8(path), ProviderEnvironment::Machine());
    if (found.bitness == OfficeBitnessNone)
    {
        throw ToolError("'" + ValidUtf8(path) + "' is not a MAPI provider: " + VerdictOn(found));
    }
    std::vector<Registration> registrations = {Registration::OfMail()};
    if (options.wab)
    {
        registrations.push_back(Registration::OfAddressBook());
    }
    for (const Registration& each : registrations)
    {
        RefuseReplacing(each, path, options.replace);
    }
    for (Registration& each : registrations)
    {
        each.Set(path);
        PrintRegistration(each);
    }
    return ExitDone;
}

int Remove()
{
    int removed = 0;
    for (Registration registration : {Registration::OfMail(), Registration::OfAddressBook()})
    {
        if (!registration.IsSetHere())
        {
            continue;
        }
        registration.Remove();
        PrintRegistration(registration);
        ++removed;
    }
    if (removed == 0)
    {
        throw ToolError("nothing to remove: no registered provider was registered by 'zeb provider install'");
    }
    return ExitDone;
}

Json JsonOf(const Registration& registration)
{
    const auto textOrNull = [](const std::optional<std::string>& text) { return text ? Json(*text) : Json(nullptr); };
    return {{"key", "HKEY_LOCAL_MACHINE\\" + registration.Key()},
            {"value", registration.Value()},
            {"registered", textOrNull(registration.Current())},
            {"replaced", textOrNull(registration.Replaced())}};
}

int Status(const ProviderOptions& options)
{
    Lister lister(options.json);
    for (const Registration& registration : {Registration::OfMail(), Registration::OfAddressBook()})
    {
        lister.Row([&] { return JsonOf(registration); }, [&] { PrintRegistration(registration); });
    }
    lister.EndAs("registrations");
    return ExitDone;
}

} // namespace

std::string VerdictOn(const ProviderClass& found)
{
    if (found.bitness == OfficeBitness32)
    {
        return "usable, a provider with decorated names";
    }
    if (found.bitness == OfficeBitness64)
    {
        return "usable, a provider with undecorated names";
    }
    if (!found.loaded)
    {
        return "unusable, it does not load" + (found.loadError.empty() ? "" : ": " + Utf8FromNarrow(found.loadError));
    }
    const std::string plain = found.missingUndecorated != nullptr ? found.missingUndecorated : "";
    const std::string decorated = found.missingDecorated != nullptr ? found.missingDecorated : "";
    std::string text = "unusable, it does not export " + (plain.empty() ? decorated : plain);
    if (!plain.empty() && !decorated.empty() && plain != decorated)
    {
        text += " (nor, with decorated names, " + decorated + ")";
    }
    return text;
}

std::string VerdictOn(const ProviderCandidate& candidate)
{
    if (!candidate.examined)
    {
        return "no file to examine";
    }
    if (candidate.path.empty())
    {
        return "unusable, no file is registered";
    }
    const unsigned bits = platform::ReadImageFile(Utf8FromNarrow(candidate.found.resolved)).bits;
    constexpr unsigned OwnBits = 8 * sizeof(void*);
    if (!candidate.found.loaded && bits != 0 && bits != OwnBits)
    {
        return "unusable, " + std::to_string(bits) + "-bit Office; this program has " + std::to_string(OwnBits) +
               " bits";
    }
    return VerdictOn(candidate.found);
}

void AddProvider(Command app)
{
    auto options = std::make_shared<ProviderOptions>();
    Command provider = app.AddCommand("provider", "Registers MAPI providers");
    provider.NeedsCommand();
    Command install = provider.AddCommand(
        "install", "Registers a provider in the mail client's registry entry, where the library searches first");
    install.AddOption("--dll", options->file, "The provider's file; without it the zebstore that is installed with zeb")
        .Type("PATH");
    install.AddFlag("--wab", options->wab, "Register it as the Windows Address Book too");
    install.AddFlag("--replace", options->replace,
                    "Replace another provider and save its entry; without this option that is refused");
    install.Runs([options] { return Install(*options); });

    Command remove = provider.AddCommand("remove", "Removes what install registered, and restores what it replaced");
    remove.Runs([] { return Remove(); });

    Command status = provider.AddCommand("status", "Shows the registered provider, and the replaced one");
    status.AddFlag("--json", options->json, "Print JSON");
    status.Runs([options] { return Status(*options); });
}

} // namespace zeb::tools
