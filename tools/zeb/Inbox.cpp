// zeb inbox
#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/MessageRows.h"

#include <algorithm>
#include <memory>

namespace zeb::tools
{
namespace
{

struct InboxOptions
{
    std::string profile;
    std::string sort = "date";
    ULONG limit = 0;
    bool utc = false;
    bool json = false;
};

void ListTable(CZebTable& table, const InboxOptions& options)
{
    SetMessageColumns(table);
    CZebSortOrder order(0, 0);
    AddSortKeys(options.sort, false, order);
    table.SortTable(order);

    const ULONG total = table.GetRowCount();
    const ULONG wanted = options.limit == 0 ? total : std::min(options.limit, total);
    const MessageColumns columns(false, static_cast<size_t>(platform::TerminalColumns(platform::OutputStream::Output)),
                                 options.utc ? Zone::Utc : Zone::Local);
    Lister lister(options.json);
    lister.Begin([&] { return Json{{"total", total}}; }, "messages");
    lister.Text([&] { Print(total > 0 ? columns.Heading() : ""); });
    ForEachMessage(table, wanted, [&](const MessageRow& row)
    { lister.Row([&] { return MessageForMachines(row); }, [&] { Print(columns.Line(row)); }); });
    lister.End();
    lister.Text([&]
    {
        const std::string shown = lister.Count() == total ? "" : Grouped(lister.Count()) + " of ";
        Print(shown + Grouped(total) + (shown.empty() && total == 1 ? " message\n" : " messages\n"));
    });
}

CZebFolder OpenInbox(CZebMsgStore& store)
{
    try
    {
        return store.OpenInboxFolder(MAPI_BEST_ACCESS);
    }
    catch (...)
    {
        FailWhile("opening the inbox");
    }
}

int Run(const InboxOptions& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    CZebTable table = OpenInbox(store).GetContentsTable(MAPI_UNICODE);
    ListTable(table, options);
    return 0;
}

} // namespace

void AddInbox(Command app)
{
    auto options = std::make_shared<InboxOptions>();
    Command command = app.AddCommand("inbox", "Lists the messages of the inbox");
    AddProfileOption(command, options->profile);
    AddCountOption(command, "--limit", options->limit, "List only the first N messages");
    AddSortOption(command, options->sort);
    AddUtcOption(command, options->utc);
    command.AddFlag("--json", options->json, "Print JSON");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
