// zeb inbox
#include "platform/console.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace zeb::tools
{
namespace
{

/// Rows read in one call: few calls, and no whole inbox in memory.
constexpr ULONG RowsInOneCall = 500;
constexpr size_t DateWidth = 19, SenderWidth = 28, SizeWidth = 10;

struct Options
{
    std::string profile;
    std::string sort = "date";
    ULONG limit = 0;
    bool json = false;
};

/// Newest first, largest first, subjects from A to Z; equals by date, then by subject, so that the order is
/// settled.
void AddSortKeys(const std::string& by, CZebSortOrder& order)
{
    if (by == "subject")
        order.Add(PR_SUBJECT_W, TABLE_SORT_ASCEND);
    if (by == "size")
        order.Add(PR_MESSAGE_SIZE, TABLE_SORT_DESCEND);
    order.Add(PR_CLIENT_SUBMIT_TIME, TABLE_SORT_DESCEND);
    if (by != "subject")
        order.Add(PR_SUBJECT_W, TABLE_SORT_ASCEND);
}

struct Line
{
    FILETIME date{};
    bool hasDate = false;
    std::string sender, subject, entryId;
    LONG size = 0;
};

Line LineOf(const CZebRow& row)
{
    Line line;
    line.hasDate = row.hasRealValue(PR_CLIENT_SUBMIT_TIME);
    if (line.hasDate)
        line.date = static_cast<const FILETIME&>(row[PR_CLIENT_SUBMIT_TIME]);
    line.sender = TextOf(row, PR_SENDER_NAME_W);
    line.subject = TextOf(row, PR_SUBJECT_W);
    if (row.hasRealValue(PR_MESSAGE_SIZE))
        line.size = static_cast<LONG>(row[PR_MESSAGE_SIZE]);
    if (row.hasRealValue(PR_ENTRYID))
        line.entryId = static_cast<const char*>(row[PR_ENTRYID].String(false));
    return line;
}

/// Prints the listing row by row, as people or machines read it.
class Listing
{
public:
    explicit Listing(bool json)
        : m_json(json)
        , m_columns(static_cast<size_t>(platform::TerminalColumns(platform::OutputStream::Output)))
    {
    }

    void Begin(ULONG total)
    {
        if (m_json)
            Print("{\n  \"total\": " + std::to_string(total) + ",\n  \"messages\": [");
        else if (total > 0)
            Print(Row("date (UTC)", "sender", "size", "subject"));
    }

    void Add(const Line& line)
    {
        if (m_json)
            Print((m_shown ? ",\n    " : "\n    ") + Json(line));
        else
            Print(Row(line.hasDate ? TimeForPeople(line.date) : "", OneLine(line.sender),
                      Grouped(static_cast<unsigned long long>(std::max<LONG>(line.size, 0))),
                      OneLine(line.subject)));
        ++m_shown;
    }

    void End(ULONG total)
    {
        if (m_json)
            Print(m_shown ? "\n  ]\n}\n" : "]\n}\n");
        else if (m_shown == total)
            Print(Grouped(total) + (total == 1 ? " message\n" : " messages\n"));
        else
            Print(Grouped(m_shown) + " of " + Grouped(total) + " messages\n");
    }

private:
    std::string Row(const std::string& date, const std::string& sender, const std::string& size,
                    const std::string& subject) const
    {
        const std::string number(size.size() < SizeWidth ? SizeWidth - size.size() : 0, ' ');
        const std::string row = Fitted(date, DateWidth) + "  " + Fitted(sender, SenderWidth) + "  " + number +
                                size + "  " + subject;
        return Shortened(row, m_columns) + "\n";
    }

    static std::string Json(const Line& line)
    {
        nlohmann::ordered_json object;
        object["date"] = line.hasDate ? nlohmann::ordered_json(TimeForMachines(line.date)) : nullptr;
        object["sender"] = line.sender;
        object["size"] = line.size;
        object["subject"] = line.subject;
        object["entryId"] = line.entryId;
        return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    }

    const bool m_json;
    const size_t m_columns;
    ULONG m_shown = 0;
};

void ListTable(CZebTable& table, const Options& options)
{
    table.SetColumns(5, PR_CLIENT_SUBMIT_TIME, PR_SENDER_NAME_W, PR_MESSAGE_SIZE, PR_SUBJECT_W, PR_ENTRYID);
    CZebSortOrder order(0, 0);
    AddSortKeys(options.sort, order);
    table.SortTable(order);

    const ULONG total = table.GetRowCount();
    Listing listing(options.json);
    listing.Begin(total);
    ULONG left = options.limit == 0 ? total : std::min(options.limit, total);
    while (left > 0)
    {
        CZebRowSet rows;
        table.QueryRows(&rows, static_cast<LONG>(std::min(left, RowsInOneCall)), nullptr, nullptr);
        if (!rows.IsValid())
            break;
        for (ULONG i = 0; i < rows.Count(); ++i)
            listing.Add(LineOf(rows[i]));
        left -= std::min(left, rows.Count());
    }
    listing.End(total);
}

int Run(const Options& options)
{
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
    CZebTable table = inbox.GetContentsTable(MAPI_UNICODE);
    ListTable(table, options);
    return 0;
}

} // namespace

void AddInbox(CLI::App& app, Action& action)
{
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("inbox", "Lists the messages of the inbox");
    AddProfileOption(*command, options->profile);
    command->add_option("--limit", options->limit, "List only the first N")
        ->type_name("N")
        ->check(CLI::Range(1u, 0x7FFFFFFFu));
    command->add_option("--sort", options->sort, "By date (newest first), subject or size (largest first)")
        ->check(CLI::IsMember({"date", "subject", "size"}))
        ->capture_default_str();
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, &action] { action = [options] { return Run(*options); }; });
}

} // namespace zeb::tools
