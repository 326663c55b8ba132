#include "tools/zeb/MailSetup.h"

#include "platform/imagefile.h"
#include "platform/module.h"
#include "platform/registry.h"
#include "qorth/DllLoader.h"
#include "tools/common/Output.h"
#include "tools/zeb/Provider.h"

#include <optional>

namespace zeb::tools
{
namespace
{

using platform::RegistryKey;
using platform::RegistryRoot;

constexpr char ClientsKey[] = "SOFTWARE\\Clients\\Mail";
constexpr char ClickToRunKey[] = "SOFTWARE\\Microsoft\\Office\\ClickToRun\\Configuration";
constexpr char WindowsKey[] = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr char AddressBookKey[] = "Software\\Microsoft\\WAB\\DLLPath";
// The component that the search queries: Outlook 2007 and before.
constexpr char SearchedComponent[] = "{FF1D0740-D227-11D1-A4B0-006008AF820E}";
constexpr unsigned OwnBits = 8 * sizeof(void*);

/// A text value of the registry; empty when the key or the value does not exist.
std::string Value(RegistryRoot root, const std::string& path, const std::string& name)
{
    const auto key = RegistryKey::Open(root, path);
    return key ? key->StringValue(name).value_or("") : "";
}

std::string MachineKey(const std::string& path)
{
    return "HKEY_LOCAL_MACHINE\\" + path;
}

bool SameText(const std::string& one, const std::string& other)
{
    return WideFromUtf8(one).CompareNoCase(WideFromUtf8(other)) == 0;
}

/// The library of a Windows Installer component, queried from the stub at `stub`; empty when unknown.
std::string ComponentFile(const std::string& stub, const std::string& component)
{
    using Function = BOOL WINAPI(LPCSTR component, LPCSTR qualifier, LPSTR path, DWORD size, BOOL install);
    constexpr long Quiet = 4;
    constexpr DWORD Size = 260;
    const CDllLoader library(NarrowFromUtf8(stub).c_str(), Quiet);
    Function* componentPath = nullptr;
    char path[Size + 1] = {};
    if (library.IsEmpty() || !library.GetProc("FGetComponentPath", componentPath) ||
        !componentPath(component.c_str(), nullptr, path, Size, FALSE))
    {
        return {};
    }
    return Utf8FromNarrow(path);
}

/// The file that the loader would load for `path`.
platform::ImageFile ImageAt(const std::string& path)
{
    const platform::ImageFile image = platform::ReadImageFile(path);
    return image.exists ? image
                        : platform::ReadImageFile(Utf8FromNarrow(platform::ResolveModulePath(NarrowFromUtf8(path))));
}

bool ExportsComponentPath(const std::string& file)
{
    constexpr long ClassifyMode = 20;
    const CDllLoader library(file.c_str(), ClassifyMode);
    return !library.IsEmpty() && library.GetProc("FGetComponentPath") != nullptr;
}

class Look
{
public:
    explicit Look(const ProviderReport& report)
        : m_report(report)
    {
    }

    MailSetup Run()
    {
        Files();
        Common();
        Client();
        ClickToRun();
        AddressBook();
        return std::move(m_setup);
    }

private:
    void Add(const char* topic, std::string text) { m_setup.findings.push_back({topic, std::move(text)}); }

    /// Details of each candidate's file, when they add to its path.
    void Files()
    {
        for (const ProviderCandidate& candidate : m_report.candidates)
        {
            const std::string file = Utf8FromNarrow(candidate.found.resolved);
            const platform::ImageFile image = platform::ReadImageFile(file);
            if (!image.version.empty() || (image.bits != 0 && image.bits != OwnBits))
            {
                Add("file", DescribedFile(file));
            }
        }
    }

    /// The search uses CommonFilesDir unchanged, if it reaches that step.
    void Common()
    {
        if (m_report.candidates.size() < 2)
        {
            return;
        }
        const std::string folder = Value(RegistryRoot::LocalMachine, WindowsKey, "CommonFilesDir");
        if (!folder.empty() && folder.back() != '\\')
        {
            Add("common MAPI", MachineKey(WindowsKey) + ", value CommonFilesDir is '" + folder +
                                   "', without a backslash at its end: the search makes '" + folder +
                                   "System\\Mapi\\1033\\' of it");
        }
    }

    /// The default mail client, to which the system's stub forwards.
    void Client()
    {
        const std::optional<ProviderCandidate> stub = ChosenStub();
        std::string client = Value(RegistryRoot::CurrentUser, ClientsKey, "");
        std::string place = "HKEY_CURRENT_USER\\" + std::string(ClientsKey);
        if (client.empty())
        {
            client = Value(RegistryRoot::LocalMachine, ClientsKey, "");
            place = MachineKey(ClientsKey);
        }
        // A provider that the search found elsewhere needs no mail client.
        const bool asked = stub || m_report.path.empty();
        if (asked)
        {
            Add("mail client", client.empty() ? "no default mail client is registered in " + place
                                              : "the default client is '" + client + "' (" + place + ")");
            const bool served = !client.empty() && HasMapi(client, stub);
            m_setup.stubWithoutClient = stub && !served;
        }
        if (!asked || !SameText(client, "Microsoft Outlook"))
        {
            Component("Microsoft Outlook", stub);
        }
    }

    /// Reports where a registered client's MAPI library is. @return whether that is a provider that this program can
    /// use
    bool HasMapi(const std::string& client, const std::optional<ProviderCandidate>& stub)
    {
        const std::string key = std::string(ClientsKey) + "\\" + client;
        std::string value = "DLLPathEx";
        std::string file = Value(RegistryRoot::LocalMachine, key, value);
        if (file.empty())
        {
            value = "DLLPath";
            file = Value(RegistryRoot::LocalMachine, key, value);
        }
        bool usable = false;
        if (!file.empty())
        {
            const ProviderClass found = CheckMAPIDll(NarrowFromUtf8(file), ProviderEnvironment::Machine());
            usable = found.bitness != OfficeBitnessNone;
            Add("mail client", "'" + client + "', value " + value + ", names " +
                                   DescribedFile(found.resolved.empty() ? file : Utf8FromNarrow(found.resolved)) +
                                   ": " + VerdictOn(found));
        }
        const bool installed = Component(client, stub);
        return usable || installed;
    }

    /// Reports the library of a client's component. @return whether it is a library with this program's bitness
    bool Component(const std::string& client, const std::optional<ProviderCandidate>& stub)
    {
        const std::string component =
            Value(RegistryRoot::LocalMachine, std::string(ClientsKey) + "\\" + client, "MSIComponentID");
        if (component.empty())
        {
            return false;
        }
        const std::string file = ComponentFile(
            stub ? Utf8FromNarrow(stub->found.resolved) : platform::SystemFolder() + "\\mapi32.dll", component);
        std::string text = "MSIComponentID of '" + client + "' is " + component + ", which leads to " +
                           (file.empty() ? "no file" : DescribedFile(file));
        if (!SameText(component, SearchedComponent))
        {
            text += std::string("; the search asks for ") + SearchedComponent +
                    ", the component of Outlook 2007 and before";
        }
        Add("component", text);
        return ImageAt(file).bits == OwnBits;
    }

    /// The selected candidate when it is the system's stub, which forwards to a mail client.
    std::optional<ProviderCandidate> ChosenStub() const
    {
        if (m_report.path.empty() || m_report.candidates.back().step != ProviderStep::System ||
            !ExportsComponentPath(m_report.candidates.back().found.resolved))
        {
            return std::nullopt;
        }
        return m_report.candidates.back();
    }

    void ClickToRun()
    {
        const auto value = [](const char* name) { return Value(RegistryRoot::LocalMachine, ClickToRunKey, name); };
        const std::string folder = value("InstallationPath");
        if (folder.empty())
        {
            return;
        }
        const std::string machine = value("Platform");
        const bool narrow = machine == "x86";
        const std::string file = folder + "\\root\\VFS\\ProgramFilesCommon" + (narrow ? "X86" : "X64") +
                                 "\\system\\msmapi\\1033\\msmapi32.dll";
        Add("Click-to-Run", "Office " + value("VersionToReport") + " (" + machine + ") is installed in '" + folder +
                                "'; its MAPI is " + DescribedFile(file));
    }

    void AddressBook()
    {
        const std::string file = Value(RegistryRoot::LocalMachine, AddressBookKey, "");
        if (!file.empty())
        {
            Add("address book", MachineKey(AddressBookKey) + " names " + DescribedFile(file));
        }
    }

    const ProviderReport& m_report;
    MailSetup m_setup;
};

} // namespace

std::string DescribedFile(const std::string& path)
{
    const platform::ImageFile image = ImageAt(path);
    if (!image.exists)
    {
        return "'" + path + "', which does not exist";
    }
    if (image.bits != 0 && image.bits != OwnBits)
    {
        return "'" + path + "'" + (image.version.empty() ? "" : " (version " + image.version + ")") +
               ", which is of a " + std::to_string(image.bits) + "-bit Office; this program has " +
               std::to_string(OwnBits) + " bits";
    }
    std::string details = image.version.empty() ? "" : "version " + image.version;
    if (!image.machine.empty())
    {
        details += (details.empty() ? "" : ", ") + image.machine;
    }
    return "'" + path + "'" + (details.empty() ? ", which is not a library" : " (" + details + ")");
}

MailSetup LookAtMailSetup(const ProviderReport& report)
{
    return Look(report).Run();
}

} // namespace zeb::tools
