// zeb mkdir, rmdir, empty, info
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Times.h"
#include "tools/zeb/Arguments.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"

#include <memory>

namespace zeb::tools
{
namespace
{

struct FolderChangeOptions
{
    std::string profile;
    std::string folder;
    bool parents = false;
    bool recursive = false;
    bool associated = false;
    bool create = false;
    bool yes = false;
    bool utc = false;
    bool json = false;
};

struct Contents
{
    ULONG messages = 0, associated = 0, folders = 0;
};

Contents ContentsOf(CZebFolder& folder)
{
    CZebPropValArray values;
    folder.GetProps(values, 2, PR_CONTENT_COUNT, PR_ASSOC_CONTENT_COUNT);
    Contents contents;
    if (values.hasRealValue(PR_CONTENT_COUNT))
    {
        contents.messages = values[PR_CONTENT_COUNT];
    }
    if (values.hasRealValue(PR_ASSOC_CONTENT_COUNT))
    {
        contents.associated = values[PR_ASSOC_CONTENT_COUNT];
    }
    contents.folders = folder.GetHierarchyTable(CONVENIENT_DEPTH).GetRowCount();
    return contents;
}

std::string Described(const Contents& contents)
{
    return Counted(contents.messages + contents.associated, "message", "messages") + " and " +
           Counted(contents.folders, "folder", "folders");
}

int MakeFolder(const FolderChangeOptions& options)
{
    const FolderPath path = FolderPath::Parse(ValidUtf8(options.folder));
    if (path.names.empty())
    {
        throw ToolError(Named(path) + " already exists");
    }
    Mailbox mailbox(options.profile);
    FolderTree& folders = mailbox.Folders();
    try
    {
        if (options.parents)
        {
            folders.Open(path);
            folders.Keep();
        }
        else
        {
            CreateSubfolder(folders.Existing(path.Above()), path.names.back());
        }
    }
    catch (CZebException* exception)
    {
        if (exception->GetResult() == MAPI_E_COLLISION)
        {
            exception->Delete();
            throw ToolError(Named(path) + " already exists");
        }
        const ToolError failure = CurrentError("creating " + Named(path) + ": ");
        folders.UndoCreated();
        throw failure;
    }
    Print(Named(path) + " exists\n");
    return ExitDone;
}

int RemoveFolder(const FolderChangeOptions& options)
{
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FolderPath path = mailbox.PathOf(folder);
    if (path.names.empty())
    {
        throw ToolError(Named(path) + " cannot be deleted");
    }
    const Contents contents = ContentsOf(folder);
    const bool isEmpty = contents.messages + contents.associated + contents.folders == 0;
    if (!isEmpty && !options.recursive)
    {
        throw ToolError(Named(path) + " contains " + Described(contents) + "; --recursive deletes them too");
    }
    Confirm("delete " + Named(path) + (isEmpty ? "" : " with " + Described(contents)) + " permanently", options.yes);
    try
    {
        CZebFolder parent(nullptr);
        mailbox.Store().OpenEntry(folder.GetParentID(), parent, MAPI_BEST_ACCESS);
        parent.DeleteFolder(folder.GetEntryID(), nullptr, options.recursive ? DEL_MESSAGES | DEL_FOLDERS : 0, nullptr);
    }
    catch (...)
    {
        FailWhile("deleting " + Named(path));
    }
    Print("deleted " + Named(path) + "\n");
    return ExitDone;
}

int Empty(const FolderChangeOptions& options)
{
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FolderPath path = mailbox.PathOf(folder);
    Contents contents = ContentsOf(folder);
    if (!options.associated)
    {
        contents.associated = 0;
    }
    Confirm("delete " + Described(contents) + " in " + Named(path) + " permanently", options.yes);
    try
    {
        folder.EmptyFolder(nullptr, options.associated ? DEL_ASSOCIATED : 0, nullptr);
    }
    catch (...)
    {
        FailWhile("emptying " + Named(path));
    }
    Print(Named(path) + " is empty: " + Described(contents) + " deleted\n");
    return ExitDone;
}

/// The information message; created on request when there is none.
CZebMessage InformationMessage(CZebFolder& folder, const FolderPath& path, bool create)
{
    try
    {
        return create ? folder.CreateQorInfoMessage(true, true) : folder.OpenQorInfoMessage();
    }
    catch (CZebException* exception)
    {
        if (exception->GetResult() != NameNotFound)
        {
            throw;
        }
        exception->Delete();
    }
    throw ToolError(Named(path) + " has no information message; --create creates one");
}

int Information(const FolderChangeOptions& options)
{
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FolderPath path = mailbox.PathOf(folder);
    CZebMessage message = InformationMessage(folder, path, options.create);
    Json object;
    object["folder"] = path.Text();
    object["subject"] = TextOf(message, PR_SUBJECT_W);
    object["name"] = TextOf(message, PR_DISPLAY_NAME_W);
    object["class"] = TextOf(message, PR_MESSAGE_CLASS_W);
    CZebPropValArray values;
    message.GetProps(values, 1, PR_CREATION_TIME);
    const bool hasTime = values.hasRealValue(PR_CREATION_TIME);
    const FILETIME time = hasTime ? static_cast<const FILETIME&>(values[PR_CREATION_TIME]) : FILETIME{};
    object["created"] = hasTime ? Json(TimeForMachines(time)) : Json(nullptr);
    object["entryId"] = static_cast<const char*>(message.GetEntryID().String());
    Lister(options.json)
        .Object([&] { return object; }, [&]
    {
        const std::string created = hasTime ? TimeWithZone(time, options.utc ? Zone::Utc : Zone::Local) : "";
        Print("information message of " + Named(path) + "\n");
        Print("  subject  " + OneLine(object["subject"]) + "\n");
        Print("  name     " + OneLine(object["name"]) + "\n");
        Print("  class    " + OneLine(object["class"]) + "\n");
        Print("  created  " + created + "\n");
        Print("  entry    " + object["entryId"].get<std::string>() + "\n");
    });
    return ExitDone;
}

Command AddCommand(Command app, FolderChangeOptions& options, const char* name, const char* help,
                   const std::function<int()>& body)
{
    Command command = app.AddCommand(name, help);
    AddProfileOption(command, options.profile);
    AddFolderArgument(command, options.folder);
    command.Runs(body);
    return command;
}

} // namespace

void AddFolderCommands(Command app)
{
    auto options = std::make_shared<FolderChangeOptions>();
    Command make = AddCommand(app, *options, "mkdir", "Creates a folder", [options] { return MakeFolder(*options); });
    make.AddFlag("-p,--parents", options->parents,
                 "Create missing parent folders too; not an error when the folder exists");

    Command remove = AddCommand(app, *options, "rmdir", "Deletes a folder permanently",
                                [options] { return RemoveFolder(*options); });
    remove.AddFlag("-r,--recursive", options->recursive, "Delete its messages and subfolders too");
    AddYesOption(remove, options->yes);

    Command empty =
        AddCommand(app, *options, "empty", "Deletes the contents of a folder, including subfolders, permanently",
                   [options] { return Empty(*options); });
    empty.AddFlag("--associated", options->associated, "Delete the hidden (associated) messages too");
    AddYesOption(empty, options->yes);

    Command information = AddCommand(app, *options, "info", "Shows the library's information message of a folder",
                                     [options] { return Information(*options); });
    information.AddFlag("--create", options->create, "Create the message when there is none");
    AddUtcOption(information, options->utc);
    information.AddFlag("--json", options->json, "Print JSON");
}

} // namespace zeb::tools
