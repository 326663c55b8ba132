#include "platform/arguments.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "tools/common/CommandLine.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb-import/Importer.h"
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
};

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

std::string Counted(uint64_t number, const char* one, const char* many)
{
    return Grouped(number) + " " + (number == 1 ? one : many);
}

/// The result: "3 messages in 1 folder, 1 item skipped".
std::string Summary(const Importer& importer)
{
    std::string text =
        Counted(importer.Messages(), "message", "messages") + " in " + Counted(importer.Folders(), "folder", "folders");
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
        throw ToolError(CurrentFailure() + "; in the store now: " + Summary(importer));
    }
}

int Import(const Options& options, MailSource& source)
{
    const std::vector<FolderPath> inbox = InboxFolders(options, source);
    HostSession session(options.profile);
    zeb::platform::CatchInterrupt();
    uint64_t incomplete = 0;
    std::string summary;
    {
        Importer importer(session, inbox, source.MessageCount());
        Run(source, importer);
        incomplete = importer.Skipped() + importer.Repaired();
        summary = Summary(importer);
    }
    Print(summary + "\n");
    return incomplete ? ExitSkipped : ExitDone;
}

template <class Source>
void AddKind(Command app, const std::shared_ptr<Options>& options, const char* name, const char* what,
             const char* argument)
{
    Command command = app.AddCommand(name, what);
    command.AddOption("input", options->input, "The source to read").Required().Type(argument);
    command
        .AddOption("--inbox", options->inbox,
                   "A source folder that becomes the inbox, by its path (\"Top/Sub\"); several are merged")
        .Type("PATH")
        .Expect(1)
        .TakeAll();
    command.AddOption("--profile", options->profile, "The profile to log on to; without it the default profile")
        .Type("NAME");
    command.Runs([options]
    {
        Source source(options->input);
        return Import(*options, source);
    });
}

} // namespace

int main(int argc, char** argv)
{
    zeb::platform::PrepareConsole();
    CommandLine line("zeb-import", "Imports mail into the default store of a profile.");
    const Command app = line.Root();
    app.Footer("Exit codes: 0 done, 1 failed, 2 wrong usage, 3 done except for the items that were reported as "
               "skipped or repaired.");
    const auto options = std::make_shared<Options>();
    AddKind<PstSource>(app, options, "pst", "Imports a PST or OST file with every property", "FILE");
    AddKind<MboxSource>(app, options, "mbox", "Imports an mbox file", "FILE");
    AddKind<EmlSource>(app, options, "eml", "Imports a folder of .eml files, a Maildir, or one file", "PATH");
    return line.Run(zeb::platform::Arguments(argc, argv));
}
