#include "tools/zeb-import/MailState.h"

namespace zeb::tools
{
namespace
{

bool Has(const std::string& flags, char flag)
{
    return flags.find(flag) != std::string::npos;
}

/// Headers of this name may contain other text than flags.
bool AreFlags(const std::string& text)
{
    return text.find_first_not_of("ROADFTNU ") == std::string::npos;
}

} // namespace

std::optional<MailState> StateInHeaders(const std::string& status, const std::string& otherStatus)
{
    const std::string flags = (AreFlags(status) ? status : "") + (AreFlags(otherStatus) ? otherStatus : "");
    if (flags.empty())
    {
        return std::nullopt;
    }
    MailState state;
    state.read = Has(flags, 'R');
    state.answered = Has(flags, 'A');
    state.flagged = Has(flags, 'F');
    state.draft = Has(flags, 'T');
    return state;
}

MailState StateInFileName(const std::string& name, bool isNew)
{
    // On file systems without colons in names, programs write another character.
    const size_t info = name.rfind("2,");
    const bool hasFlags = info != std::string::npos && info > 0 && Has(":;!", name[info - 1]);
    const std::string flags = hasFlags ? name.substr(info + 2) : std::string();
    MailState state;
    state.read = !isNew && Has(flags, 'S');
    state.answered = Has(flags, 'R');
    state.flagged = Has(flags, 'F');
    state.draft = Has(flags, 'D');
    state.trashed = Has(flags, 'T');
    return state;
}

} // namespace zeb::tools
