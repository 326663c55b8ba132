// zeb inbox
#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/MessageRows.h"

#include <algorithm>
#include <memory>

namespace zeb::tools
{
namespace
{

/// Rows per call: few calls without holding the whole inbox in memory.
constexpr ULONG RowsInOneCall = 500;

struct Options
{
    std::string profile;
    std::string sort = "date";
    ULONG limit = 0;
    bool utc = false;
    bool json = false;
};

/// Prints the list row by row, as text or JSON.
class Listing
{
public:
    Listing(bool json, Zone zone)
        : m_json(json)
        , m_columns(false, static_cast<size_t>(platform::TerminalColumns(platform::OutputStream::Output)), zone)
    {
    }

    void Begin(ULONG total)
    {
        if (m_json)
        {
            Print("{\n  \"total\": " + std::to_string(total) + ",\n  \"messages\": [");
        }
        else if (total > 0)
        {
            Print(m_columns.Heading());
        }
    }

    void Add(const MessageRow& row)
    {
        if (m_json)
        {
            Print((m_shown ? ",\n    " : "\n    ") +
                  MessageForMachines(row).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
        }
        else
        {
            Print(m_columns.Line(row));
        }
        ++m_shown;
    }

    void End(ULONG total)
    {
        if (m_json)
        {
            Print(m_shown ? "\n  ]\n}\n" : "]\n}\n");
        }
        else if (m_shown == total)
        {
            Print(Grouped(total) + (total == 1 ? " message\n" : " messages\n"));
        }
        else
        {
            Print(Grouped(m_shown) + " of " + Grouped(total) + " messages\n");
        }
    }

private:
    const bool m_json;
    const MessageColumns m_columns;
    ULONG m_shown = 0;
};

void ListTable(CZebTable& table, const Options& options)
{
    SetMessageColumns(table);
    CZebSortOrder order(0, 0);
    AddSortKeys(options.sort, order);
    table.SortTable(order);

    const ULONG total = table.GetRowCount();
    Listing listing(options.json, options.utc ? Zone::Utc : Zone::Local);
    listing.Begin(total);
    ULONG left = options.limit == 0 ? total : std::min(options.limit, total);
    while (left > 0)
    {
        CZebRowSet rows;
        table.QueryRows(&rows, static_cast<LONG>(std::min(left, RowsInOneCall)), nullptr, nullptr);
        if (!rows.IsValid())
        {
            break;
        }
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            listing.Add(ReadMessageRow(rows[i]));
        }
        left -= std::min(left, rows.Count());
    }
    listing.End(total);
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

int Run(const Options& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    CZebTable table = OpenInbox(store).GetContentsTable(MAPI_UNICODE);
    ListTable(table, options);
    return 0;
}

} // namespace

void AddInbox(CLI::App& app, Action& action)
{
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("inbox", "Lists the messages of the inbox");
    AddProfileOption(*command, options->profile);
    AddCountOption(*command, "--limit", options->limit, "List only the first N messages");
    AddSortOption(*command, options->sort);
    AddUtcOption(*command, options->utc);
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, &action] { action = [options] { return Run(*options); }; });
}

} // namespace zeb::tools
