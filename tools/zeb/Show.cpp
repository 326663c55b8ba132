// zeb show
#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyReader.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"
#include "tools/zeb/PropertyTable.h"

#include <memory>

namespace zeb::tools
{
namespace
{

struct ShowOptions
{
    std::string profile;
    std::string object;
    std::string message;
    bool associated = false;
    bool full = false;
    bool utc = false;
    bool json = false;
};

/// The object to show and its heading.
struct ShownObject
{
    CZebPropObj object{nullptr};
    std::string name;
};

ShownObject FindShownObject(Mailbox& mailbox, const ShowOptions& options)
{
    ShownObject target;
    if (options.object.empty())
    {
        target.object = CZebPropObj(mailbox.Store().GetInterface().Get());
        target.name = "store '" + OneLine(TextOf(mailbox.Store(), PR_DISPLAY_NAME_W)) + "'";
        return target;
    }
    if (LooksLikeEntryId(options.object) && options.message.empty())
    {
        target.object = mailbox.OpenAny(options.object);
        const ULONG type = target.object.GetObjectType();
        const char* name = Zeb_NameFromValue("MAPIObjTypes", type, nullptr);
        target.name = name != nullptr ? name : "object";
        return target;
    }
    CZebFolder folder = mailbox.OpenFolder(options.object);
    const FolderPath path = mailbox.PathOf(folder);
    target.name = Named(path);
    target.object = CZebPropObj(folder.GetInterface().Get());
    if (options.message.empty())
    {
        return target;
    }
    const FoundMessage message = mailbox.FindMessage(folder, path, options.message, options.associated);
    target.name = message.name;
    folder.OpenEntry(message.entryId, target.object, MAPI_BEST_ACCESS);
    return target;
}

size_t PrintContent(const MessageContent& content, const std::string& title, const TableStyle& style)
{
    PrintProperties(content.properties, "  ", style);
    size_t count = content.properties.size();
    for (size_t i = 0; i < content.recipients.size(); ++i)
    {
        Print(title + "recipient " + std::to_string(i + 1) + "\n");
        PrintProperties(content.recipients[i], "  ", style);
        count += content.recipients[i].size();
    }
    for (size_t i = 0; i < content.attachments.size(); ++i)
    {
        const AttachmentContent& attachment = content.attachments[i];
        const std::string name = title + "attachment " + std::to_string(i + 1);
        Print(name + "\n");
        PrintProperties(attachment.properties, "  ", style);
        count += attachment.properties.size();
        if (!attachment.message)
        {
            continue;
        }
        Print(name + ", message\n");
        count += PrintContent(*attachment.message, name + ", ", style);
    }
    return count;
}

void PrintAll(const std::string& name, const MessageContent& content, const ShowOptions& options)
{
    TableStyle style;
    style.columns = static_cast<size_t>(platform::TerminalColumns(platform::OutputStream::Output));
    style.full = options.full;
    style.zone = options.utc ? Zone::Utc : Zone::Local;
    Print(name + "\n");
    const size_t count = PrintContent(content, "", style);
    Print(Grouped(count) + (count == 1 ? " property\n" : " properties\n"));
}

Json ContentForMachines(const MessageContent& content)
{
    Json object;
    object["properties"] = PropertiesForMachines(content.properties);
    object["recipients"] = Json::array();
    for (const Properties& recipient : content.recipients)
    {
        object["recipients"].push_back({{"properties", PropertiesForMachines(recipient)}});
    }
    object["attachments"] = Json::array();
    for (const AttachmentContent& attachment : content.attachments)
    {
        Json each;
        each["properties"] = PropertiesForMachines(attachment.properties);
        if (attachment.message)
        {
            each["message"] = ContentForMachines(*attachment.message);
        }
        object["attachments"].push_back(each);
    }
    return object;
}

Json JsonOf(const std::string& name, const MessageContent& content, bool isMessage)
{
    Json object;
    object["object"] = name;
    if (isMessage)
    {
        object.update(ContentForMachines(content));
    }
    else
    {
        object["properties"] = PropertiesForMachines(content.properties);
    }
    return object;
}

void ReportUnread(PropertyReader& reader)
{
    for (const Unread& unread : reader.TakeUnread())
    {
        Complain("zeb", PropertyText(unread.tag) + " cannot be read: " + unread.reason);
    }
}

int Run(const ShowOptions& options)
{
    Mailbox mailbox(options.profile);
    ShownObject target = FindShownObject(mailbox, options);
    const bool isMessage = target.object.GetObjectType() == MAPI_MESSAGE;
    PropertyReader reader(ReadWhat::Beginnings);
    MessageContent content;
    if (isMessage)
    {
        CZebMessage message(target.object.GetInterface().Get());
        content = reader.ReadMessage(message);
    }
    else
    {
        content.properties = reader.ReadObject(target.object);
    }
    ReportUnread(reader);
    Lister(options.json)
        .Object([&] { return JsonOf(target.name, content, isMessage); },
                [&] { PrintAll(target.name, content, options); });
    return ExitDone;
}

} // namespace

void AddShow(Command app)
{
    auto options = std::make_shared<ShowOptions>();
    Command command = app.AddCommand(
        "show", "Shows all properties of a folder or message, with recipients and attachments, or of the store");
    AddProfileOption(command, options->profile);
    command
        .AddOption("object", options->object,
                   "A folder by path, or any object by entry identifier; without it the store")
        .Type("OBJECT");
    command
        .AddOption("message", options->message,
                   "A message of that folder, by its number (the # of 'zeb find') or its subject")
        .Type("MESSAGE");
    command.AddFlag("--associated", options->associated, "The message is one of the folder's hidden (associated) ones");
    command.AddFlag("--full", options->full, "Show long values completely, with line breaks");
    AddUtcOption(command, options->utc);
    command.AddFlag("--json", options->json, "Print JSON, with complete values");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
