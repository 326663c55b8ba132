// zeb attachments
#include "tools/common/Failure.h"
#include "tools/common/FileName.h"
#include "tools/common/ListedAttachment.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/OutputFile.h"
#include "tools/common/Streams.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"

#include <memory>

namespace zeb::tools
{
namespace
{

struct AttachmentOptions
{
    std::string profile;
    std::string folder;
    std::string message;
    std::string directory; ///< path, UTF-8; empty: nothing is saved
    bool json = false;
};

/// Why an attachment cannot be saved as a file; empty when it can.
std::string WhyNotAFile(const ListedAttachment& attachment)
{
    if (IsMessage(attachment))
    {
        return "is a message, which 'zeb save' writes with the message around it";
    }
    return attachment.method == ATTACH_BY_VALUE ? "" : "is not stored as a file";
}

/// Saves the attachment under a name that no file of the directory has. @return the file's path
std::string Save(CZebMessage& message, const ListedAttachment& attachment, const std::string& directory)
{
    const std::string file = FreeFile(directory, SafeFileName(attachment.name, "attachment"));
    CZebAttachment opened = message.OpenAttachment(attachment.number, 0);
    OutputFile output(file);
    if (const CComPtr<IStream> content = OptionalStream(opened, PR_ATTACH_DATA_BIN))
    {
        ForEachPiece(*content.Get(), [&](const std::string& piece) { output.Write(piece); });
    }
    output.Finish();
    return file;
}

std::string Title(const ListedAttachment& attachment, size_t position)
{
    const std::string quoted = attachment.name.empty() ? "" : " ('" + OneLine(attachment.name) + "')";
    return "attachment " + std::to_string(position) + quoted;
}

/// @return false for an attachment that was to be saved and was not
bool List(CZebMessage& message, ListedAttachment& attachment, const AttachmentOptions& options, Lister& lister)
{
    const size_t position = lister.Count() + 1;
    const bool saves = !options.directory.empty();
    const std::string why = saves ? WhyNotAFile(attachment) : "";
    if (!why.empty())
    {
        Complain("zeb", Title(attachment, position) + " " + why);
    }
    else if (saves)
    {
        try
        {
            attachment.file = Save(message, attachment, options.directory);
        }
        catch (...)
        {
            FailWhile("saving " + Title(attachment, position));
        }
    }
    lister.Row([&] { return JsonOf(attachment); }, [&] { Print(LineOf(attachment, position)); });
    return why.empty();
}

int Run(const AttachmentOptions& options)
{
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FoundMessage found = mailbox.FindMessage(folder, mailbox.PathOf(folder), options.message);
    CZebMessage message;
    folder.OpenEntry(found.entryId, message, 0);
    if (!options.directory.empty())
    {
        MakeDirectory(options.directory);
    }
    std::vector<ListedAttachment> attachments = AttachmentsOf(message);
    Lister lister(options.json);
    lister.Text([&] { Print(found.name + "\n"); });
    bool isWhole = true;
    for (ListedAttachment& attachment : attachments)
    {
        isWhole = List(message, attachment, options, lister) && isWhole;
    }
    lister.Text([&] { Print(Counted(lister.Count(), "attachment", "attachments") + "\n"); });
    lister.EndAs("attachments");
    return isWhole ? ExitDone : ExitSkipped;
}

} // namespace

void AddAttachments(Command app)
{
    auto options = std::make_shared<AttachmentOptions>();
    Command command = app.AddCommand("attachments", "Lists the attachments of a message, or saves them as files");
    AddProfileOption(command, options->profile);
    AddFolderArgument(command, options->folder);
    AddMessageArgument(command, options->message);
    command
        .AddOption("--save", options->directory,
                   "Save each in this directory, which is created; a file that exists is never overwritten")
        .Type("DIR");
    command.AddFlag("--json", options->json, "Print JSON");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
