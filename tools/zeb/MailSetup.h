// How mail is set up on this machine, beyond what the library's search looks at: the registered mail clients, Office's
// installations, the Windows Address Book.
#pragma once

#include "zebapi/search/ProviderSearch.h"

#include <string>
#include <vector>

namespace zeb::tools
{

/// One thing that was looked at. Texts are UTF-8.
struct SetupFinding
{
    std::string topic; ///< "mail client", "component", "Click-to-Run", "common MAPI", "address book", "file"
    std::string text;  ///< a sentence without a full stop
};

struct MailSetup
{
    std::vector<SetupFinding> findings;
    /// The provider that the search chose is the system's stub, and it has no client with MAPI: logging on fails.
    bool stubWithoutClient = false;
};

/// Looks at the registry and at the files that it names; loads only what may be a provider for the system's stub, and
/// the stub itself. @throws RegistryError
MailSetup LookAtMailSetup(const ProviderReport& report);

/// "C:\...\olmapi32.dll (version 16.0.1.2, x64)", "..., which does not exist", "..., which is 32-bit
/// Office; this program has 64 bits". `path` is UTF-8.
std::string DescribedFile(const std::string& path);

} // namespace zeb::tools
