// zeb find
#include "platform/console.h"
#include "tools/common/Failure.h"
#include "tools/common/FolderName.h"
#include "tools/common/Output.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Criteria.h"
#include "tools/zeb/Lister.h"
#include "tools/zeb/MessageRows.h"
#include "tools/zeb/Objects.h"

#include <algorithm>
#include <memory>
#include <unordered_map>

namespace zeb::tools
{
namespace
{

/// Rows per call when only their numbers are needed.
constexpr LONG NumbersInOneCall = 5000;

struct FindOptions
{
    std::string profile;
    std::string folder;
    CriteriaText criteria;
    std::string sort = "date";
    ULONG limit = 0;
    ULONG offset = 0; ///< matches that are not listed
    bool reverse = false;
    bool ids = false; ///< only entry identifiers
    bool associated = false;
    bool recursive = false;
    bool json = false;
};

/// The bytes of an entry identifier as a map key.
std::string KeyOf(const SBinary& entryId)
{
    return std::string(reinterpret_cast<const char*>(entryId.lpb), entryId.cb);
}

/// Searches folders and prints the matches.
class Search
{
public:
    Search(const FindOptions& options, const Criteria& criteria)
        : m_options(options)
        , m_criteria(criteria)
        , m_columns(true, static_cast<size_t>(platform::TerminalColumns(platform::OutputStream::Output)),
                    options.criteria.utc ? Zone::Utc : Zone::Local)
        , m_lister(options.json)
    {
        if (!m_options.ids)
        {
            m_lister.Begin([] { return Json::object(); }, "messages");
        }
    }

    void In(CZebFolder& folder, const FolderPath& path)
    {
        CZebTable table = Contents(folder);
        m_searched += table.GetRowCount();
        SetMessageColumns(table);
        CZebRestrictionAllocator restriction;
        if (!m_criteria.IsEmpty())
        {
            restriction.Allocate();
            m_criteria.Build(restriction);
            table.Restrict(restriction, 0);
        }
        CZebSortOrder order(0, 0);
        AddSortKeys(m_options.sort, m_options.reverse, order);
        table.SortTable(order);
        const ULONG found = table.GetRowCount();
        const ULONG skipped = std::min(found, m_options.offset - std::min(m_options.offset, m_found));
        m_found += found;
        const ULONG left = found - skipped;
        const ULONG room = m_options.limit == 0 ? left : m_options.limit - Shown();
        if (skipped != 0)
        {
            table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(skipped), nullptr);
        }
        std::vector<MessageRow> rows = Read(table, std::min(left, room));
        if (m_options.ids)
        {
            ShowIds(rows);
        }
        else
        {
            SetNumbers(folder, rows);
            Show(rows, path);
        }
        if (m_options.recursive)
        {
            Below(folder, path);
        }
    }

    void End()
    {
        if (m_options.ids)
        {
            return;
        }
        m_lister.End(Json{{"found", m_found}, {"searched", m_searched}});
        m_lister.Text([&] { Print(Counts() + "\n"); });
    }

private:
    ULONG Shown() const { return static_cast<ULONG>(m_lister.Count()); }

    std::string Counts() const
    {
        const bool all = Shown() == m_found;
        if (m_criteria.IsEmpty())
        {
            return (all ? "" : Grouped(Shown()) + " of ") + Counted(m_found, "message", "messages");
        }
        return Grouped(m_found) + " of " + Counted(m_searched, "message", "messages") + " matched" +
               (all ? "" : ", " + Grouped(Shown()) + " shown");
    }

    CZebTable Contents(CZebFolder& folder) const
    {
        return folder.GetContentsTable(MAPI_UNICODE | (m_options.associated ? MAPI_ASSOCIATED : 0));
    }

    static std::vector<MessageRow> Read(CZebTable& table, ULONG count)
    {
        std::vector<MessageRow> rows;
        ForEachMessage(table, count, [&](const MessageRow& row) { rows.push_back(row); });
        return rows;
    }

    /// Sets each message's position in the folder, in one pass over the folder that ends at the last match.
    void SetNumbers(CZebFolder& folder, std::vector<MessageRow>& rows) const
    {
        if (rows.empty())
        {
            return;
        }
        std::unordered_map<std::string, MessageRow*> missing;
        for (MessageRow& row : rows)
        {
            missing.emplace(KeyOf(row.entryId), &row);
        }
        CZebTable table = Contents(folder);
        table.SetColumns(1, PR_ENTRYID);
        for (ULONG number = 1; !missing.empty();)
        {
            CZebRowSet set;
            table.QueryRows(&set, NumbersInOneCall, nullptr, nullptr);
            if (!set.IsValid())
            {
                return;
            }
            for (ULONG i = 0; i < set.Count(); ++i, ++number)
            {
                const auto found = missing.find(KeyOf(set[i][PR_ENTRYID]));
                if (found == missing.end())
                {
                    continue;
                }
                found->second->number = number;
                missing.erase(found);
            }
        }
    }

    void Show(const std::vector<MessageRow>& rows, const FolderPath& path)
    {
        if (rows.empty())
        {
            return;
        }
        m_lister.Text([&] { Print(HeadingOf(path)); });
        for (const MessageRow& row : rows)
        {
            m_lister.Row([&] { return JsonOf(row, path); }, [&] { Print(m_columns.Line(row)); });
        }
    }

    void ShowIds(const std::vector<MessageRow>& rows)
    {
        for (const MessageRow& row : rows)
        {
            m_lister.Row([] { return Json(); }, [&] { Print(std::string(row.entryId.String()) + "\n"); });
        }
    }

    std::string HeadingOf(const FolderPath& path) const
    {
        if (!m_options.recursive)
        {
            return Shown() == 0 ? m_columns.Heading() : "";
        }
        return (Shown() ? "\n" : "") + OneLine(path.Text()) + "\n" + m_columns.Heading();
    }

    static Json JsonOf(const MessageRow& row, const FolderPath& path)
    {
        Json object;
        object["folder"] = path.Text();
        object.update(MessageForMachines(row));
        return object;
    }

    void Below(CZebFolder& folder, const FolderPath& path)
    {
        ForEachSubfolder(folder, [&](CZebFolder& child, const std::string& name) { In(child, path.Below(name)); });
    }

    const FindOptions& m_options;
    const Criteria& m_criteria;
    const MessageColumns m_columns;
    Lister m_lister;
    ULONG m_found = 0, m_searched = 0;
};

int Run(const FindOptions& options)
{
    Criteria criteria(options.criteria);
    Mailbox mailbox(options.profile);
    criteria.Resolve(mailbox.Store());
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FolderPath path = mailbox.PathOf(folder);
    Search search(options, criteria);
    search.In(folder, path);
    search.End();
    return ExitDone;
}

void AddCriteria(Command command, CriteriaText& criteria)
{
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help)
    { command.AddOption(name, value, help).Type(type).Group("Conditions"); };
    add("--subject", criteria.subject, "TEXT", "The subject contains the text, in any letter case");
    add("--from", criteria.from, "TEXT", "The name or address of the sender contains the text");
    add("--to", criteria.to, "TEXT", "The name or address of a recipient contains the text");
    add("--body", criteria.body, "TEXT", "The text of the message contains the text");
    add("--text", criteria.text, "TEXT", "The subject, the text, the sender or a recipient contains the text");
    add("--since", criteria.since, "DATE", "Sent at or after: 2026-01-02, 2026-01-02T03:04:05+01:00, yesterday, 7d");
    add("--until", criteria.until, "DATE", "Sent at or before; a date includes the whole day");
    add("--size", criteria.size, "BYTES", "At least this size: 1500, 10k, 2M");
    add("--max-size", criteria.maxSize, "BYTES", "At most this size");
    add("--class", criteria.messageClass, "CLASS", "The message class begins with the text, such as IPM.Note");
    command.AddFlag("--unread", criteria.unread, "Unread messages").Group("Conditions");
    command.AddFlag("--flag", criteria.flagged, "Messages marked for follow-up").Group("Conditions");
    command
        .AddOption("--where", criteria.where,
                   "A property compares with a value (= != < <= > >=), contains a text (~) or exists: "
                   "\"PR_MESSAGE_SIZE > 100K\"")
        .Type("CONDITION")
        .OneValueEach()
        .TakeAll()
        .Group("Conditions");
    command.AddFlag("--attachments", criteria.attachments, "Messages with attachments").Group("Conditions");
    command.AddFlag("--not", criteria.inverted, "List the messages that do not match").Group("Conditions");
    command.AddFlag("--or", criteria.any, "Match any of the conditions instead of all").Group("Conditions");
}

} // namespace

void AddFind(Command app)
{
    auto options = std::make_shared<FindOptions>();
    Command command = app.AddCommand("find", "Lists the messages of a folder, all or those that match conditions");
    AddProfileOption(command, options->profile);
    AddFolderArgument(command, options->folder);
    AddCriteria(command, options->criteria);
    command.AddFlag("-r,--recursive", options->recursive, "Search the subfolders too");
    command.AddFlag("--associated", options->associated, "Search the hidden (associated) messages");
    AddCountOption(command, "--limit", options->limit, "List only the first N messages");
    AddCountOption(command, "--offset", options->offset, "Leave out the first N messages");
    AddSortOption(command, options->sort);
    command.AddFlag("--reverse", options->reverse, "List in the reverse order");
    AddUtcOption(command, options->criteria.utc);
    command.AddFlag("--json", options->json, "Print JSON");
    command.AddFlag("--ids", options->ids, "Print only entry identifiers, which other commands accept as -")
        .Excludes("--json");
    command.Footer("The # is the message's number in its folder, which the other commands accept; 1 is the "
                   "oldest message.");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
