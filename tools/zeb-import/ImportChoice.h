// Which messages of a source are imported.
#pragma once

#include "platform/mapi.h"

#include <optional>

namespace zeb::tools
{

struct ImportChoice
{
    bool dryRun = false;           ///< everything is read and nothing is written
    bool skipDuplicates = false;   ///< messages that the target folder has, or that came before, are left out
    std::optional<FILETIME> since; ///< messages with an earlier date are left out

    /// Whether messages may be left out, or none is written.
    bool IsAny() const { return dryRun || skipDuplicates || since; }
};

} // namespace zeb::tools
