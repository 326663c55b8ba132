#include "platform/arguments.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "tools/common/CommandLine.h"
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Moments.h"
#include "tools/common/Output.h"
#include "tools/zeb-import/Importer.h"
#include "tools/zeb-import/InputKind.h"
#include "tools/zeb-import/MimeSource.h"
#include "tools/zeb-import/PstSource.h"

#include <algorithm>
#include <memory>

namespace
{

using namespace zeb::tools;

struct Options
{
    std::string profile;
    std::string input;
    std::vector<std::string> inbox;
    std::string since;
    bool dryRun = false;
    bool skipDuplicates = false;
    bool json = false;
};

ImportChoice ChoiceOf(const Options& options)
{
    ImportChoice choice;
    choice.dryRun = options.dryRun;
    choice.skipDuplicates = options.skipDuplicates;
    if (!options.since.empty())
    {
        choice.since = ParseMoment("--since", options.since, Zone::Local).time;
    }
    return choice;
}

/// The folders named on the command line; each one must exist in the source.
std::vector<FolderPath> InboxFolders(const Options& options, MailSource& source)
{
    const std::vector<FolderPath> known = source.Folders();
    std::vector<FolderPath> chosen;
    for (const std::string& text : options.inbox)
    {
        const FolderPath path = FolderPath::Parse(text);
        const bool found = std::any_of(known.begin(), known.end(), [&](const FolderPath& folder)
        { return folder.fromRoot == path.fromRoot && folder.names == path.names; });
        if (!found)
        {
            std::string list;
            for (const FolderPath& folder : known)
            {
                list += "\n  " + OneLine(folder.Text());
            }
            throw ToolError("'" + options.input + "' has no folder '" + text + "'; it has:" + list);
        }
        chosen.push_back(path);
    }
    return chosen;
}

/// The result: "3 messages in 1 folder, 1 item skipped".
std::string Summary(const Importer& importer)
{
    std::string text = Counted(importer.Messages().imported, "message", "messages") + " in " +
                       Counted(importer.Folders(), "folder", "folders");
    if (importer.Skipped())
    {
        text += ", " + Counted(importer.Skipped(), "item", "items") + " skipped";
    }
    if (importer.Repaired())
    {
        text += ", " + Counted(importer.Repaired(), "item", "items") + " repaired";
    }
    if (importer.PassedOver())
    {
        text += ", " + Counted(importer.PassedOver(), "file", "files") + " ignored";
    }
    return text;
}

/// "5 messages read = 2 imported + 1 duplicate + 1 older + 1 damaged"
std::string Sum(const MessageCounts& counts, bool dryRun)
{
    return Counted(counts.read, "message", "messages") + " read = " + Grouped(counts.imported) +
           (dryRun ? " to import + " : " imported + ") + Counted(counts.duplicates, "duplicate", "duplicates") + " + " +
           Grouped(counts.older) + " older + " + Grouped(counts.damaged) + " damaged";
}

void PrintSummary(const Importer& importer, const ImportChoice& choice)
{
    for (const FilledFolder& folder : importer.Filled())
    {
        if (choice.dryRun)
        {
            Print(RightAligned(Grouped(folder.messages), 9) + "  " +
                  (folder.path.empty() ? "(top)" : OneLine(folder.path)) + "\n");
        }
    }
    Print((choice.dryRun ? "nothing is written; an import would bring " : "") + Summary(importer) + "\n");
    if (choice.IsAny())
    {
        Print(Sum(importer.Messages(), choice.dryRun) + "\n");
    }
}

Json SummaryJson(const Importer& importer, const ImportChoice& choice)
{
    const MessageCounts& counts = importer.Messages();
    Json folders = Json::array();
    for (const FilledFolder& folder : importer.Filled())
    {
        folders.push_back({{"path", folder.path}, {"messages", folder.messages}});
    }
    return {{"dryRun", choice.dryRun},
            {"read", counts.read},
            {"imported", counts.imported},
            {"duplicates", counts.duplicates},
            {"older", counts.older},
            {"damaged", counts.damaged},
            {"repaired", importer.Repaired()},
            {"skippedItems", importer.Skipped()},
            {"ignored", importer.PassedOver()},
            {"folders", folders}};
}

/// When an import ends early, the counts of the imported items are printed.
void Run(MailSource& source, Importer& importer)
{
    try
    {
        source.Run(importer);
    }
    catch (const Interruption&)
    {
        throw ToolError("interrupted; in the store now: " + Summary(importer));
    }
    catch (...)
    {
        throw CurrentError("", "; in the store now: " + Summary(importer));
    }
}

int Import(const Options& options, MailSource& source)
{
    const ImportChoice choice = ChoiceOf(options);
    const std::vector<FolderPath> inbox = InboxFolders(options, source);
    HostSession session(options.profile);
    zeb::platform::CatchInterrupt();
    Importer importer(session, choice, inbox, source.MessageCount());
    Run(source, importer);
    importer.Finish();
    Lister(options.json).Object([&] { return SummaryJson(importer, choice); }, [&] { PrintSummary(importer, choice); });
    return importer.Skipped() + importer.Repaired() != 0 ? ExitSkipped : ExitDone;
}

/// An input of any kind.
std::unique_ptr<MailSource> Detected(const std::string& input)
{
    switch (KindOf(input))
    {
    case InputKind::Pst:
        return std::make_unique<PstSource>(input);
    case InputKind::Mbox:
        return std::make_unique<MboxSource>(input);
    case InputKind::Mail:
        break;
    case InputKind::Folder:
        auto source = std::make_unique<EmlSource>(input);
        if (!source->IsMail())
        {
            throw ToolError("'" + ValidUtf8(input) + "' has no mail: no .eml or .msg file, and it is not a Maildir");
        }
        return source;
    }
    return std::make_unique<EmlSource>(input);
}

void AddOptions(Command command, Options& options)
{
    command
        .AddOption("--inbox", options.inbox,
                   "A source folder that becomes the inbox, by its path (\"Top/Sub\"); several are merged")
        .Type("PATH")
        .Expect(1)
        .TakeAll();
    command.AddOption("--profile", options.profile, "The profile to log on to; without it the default profile")
        .Type("NAME");
    command
        .AddOption("--since", options.since,
                   "Only messages sent at or after: 2026-01-02, 2026-01-02T03:04:05+01:00, yesterday, 7d")
        .Type("DATE");
    command.AddFlag("--skip-duplicates", options.skipDuplicates,
                    "Leave out messages that the folder already has, or that came before in this import");
    command.AddFlag("--dry-run", options.dryRun, "Read everything, write nothing, and print what would be imported");
    command.AddFlag("--json", options.json, "Print the result as JSON");
}

template <class Source>
void AddKind(Command app, const std::shared_ptr<Options>& options, const char* name, const char* what,
             const char* argument)
{
    Command command = app.AddCommand(name, what);
    command.AddOption("input", options->input, "The source to read").Required().Type(argument);
    AddOptions(command, *options);
    command.Runs([options]
    {
        Source source(options->input);
        return Import(*options, source);
    });
}

void AddDetection(Command app, const std::shared_ptr<Options>& options)
{
    app.AddOption("input", options->input, "The source to read, of any of these kinds").Type("PATH");
    AddOptions(app, *options);
    app.RunsAlone();
    app.Runs([options]
    {
        if (options->input.empty())
        {
            throw UsageError("name the file or folder to import, or see zeb-import --help");
        }
        return Import(*options, *Detected(options->input));
    });
}

} // namespace

int main(int argc, char** argv)
{
    zeb::platform::PrepareConsole();
    CommandLine line("zeb-import", "Imports mail into the default store of a profile.");
    line.OnFailure([](const ToolFailure& failure, bool json) { ReportFailure("zeb-import", failure, json); });
    const Command app = line.Root();
    app.Footer("Exit codes: 0 done, 1 failed, 2 wrong usage, 3 done except for the items that were reported as "
               "skipped or repaired.");
    const auto options = std::make_shared<Options>();
    AddDetection(app, options);
    AddKind<PstSource>(app, options, "pst", "Imports a PST or OST file with every property", "FILE");
    AddKind<MboxSource>(app, options, "mbox", "Imports an mbox file", "FILE");
    AddKind<EmlSource>(app, options, "eml", "Imports a folder of .eml and .msg files, a Maildir, or one file", "PATH");
    line.AddManualPage();
    return line.Run(zeb::platform::Arguments(argc, argv));
}
