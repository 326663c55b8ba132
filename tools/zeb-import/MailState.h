// The state that a mail program stored for a message: read, answered, flagged.
#pragma once

#include <optional>
#include <string>

namespace zeb::tools
{

struct MailState
{
    bool read = true;
    bool answered = false;
    bool flagged = false;
    bool draft = false;
    bool trashed = false;
};

/// The state in the headers "Status" and "X-Status" of mbox files; empty without both.
std::optional<MailState> StateInHeaders(const std::string& status, const std::string& otherStatus);

/// The state in the name of a file of a Maildir, "...:2,FRS": draft, flagged,
/// replied, seen, trashed; a message in "new" is unread.
/// @param isNew whether the file is in "new"
MailState StateInFileName(const std::string& name, bool isNew);

} // namespace zeb::tools
