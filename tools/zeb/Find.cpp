// zeb find
#include "platform/console.h"
#include "tools/common/Color.h"
#include "tools/common/Failure.h"
#include "tools/common/FolderName.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Progress.h"
#include "tools/zeb/ChosenColumns.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Criteria.h"
#include "tools/zeb/MessagePatterns.h"
#include "tools/zeb/MessageRows.h"
#include "tools/zeb/Objects.h"

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>

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
    bool regex = false; ///< the texts of the conditions are regular expressions
    bool json = false;
    std::string columns; ///< see ChosenColumns
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
    Search(const FindOptions& options, const Criteria& criteria, const MessagePatterns& patterns,
           const ChosenColumns& chosen)
        : m_options(options)
        , m_criteria(criteria)
        , m_patterns(patterns)
        , m_chosen(chosen)
        , m_more(chosen.Tags())
        , m_zone(options.criteria.utc ? Zone::Utc : Zone::Local)
        , m_terminal(static_cast<size_t>(platform::TerminalColumns(platform::OutputStream::Output)))
        , m_columns(true, m_terminal, m_zone)
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
        SetMessageColumns(table, m_more);
        std::vector<MessageRow> rows = m_patterns.IsEmpty() ? RestrictedRows(table) : PatternRows(folder, table);
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
        if (m_criteria.IsEmpty() && m_patterns.IsEmpty())
        {
            return (all ? "" : Grouped(Shown()) + " of ") + Counted(m_found, "message", "messages");
        }
        return Grouped(m_found) + " of " + Counted(m_searched, "message", "messages") + " matched" +
               (all ? "" : ", " + Grouped(Shown()) + " shown");
    }

    void Restrict(CZebTable& table) const
    {
        if (!m_criteria.IsEmpty())
        {
            CZebRestrictionAllocator restriction;
            restriction.Allocate();
            m_criteria.Build(restriction);
            table.Restrict(restriction, 0);
        }
    }

    void Sort(CZebTable& table) const
    {
        CZebSortOrder order(0, 0);
        AddSortKeys(m_options.sort, m_options.reverse, order);
        table.SortTable(order);
    }

    /// Counts a folder's matches. @return the part of them that is listed: the first one and how many
    std::pair<ULONG, ULONG> Listed(ULONG found)
    {
        const ULONG skipped = std::min(found, m_options.offset - std::min(m_options.offset, m_found));
        m_found += found;
        const ULONG left = found - skipped;
        return {skipped, m_options.limit == 0 ? left : std::min(left, m_options.limit - Shown())};
    }

    /// The listed matches of conditions that the provider evaluates.
    std::vector<MessageRow> RestrictedRows(CZebTable& table)
    {
        Restrict(table);
        Sort(table);
        const auto [first, count] = Listed(table.GetRowCount());
        if (first != 0)
        {
            table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(first), nullptr);
        }
        return Read(table, count);
    }

    /// The listed matches where some conditions are regular expressions.
    std::vector<MessageRow> PatternRows(CZebFolder& folder, CZebTable& table)
    {
        // Only where all conditions must match does the provider's part leave messages out.
        const bool all = !m_options.criteria.any && !m_options.criteria.inverted;
        const std::unordered_set<std::string> others = all ? std::unordered_set<std::string>() : Others(folder);
        if (all)
        {
            Restrict(table);
        }
        Sort(table);
        std::vector<MessageRow> rows;
        Progress progress("messages", table.GetRowCount());
        ForEachMessage(table, 0x7FFFFFFF, [&](const MessageRow& row)
        {
            progress.Step(++m_read);
            CZebMessage message(nullptr);
            if (OpenExisting(folder, row.entryId, message, 0) && Matches(message, row, others))
            {
                rows.push_back(row);
            }
        }, m_more);
        const auto [first, count] = Listed(static_cast<ULONG>(rows.size()));
        return {rows.begin() + first, rows.begin() + first + count};
    }

    /// The messages that match the conditions for the provider.
    std::unordered_set<std::string> Others(CZebFolder& folder) const
    {
        std::unordered_set<std::string> keys;
        if (m_criteria.IsEmpty())
        {
            return keys;
        }
        CZebTable table = Contents(folder);
        Restrict(table);
        for (CZebRow row : table.Rows({PR_ENTRYID}))
        {
            keys.insert(KeyOf(row[PR_ENTRYID]));
        }
        return keys;
    }

    bool Matches(CZebMessage& message, const MessageRow& row, const std::unordered_set<std::string>& others) const
    {
        const bool any = m_options.criteria.any;
        bool matches = m_patterns.Match(message, any);
        if (any || m_options.criteria.inverted)
        {
            const bool other = others.count(KeyOf(row.entryId)) != 0;
            matches = any ? matches || other : matches && (other || m_criteria.IsEmpty());
        }
        return matches != m_options.criteria.inverted;
    }

    CZebTable Contents(CZebFolder& folder) const
    {
        return folder.GetContentsTable(MAPI_UNICODE | (m_options.associated ? MAPI_ASSOCIATED : 0));
    }

    std::vector<MessageRow> Read(CZebTable& table, ULONG count) const
    {
        std::vector<MessageRow> rows;
        ForEachMessage(table, count, [&](const MessageRow& row) { rows.push_back(row); }, m_more);
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
        const std::vector<std::string> lines = LinesOf(rows, path);
        m_lister.Text([&] { Print(FolderHeadingOf(path) + lines.front()); });
        for (size_t i = 0; i < rows.size(); ++i)
        {
            m_lister.Row([&] { return JsonOf(rows[i], path); }, [&] { Print(lines[i + 1]); });
        }
    }

    /// The heading and the lines of the rows.
    std::vector<std::string> LinesOf(const std::vector<MessageRow>& rows, const FolderPath& path) const
    {
        if (!m_chosen.IsEmpty())
        {
            return m_chosen.Lines(rows, path, m_zone, m_terminal);
        }
        std::vector<std::string> lines = {m_columns.Heading()};
        for (const MessageRow& row : rows)
        {
            lines.push_back(m_columns.Line(row));
        }
        return lines;
    }

    void ShowIds(const std::vector<MessageRow>& rows)
    {
        for (const MessageRow& row : rows)
        {
            m_lister.Row([] { return Json(); }, [&] { Print(std::string(row.entryId.String()) + "\n"); });
        }
    }

    std::string FolderHeadingOf(const FolderPath& path) const
    {
        return m_options.recursive ? (Shown() ? "\n" : "") + Toned(Tone::Heading, OneLine(path.Text())) + "\n" : "";
    }

    Json JsonOf(const MessageRow& row, const FolderPath& path) const
    {
        if (!m_chosen.IsEmpty())
        {
            return m_chosen.RowForMachines(row, path);
        }
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
    const Criteria& m_criteria; ///< for the provider
    const MessagePatterns& m_patterns;
    const ChosenColumns& m_chosen;
    const std::vector<ULONG> m_more;
    const Zone m_zone;
    const size_t m_terminal;
    const MessageColumns m_columns;
    Lister m_lister;
    ULONG m_found = 0, m_searched = 0;
    uint64_t m_read = 0; ///< messages that were opened
};

/// The conditions that are regular expressions, taken out of `text`.
MessagePatterns TakePatterns(CriteriaText& text)
{
    MessagePatterns patterns(text);
    if (patterns.IsEmpty())
    {
        throw UsageError("--regex needs --subject, --from, --to, --body or --text");
    }
    text.inverted = false; // the whole condition is inverted, by this tool
    return patterns;
}

int Run(const FindOptions& options)
{
    CriteriaText text = options.criteria;
    const MessagePatterns patterns = options.regex ? TakePatterns(text) : MessagePatterns();
    Criteria criteria(text);
    ChosenColumns columns(options.columns);
    Mailbox mailbox(options.profile);
    criteria.Resolve(mailbox.Store());
    columns.Resolve(mailbox.Store());
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FolderPath path = mailbox.PathOf(folder);
    Search search(options, criteria, patterns, columns);
    search.In(folder, path);
    search.End();
    return ExitDone;
}

void AddCriteria(Command command, CriteriaText& criteria)
{
    const auto add = [&](const char* name, std::string& value, const char* type, const char* help)
    { command.AddOption(name, value, help).Type(type).Group("Conditions"); };
    add("--subject", criteria.subject, "TEXT", "The subject contains the text, in any letter case");
    add("--from,--author", criteria.from, "TEXT", "The name or address of the sender contains the text");
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
    command
        .AddFlag("--regex", options->regex,
                 "The texts of --subject, --from, --to, --body and --text are regular expressions, in any letter case "
                 "unless they begin with (?-i)")
        .Group("Conditions");
    command.AddFlag("-r,--recursive", options->recursive, "Search the subfolders too");
    command.AddFlag("--associated", options->associated, "Search the hidden (associated) messages");
    AddCountOption(command, "--limit", options->limit, "List only the first N messages");
    AddCountOption(command, "--offset", options->offset, "Leave out the first N messages");
    AddSortOption(command, options->sort);
    command.AddFlag("--reverse", options->reverse, "List in the reverse order");
    AddUtcOption(command, options->criteria.utc);
    Option columns = command
                         .AddOption("--columns", options->columns,
                                    "The columns of the list, with commas between them: number, date, sender, size, "
                                    "subject, unread, folder, id, received, to, cc, class, flag, importance, "
                                    "attachments, modified, or properties")
                         .Type("NAMES");
    command.AddFlag("--json", options->json, "Print JSON");
    command.AddFlag("--ids", options->ids, "Print only entry identifiers, which other commands accept as -")
        .Excludes("--json")
        .Excludes(columns);
    command.Footer("The # is the message's number in its folder, which the other commands accept; 1 is the "
                   "oldest message.");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
