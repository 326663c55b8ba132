// zeb read
#include "platform/commandinput.h"
#include "platform/console.h"
#include "platform/environment.h"
#include "tools/common/Color.h"
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/ReadableMessage.h"
#include "tools/common/WrappedText.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"

#include <memory>

namespace zeb::tools
{
namespace
{

/// The column in which what follows a header's name begins.
constexpr size_t FieldColumn = 9;

struct ReadOptions
{
    std::string profile;
    std::string folder;
    std::string message;
    ULONG width = 0; ///< 0: the terminal's
    bool headers = false;
    bool html = false;
    bool noPager = false;
    bool utc = false;
    bool json = false;
};

/// A header, with its further lines below its first one. Empty for an empty text.
std::string Field(const std::string& name, const std::string& text, size_t width)
{
    if (text.empty())
    {
        return "";
    }
    const std::string lines = Wrapped(text, width > 2 * FieldColumn ? width - FieldColumn : 0);
    std::string field = name + ":" + std::string(FieldColumn - name.size() - 1, ' ');
    for (size_t i = 0; i < lines.size(); ++i)
    {
        const bool isMore = lines[i] == '\n' && i + 1 < lines.size();
        field += isMore ? "\n" + std::string(FieldColumn, ' ') : std::string(1, lines[i]);
    }
    return field;
}

/// The headers that people read.
std::string ShortHeaders(const ReadableMessage& message, size_t width, Zone zone)
{
    return Field("From", OneLine(TextOf(message.from)), width) +
           Field("Sender", OneLine(TextOf(message.sender)), width) + Field("To", OneLine(TextOf(message.to)), width) +
           Field("Cc", OneLine(TextOf(message.cc)), width) + Field("Bcc", OneLine(TextOf(message.bcc)), width) +
           Field("Date", message.hasDate ? TimeWithZone(message.date, zone) : "", width) +
           Field("Subject", OneLine(message.subject), width);
}

std::string AttachmentList(const std::vector<ListedAttachment>& attachments)
{
    std::string list =
        attachments.empty() ? "" : "\n" + Counted(attachments.size(), "attachment", "attachments") + ":\n";
    for (size_t i = 0; i < attachments.size(); ++i)
    {
        list += LineOf(attachments[i], i + 1);
    }
    return list;
}

std::string Page(const ReadableMessage& message, const ReadOptions& options, size_t width)
{
    const bool isWhole = options.headers && !message.headers.empty();
    const std::string headers =
        isWhole ? Wrapped(message.headers, width) : ShortHeaders(message, width, options.utc ? Zone::Utc : Zone::Local);
    const std::string text = message.text.empty() ? "(no text)\n" : Wrapped(message.text, width);
    return headers.substr(0, headers.find_last_not_of('\n') + 1) + "\n\n" + text + AttachmentList(message.attachments);
}

/// The names of headers and quoted lines in colours.
std::string Colored(const std::string& page)
{
    std::string colored;
    bool isHeader = true;
    for (size_t at = 0; at < page.size();)
    {
        const size_t end = std::min(page.find('\n', at), page.size() - 1) + 1;
        const std::string line = page.substr(at, end - at);
        isHeader = isHeader && line != "\n";
        const size_t name = isHeader && line.front() != ' ' ? line.find(':') : std::string::npos;
        colored += name != std::string::npos ? Toned(Tone::Heading, line.substr(0, name + 1)) + line.substr(name + 1)
                   : !isHeader && line.front() == '>' ? Toned(Tone::Quoted, line)
                                                      : line;
        at = end;
    }
    return colored;
}

/// Shows a page through the program that the user reads texts with, on a terminal when there is one.
void ShowPage(const std::string& page, bool noPager)
{
    const std::string pager = platform::EnvironmentVariable("PAGER").value_or("");
    if (noPager || pager.empty() || !platform::IsTerminal(platform::OutputStream::Output))
    {
        Print(Colored(page));
        return;
    }
    FlushOutput();
    if (!platform::GiveToCommand(pager, page))
    {
        Complain("zeb", "the pager '" + OneLine(ValidUtf8(pager)) + "' cannot be started");
        Print(page);
    }
}

size_t WidthOf(const ReadOptions& options)
{
    const int terminal = platform::TerminalColumns(platform::OutputStream::Output);
    return options.width != 0 ? options.width : static_cast<size_t>(terminal);
}

int Run(const ReadOptions& options)
{
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FoundMessage found = mailbox.FindMessage(folder, mailbox.PathOf(folder), options.message);
    CZebMessage message;
    folder.OpenEntry(found.entryId, message, 0);
    const ReadableMessage read = ReadText(message, options.html ? BodyKind::Html : BodyKind::Plain);
    if (options.headers && read.headers.empty())
    {
        Complain("zeb", found.name + " has no headers of the internet");
    }
    Lister(options.json)
        .Object([&] { return JsonOf(read); },
                [&] { ShowPage(Page(read, options, WidthOf(options)), options.noPager); });
    return ExitDone;
}

} // namespace

void AddRead(Command app)
{
    auto options = std::make_shared<ReadOptions>();
    Command command = app.AddCommand("read", "Shows a message as people read it, and leaves it unread");
    AddProfileOption(command, options->profile);
    AddFolderArgument(command, options->folder);
    AddMessageArgument(command, options->message);
    command.AddFlag("--headers", options->headers, "Show all headers as they came over the internet");
    command.AddFlag("--html", options->html, "Show the HTML text, where a message has a plain one too");
    command.AddOption("--width", options->width, "The longest line; without it the terminal's width, else any length")
        .Type("COLUMNS")
        .Between(20u, 10'000u);
    command.AddFlag("--no-pager", options->noPager, "Do not use the program that PAGER names on a terminal");
    AddUtcOption(command, options->utc);
    command.AddFlag("--json", options->json, "Print JSON");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
