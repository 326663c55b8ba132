// The mail setup of this machine beyond the library's search: the registered mail clients, Office's installations, the
// Windows Address Book.
#pragma once

#include "zebapi/search/ProviderSearch.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// One finding. Texts are UTF-8.
struct SetupFinding
{
    std::string topic; ///< "mail client", "component", "Click-to-Run", "common MAPI", "address book", "file"
    std::string text;  ///< a sentence without a full stop
};

struct MailSetup
{
    std::vector<SetupFinding> findings;
    /// The selected provider is the system's stub, and no client with MAPI is registered: logon fails.
    bool stubWithoutClient = false;
};

/// Examines the registry and the files that it names; loads only the stub and candidates to which it may forward.
/// @throws RegistryError
MailSetup LookAtMailSetup(const ProviderReport& report);

/// "C:\...\olmapi32.dll (version 16.0.1.2, x64)", "..., which does not exist", "..., which is 32-bit
/// Office; this program has 64 bits". `path` is UTF-8.
std::string DescribedFile(const std::string& path);

} // namespace zeb::tools
