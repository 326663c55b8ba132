// zeb attachments
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/FileName.h"
#include "tools/zeb/Lister.h"
#include "tools/zeb/Objects.h"
#include "tools/zeb/OutputFile.h"

#include <filesystem>
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

struct ListedAttachment
{
    ULONG number = 0; ///< PR_ATTACH_NUM
    std::string name; ///< as the sender gave it
    LONG size = 0;    ///< in bytes, with the attachment's properties
    LONG method = 0;  ///< PR_ATTACH_METHOD
    std::string file; ///< where it was saved, UTF-8; empty: nowhere
};

std::string NameOf(const CZebRow& row)
{
    for (const ULONG tag : {PR_ATTACH_LONG_FILENAME_W, PR_ATTACH_FILENAME_W, PR_DISPLAY_NAME_W})
    {
        std::string name = TextOf(row, tag);
        if (!name.empty())
        {
            return name;
        }
    }
    return "";
}

ListedAttachment AttachmentOf(const CZebRow& row)
{
    ListedAttachment attachment;
    attachment.number = static_cast<ULONG>(static_cast<LONG>(row[PR_ATTACH_NUM]));
    attachment.name = NameOf(row);
    attachment.size = NumberOf(row, PR_ATTACH_SIZE);
    attachment.method = NumberOf(row, PR_ATTACH_METHOD);
    return attachment;
}

bool IsMessage(const ListedAttachment& attachment)
{
    return attachment.method == ATTACH_EMBEDDED_MSG;
}

/// Why an attachment cannot be saved as a file; empty when it can.
std::string WhyNotAFile(const ListedAttachment& attachment)
{
    if (IsMessage(attachment))
    {
        return "is a message, which 'zeb save' writes with the message around it";
    }
    return attachment.method == ATTACH_BY_VALUE ? "" : "is not stored as a file";
}

/// The content of a file; null when it has none.
CComPtr<IStream> ContentOf(CZebAttachment& attachment)
{
    try
    {
        return attachment.OpenProperty(PR_ATTACH_DATA_BIN, 0);
    }
    catch (...)
    {
        if (CurrentResult() != MAPI_E_NOT_FOUND)
        {
            throw;
        }
        CurrentFailure(); // ends the exception
        return {};
    }
}

/// Copies a stream from its position to its end.
void Copy(IStream& from, OutputFile& to)
{
    std::string piece(size_t(1) << 16, '\0');
    for (;;)
    {
        ULONG read = 0;
        const HRESULT result = from.Read(piece.data(), static_cast<ULONG>(piece.size()), &read);
        if (FAILED(result))
        {
            CZebException::Throw(result);
        }
        if (read == 0)
        {
            return;
        }
        to.Write(piece.substr(0, read));
    }
}

/// Saves the attachment under a name that no file of the directory has. @return the file's path
std::string Save(CZebMessage& message, const ListedAttachment& attachment, const std::string& directory)
{
    const std::string file = FreeFile(directory, SafeFileName(attachment.name, "attachment"));
    CZebAttachment opened = message.OpenAttachment(attachment.number, 0);
    OutputFile output(file);
    if (const CComPtr<IStream> content = ContentOf(opened))
    {
        Copy(*content.Get(), output);
    }
    output.Finish();
    return file;
}

std::string Title(const ListedAttachment& attachment, size_t position)
{
    const std::string quoted = attachment.name.empty() ? "" : " ('" + OneLine(attachment.name) + "')";
    return "attachment " + std::to_string(position) + quoted;
}

void MakeDirectory(const std::string& directory)
{
    std::error_code failure;
    const auto path = std::filesystem::u8path(directory);
    std::filesystem::create_directories(path, failure);
    if (!std::filesystem::is_directory(path, failure))
    {
        throw ToolError("the directory '" + ValidUtf8(directory) + "' cannot be created");
    }
}

std::string FileNameOf(const std::string& path)
{
    return std::filesystem::u8path(path).filename().u8string();
}

Json JsonOf(const ListedAttachment& attachment)
{
    return {{"number", attachment.number},
            {"name", TextOrNull(attachment.name)},
            {"size", attachment.size},
            {"message", IsMessage(attachment)},
            {"file", TextOrNull(attachment.file)}};
}

void PrintAttachment(const ListedAttachment& attachment, size_t position)
{
    const std::string name = attachment.name.empty() ? "(no name)" : OneLine(attachment.name);
    Print("  " + std::to_string(position) + "  " + name + (IsMessage(attachment) ? "  message" : "") + "  " +
          Grouped(static_cast<unsigned long long>(attachment.size)) + " bytes" +
          (attachment.file.empty() ? "" : "  saved as " + OneLine(FileNameOf(attachment.file))) + "\n");
}

/// @return false for an attachment that was to be saved and was not
bool List(CZebMessage& message, ListedAttachment attachment, const AttachmentOptions& options, Lister& lister)
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
    lister.Row([&] { return JsonOf(attachment); }, [&] { PrintAttachment(attachment, position); });
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
    CZebRowSet rows;
    message.GetAttachments(rows);
    Lister lister(options.json);
    lister.Text([&] { Print(found.name + "\n"); });
    bool isWhole = true;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        isWhole = List(message, AttachmentOf(rows[i]), options, lister) && isWhole;
    }
    lister.Text([&] { Print(Counted(lister.Count(), "attachment", "attachments") + "\n"); });
    lister.End();
    return isWhole ? ExitDone : ExitSkipped;
}

} // namespace

void AddAttachments(Command app)
{
    auto options = std::make_shared<AttachmentOptions>();
    Command command = app.AddCommand("attachments", "Lists the attachments of a message, or saves them as files");
    AddProfileOption(command, options->profile);
    AddFolderArgument(command, options->folder);
    command
        .AddOption("message", options->message,
                   "A message of that folder, by its number (the # of 'zeb find'), its subject or its entry identifier")
        .Required()
        .Type("MESSAGE");
    command
        .AddOption("--save", options->directory,
                   "Save each in this directory, which is created; a file that exists is never overwritten")
        .Type("DIR");
    command.AddFlag("--json", options->json, "Print JSON");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
