// zeb mv, cp, rm, new, set
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyChange.h"
#include "tools/zeb/Arguments.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/NewMessage.h"
#include "tools/zeb/Objects.h"

#include <algorithm>
#include <memory>

namespace zeb::tools
{
namespace
{

struct MessageChangeOptions
{
    std::string profile;
    std::vector<std::string> arguments;
    std::vector<std::string> removals;
    bool move = false;
    bool hard = false;
    bool yes = false;
    bool associated = false;
    bool read = false;
    bool unread = false;
    NewMessageText text; ///< of "zeb new"
};

std::string Named(const std::vector<FoundMessage>& messages)
{
    return messages.size() == 1 ? messages.front().name : Grouped(messages.size()) + " messages";
}

/// The entry identifiers as one list.
void FillList(CZebBinArray& list, const std::vector<FoundMessage>& messages)
{
    for (size_t i = 0; i < messages.size(); ++i)
    {
        list.SetAt(static_cast<ULONG>(i), messages[i].entryId);
    }
}

int TransferMessages(Mailbox& mailbox, const MessageChangeOptions& options)
{
    const std::vector<std::string> sources(options.arguments.begin(), options.arguments.end() - 1);
    std::vector<FoundMessages> groups = mailbox.FindMessages(sources);
    CZebFolder target = mailbox.OpenFolder(options.arguments.back());
    const FolderPath path = mailbox.PathOf(target);
    for (FoundMessages& found : groups)
    {
        if (options.move && mailbox.Session().CompareEntryIDs(found.folder.GetEntryID(), target.GetEntryID()))
        {
            throw ToolError(Named(found.messages) + " cannot be moved: it already is in " + Named(path));
        }
    }
    for (FoundMessages& found : groups)
    {
        CZebBinArray list(static_cast<ULONG>(found.messages.size()));
        FillList(list, found.messages);
        try
        {
            if (options.move)
            {
                found.folder.MoveMessages(list, target, 0, nullptr, nullptr);
            }
            else
            {
                found.folder.CopyMessages(list, target, 0, nullptr, nullptr);
            }
        }
        catch (...)
        {
            FailWhile((options.move ? "moving " : "copying ") + Named(found.messages));
        }
    }
    Print(Named(AllOf(groups)) + (options.move ? " moved to " : " copied to ") + Named(path) + "\n");
    return ExitDone;
}

/// The target of a folder: an existing parent folder, or a parent folder and a new name.
struct FolderTarget
{
    CZebFolder parent{nullptr};
    FolderPath path;
    std::string newName;
};

FolderTarget FindFolderTarget(Mailbox& mailbox, const std::string& text, const std::string& name)
{
    FolderTarget target;
    try
    {
        target.parent = mailbox.OpenFolder(text);
        target.path = mailbox.PathOf(target.parent).Below(name);
        return target;
    }
    catch (const UsageError&)
    {
        throw;
    }
    catch (const ToolError&)
    {
        if (LooksLikeEntryId(text))
        {
            throw;
        }
    }
    target.path = FolderPath::Parse(ValidUtf8(text));
    target.newName = target.path.names.back();
    target.parent = mailbox.Folders().Existing(target.path.Above());
    return target;
}

int TransferFolder(Mailbox& mailbox, const MessageChangeOptions& options)
{
    CZebFolder folder = mailbox.OpenFolder(options.arguments.front());
    const FolderPath path = mailbox.PathOf(folder);
    if (path.names.empty())
    {
        throw ToolError(Named(path) + " cannot be " + (options.move ? "moved" : "copied"));
    }
    FolderTarget target = FindFolderTarget(mailbox, options.arguments.back(), path.names.back());
    try
    {
        CZebFolder parent(nullptr);
        mailbox.Store().OpenEntry(folder.GetParentID(), parent, MAPI_BEST_ACCESS);
        const CStringW name = WideFromUtf8(target.newName);
        if (options.move)
        {
            parent.MoveFolder(folder.GetEntryID(), target.parent, name);
        }
        else
        {
            parent.CopyFolder(folder.GetEntryID(), target.parent, name);
        }
    }
    catch (...)
    {
        FailWhile((options.move ? "moving " : "copying ") + Named(path));
    }
    Print(Named(path) + " is now " + (options.move ? "" : "also ") + Named(target.path) + "\n");
    return ExitDone;
}

int Transfer(const MessageChangeOptions& options)
{
    Mailbox mailbox(options.profile);
    const bool isMessage = options.arguments.size() > 2 || options.arguments.front() == InputMark ||
                           (LooksLikeEntryId(options.arguments.front()) &&
                            mailbox.OpenAny(options.arguments.front()).GetObjectType() == MAPI_MESSAGE);
    return isMessage ? TransferMessages(mailbox, options) : TransferFolder(mailbox, options);
}

int Delete(const MessageChangeOptions& options)
{
    Mailbox mailbox(options.profile);
    const std::vector<FoundMessages> groups = mailbox.FindMessages(options.arguments);
    const std::vector<FoundMessage> messages = AllOf(groups);
    for (const FoundMessages& found : groups)
    {
        CZebMessage first(nullptr);
        mailbox.Store().OpenEntry(found.messages.front().entryId, first, MAPI_BEST_ACCESS);
        if (!options.hard && mailbox.Store().IsUnderDeleted(mailbox.Session(), first))
        {
            throw ToolError(Named(found.messages) +
                            " cannot be moved to the deleted items: it already is there; --hard deletes it "
                            "permanently");
        }
    }
    if (options.hard)
    {
        Confirm("delete " + Named(messages) + " permanently", options.yes);
    }
    for (const FoundMessages& found : groups)
    {
        CZebBinArray list(static_cast<ULONG>(found.messages.size()));
        FillList(list, found.messages);
        try
        {
            mailbox.Store().DeleteMessages(list, options.hard);
        }
        catch (...)
        {
            FailWhile("deleting " + Named(found.messages));
        }
    }
    Print(Named(messages) + (options.hard ? " deleted permanently\n" : " moved to the deleted items\n"));
    return ExitDone;
}

Properties Assignments(const MessageChangeOptions& options, size_t from)
{
    Properties properties;
    for (size_t i = from; i < options.arguments.size(); ++i)
    {
        properties.push_back(ParseAssignment(options.arguments[i]));
    }
    for (const std::string& name : options.removals)
    {
        properties.push_back(ParseRemoval(name));
    }
    return properties;
}

int New(const MessageChangeOptions& options)
{
    MessageContent content = ContentOf(options.text);
    const Properties properties = Assignments(options, 1);
    content.properties.insert(content.properties.end(), properties.begin(), properties.end());
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.arguments.front());
    const FolderPath path = mailbox.PathOf(folder);
    NameResolver names;
    CZebMessage message(nullptr);
    try
    {
        message = folder.CreateMessage(options.associated ? MAPI_ASSOCIATED : 0);
        RefuseProblems(WriteMessage(message, content, names));
        message.SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE);
    }
    catch (...)
    {
        FailWhile("creating a message in " + Named(path));
    }
    Print("new message in " + Named(path) + "\n  " +
          std::string(static_cast<const char*>(message.GetEntryID().String())) + "\n");
    return ExitDone;
}

/// The object that `set` changes, and its name in messages.
struct ChangedObject
{
    CZebPropObj object{nullptr};
    std::string name;
};

ChangedObject FindChangedObject(Mailbox& mailbox, const std::vector<std::string>& names)
{
    ChangedObject target;
    if (names.size() == 1 && LooksLikeEntryId(names.front()))
    {
        target.object = mailbox.OpenAny(names.front());
        target.name = NamedEntryId(names.front());
        return target;
    }
    CZebFolder folder = mailbox.OpenFolder(names.front());
    const FolderPath path = mailbox.PathOf(folder);
    target.name = Named(path);
    target.object = CZebPropObj(folder.GetInterface().Get());
    if (names.size() == 1)
    {
        return target;
    }
    const FoundMessage message = mailbox.FindMessage(folder, path, names[1]);
    target.name = message.name;
    folder.OpenEntry(message.entryId, target.object, MAPI_BEST_ACCESS);
    return target;
}

void SetReadFlag(CZebPropObj& object, bool read)
{
    if (object.GetObjectType() != MAPI_MESSAGE)
    {
        throw ToolError("--read and --unread apply only to messages");
    }
    CZebMessage(object.GetInterface().Get()).SetReadFlag(SUPPRESS_RECEIPT | (read ? 0 : CLEAR_READ_FLAG));
}

int Set(const MessageChangeOptions& options)
{
    const auto first = std::find_if(options.arguments.begin() + 1, options.arguments.end(), IsAssignment);
    const std::vector<std::string> names(options.arguments.begin(), first);
    if (names.size() > 2)
    {
        throw UsageError("'" + Shortened(OneLine(ValidUtf8(names[2])), 60) + "' is not NAME=VALUE");
    }
    Properties properties = Assignments(options, names.size());
    if (properties.empty() && !options.read && !options.unread)
    {
        throw UsageError("nothing to change: give NAME=VALUE, --delete NAME, --read or --unread");
    }
    Mailbox mailbox(options.profile);
    ChangedObject target = FindChangedObject(mailbox, names);
    NameResolver resolver;
    try
    {
        ChangeProperties(target.object, properties, resolver);
        if (options.read || options.unread)
        {
            SetReadFlag(target.object, options.read);
        }
    }
    catch (...)
    {
        FailWhile("changing " + target.name);
    }
    Print("changed " + target.name + "\n");
    return ExitDone;
}

constexpr const char* HowToName =
    "A message is given by its folder and its number there (the # of 'zeb find') or its subject, or by its "
    "entry identifier alone; several by numbers and ranges (1-3,7,12-); - stands for entry identifiers on standard "
    "input ('zeb find --ids'); subject:123 means the subject 123.";

void AddTransfer(Command app, const char* name, const char* help, bool move)
{
    auto options = std::make_shared<MessageChangeOptions>();
    options->move = move;
    Command command = app.AddCommand(name, help);
    AddProfileOption(command, options->profile);
    command
        .AddOption("objects", options->arguments,
                   "A folder and the target folder; or a folder, its messages, and the target folder. A "
                   "folder may get a new name")
        .Required()
        .Expect(2, 10000)
        .Type("FOLDER [MESSAGE...] TARGET");
    command.Footer(HowToName);
    command.Runs([options] { return Transfer(*options); });
}

void AddAssignments(Command command, MessageChangeOptions& options, const char* type, const char* help)
{
    AddProfileOption(command, options.profile);
    command.AddOption("arguments", options.arguments, help).Required().Expect(1, 10000).Type(type);
    command.Footer("Properties are named and written as in the files of 'zeb load': PR_SUBJECT=Hello, "
                   "PR_IMPORTANCE=2, PR_START_DATE=2026-01-02T03:04:05Z, 0x68001003=[1,2], "
                   "{GUID}:PT_LONG:id:0x8503=7.");
}

void AddTextOptions(Command command, NewMessageText& text)
{
    const auto addAddresses = [&](const char* name, std::vector<std::string>& addresses, const char* help)
    { command.AddOption(name, addresses, help).Type("ADDRESS").OneValueEach().TakeAll(); };
    command.AddOption("--from", text.from, "The author: ada@example.org, \"Ada Lovelace <ada@example.org>\"")
        .Type("ADDRESS");
    addAddresses("--to", text.to, "A recipient; may be given several times");
    addAddresses("--cc", text.cc, "A recipient of a copy");
    addAddresses("--bcc", text.bcc, "A recipient of a copy whom the others do not see");
    command.AddOption("--subject", text.subject, "The subject").Type("TEXT");
    command.AddOption("--body", text.body, "The text of the message; - reads it from standard input").Type("TEXT");
    command.AddOption("--attach", text.attach, "A file to attach; may be given several times")
        .Type("FILE")
        .OneValueEach()
        .TakeAll();
}

} // namespace

void AddMessageCommands(Command app)
{
    AddTransfer(app, "mv", "Moves messages, or a folder with all its contents", true);
    AddTransfer(app, "cp", "Copies messages, or a folder with all its contents", false);

    auto removal = std::make_shared<MessageChangeOptions>();
    Command remove = app.AddCommand("rm", "Moves messages to the deleted items, or deletes them permanently");
    AddProfileOption(remove, removal->profile);
    remove.AddOption("messages", removal->arguments, "A folder and its messages")
        .Required()
        .Expect(1, 10000)
        .Type("FOLDER MESSAGE...");
    remove.AddFlag("--hard", removal->hard, "Delete permanently");
    AddYesOption(remove, removal->yes);
    remove.Footer(HowToName);
    remove.Runs([removal] { return Delete(*removal); });

    auto made = std::make_shared<MessageChangeOptions>();
    Command create = app.AddCommand("new", "Creates a message");
    AddAssignments(create, *made, "FOLDER [NAME=VALUE...]", "The folder, and the message's properties");
    AddTextOptions(create, made->text);
    create.AddFlag("--associated", made->associated, "Create a hidden (associated) message");
    create.Runs([made] { return New(*made); });

    auto changed = std::make_shared<MessageChangeOptions>();
    Command set = app.AddCommand("set", "Changes properties of a message or folder, all or none");
    AddAssignments(set, *changed, "FOLDER [MESSAGE] [NAME=VALUE...]", "The message or folder, and the changes");
    set.AddOption("--delete", changed->removals, "Delete a property").Type("NAME").OneValueEach();
    Option read = set.AddFlag("--read", changed->read, "Mark a message as read");
    set.AddFlag("--unread", changed->unread, "Mark a message as unread").Excludes(read);
    set.Runs([changed] { return Set(*changed); });
}

} // namespace zeb::tools
