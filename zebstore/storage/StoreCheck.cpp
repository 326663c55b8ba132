#include "zebstore/storage/StoreCheck.h"

#include "zebstore/storage/DateRuns.h"
#include "zebstore/storage/MessageRow.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/RecentChanges.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/storage/StandardFolders.h"

#include <map>
#include <unordered_set>

namespace zebstore
{

namespace
{

using Problems = std::vector<std::string>;

std::string Named(const char* what, std::int64_t id)
{
    return std::string(what) + " " + std::to_string(id);
}

constexpr int MostPageProblems = 100;

// The code in SQLite's line about a page that it could not get.
int CodeIn(const std::string& line)
{
    constexpr std::string_view Before = "error code=";
    const size_t at = line.find(Before);
    return at == std::string::npos ? 0 : std::atoi(line.c_str() + at + Before.size());
}

void CheckDatabase(Database& database, Problems& problems)
{
    problems = CheckPages(database, MostPageProblems);
    Query keys(database, "PRAGMA foreign_key_check");
    while (keys.Step())
    {
        problems.push_back("a row of '" + std::string(keys.Bytes(0)) + "' points to one of '" +
                           std::string(keys.Bytes(2)) + "' that is not there");
    }
}

// The large values that rows refer to; a value belongs to one row.
class References
{
public:
    References(StoreConnection& store, Problems& problems)
        : m_store(store)
        , m_problems(problems)
    {
    }

    void Take(const std::string& owner, std::string_view blob)
    {
        if (!PropertyBlob::IsSound(blob))
        {
            m_problems.push_back(owner + ": its properties cannot be read");
            return;
        }
        if (!PropertyBlob::IsAsWritten(blob))
        {
            m_problems.push_back(owner + ": its properties do not match their checksum");
            return;
        }
        for (const LargeReference& reference : ReferencesIn(blob))
        {
            TakeValue(owner, reference.id, reference.size);
            if (reference.form == LargeReference::OwnBytes)
            {
                TakeValue(owner, reference.ownId, reference.ownSize);
            }
        }
    }

    void CheckOrphans()
    {
        Query query(m_store.Db(), "SELECT id FROM large");
        while (query.Step())
        {
            if (m_taken.count(query.Number(0)) == 0)
            {
                m_problems.push_back(Named("large value", query.Number(0)) + " belongs to nothing");
            }
        }
        Query chunks(m_store.Db(), "SELECT count(*) FROM chunk WHERE (id >> ?) NOT IN (SELECT id FROM large)");
        if (chunks.Bind(1, ChunkBits).Step() && chunks.Number(0) != 0)
        {
            m_problems.push_back(std::to_string(chunks.Number(0)) + " pieces belong to no large value");
        }
    }

private:
    void TakeValue(const std::string& owner, std::int64_t id, std::uint64_t size)
    {
        if (!m_taken.insert(id).second)
        {
            m_problems.push_back(owner + ": its " + Named("large value", id) + " belongs to another one too");
        }
        if (!CanBeLargeId(id))
        {
            m_problems.push_back(owner + ": a reference to a large value is damaged");
            return;
        }
        bool asWritten = true;
        const ChunkRange chunks = LargeChunks(id);
        Query query = HasSums() ? Query(m_store.Db(), "SELECT id, bytes, sum FROM chunk WHERE id BETWEEN ? AND ?")
                                : Query(m_store.Db(), "SELECT id, bytes FROM chunk WHERE id BETWEEN ? AND ?");
        query.Bind(1, chunks.first).Bind(2, chunks.last);
        while (query.Step())
        {
            asWritten = asWritten && (!HasSums() || PieceChecksum(query.Number(0), query.Bytes(1)) == query.Number(2));
        }
        if (!HasAllPieces(m_store.Db(), id, size))
        {
            m_problems.push_back(owner + ": its " + Named("large value", id) + " is not complete");
        }
        if (!asWritten)
        {
            m_problems.push_back(owner + ": its " + Named("large value", id) + " does not match its checksum");
        }
    }

    bool HasSums() const { return m_store.Version() >= ChecksumVersion; }

    StoreConnection& m_store;
    Problems& m_problems;
    std::unordered_set<std::int64_t> m_taken;
};

void CheckCounters(Database& database, Problems& problems)
{
    std::map<std::int64_t, std::pair<std::int64_t, std::int64_t>> counted;
    Query rows(database, "SELECT id >> ?1 AS container, count(*), sum((flags & ?2) = 0), max(id) FROM message "
                         "GROUP BY container");
    rows.Bind(1, ContentsKey::MessageBits).Bind(2, MSGFLAG_READ);
    std::map<std::int64_t, std::int64_t> last;
    while (rows.Step())
    {
        const ContentsKey contents = ContentsKey::FromColumn(rows.Number(0));
        counted[contents.Column()] = {rows.Number(1), contents.CountsUnread() ? rows.Number(2) : 0};
        last[contents.Column()] = ContentsKey::NumberOf(rows.Number(3));
    }
    Query misplaced(database, "SELECT container FROM contents WHERE folder IS NOT nullif(container >> 1, 0)");
    while (misplaced.Step())
    {
        const FolderId folder = ContentsKey::FromColumn(misplaced.Number(0)).Folder();
        problems.push_back(Named("folder", folder) + ": its counters belong to another one");
    }
    Query query(database, "SELECT container, rows, unread, next, recent, change FROM contents");
    while (query.Step())
    {
        const std::int64_t container = query.Number(0);
        const std::pair<std::int64_t, std::int64_t> found = counted[container];
        const std::string folder = Named("folder", ContentsKey::FromColumn(container).Folder());
        if (query.Number(1) != found.first)
        {
            problems.push_back(folder + ": it counts " + std::to_string(query.Number(1)) + " messages and has " +
                               std::to_string(found.first));
        }
        if (query.Number(2) != found.second)
        {
            problems.push_back(folder + ": it counts " + std::to_string(query.Number(2)) + " unread messages and has " +
                               std::to_string(found.second));
        }
        if (query.Number(3) <= last[container] || query.Number(3) > ContentsKey::LastNumber + 1)
        {
            problems.push_back(folder + ": its next number is taken");
        }
        if (!ContentsTable::IsChangeNumber(query.Number(5)))
        {
            problems.push_back(folder + ": its change number cannot rise");
        }
        if (!IsRecentSound(query.Bytes(4)))
        {
            problems.push_back(folder + ": its list of recent changes cannot be read");
        }
        counted.erase(container);
    }
    for (const auto& lost : counted)
    {
        problems.push_back(std::to_string(lost.second.first) + " messages belong to no folder (" +
                           std::to_string(ContentsKey::FromColumn(lost.first).Folder()) + ")");
    }
}

void CheckStandardFolders(Database& database, Problems& problems)
{
    Query query(database, "SELECT coalesce(parent, 0), type FROM folder WHERE id=?");
    for (const StandardName& each : StandardNames)
    {
        const std::string named = Named("folder", IdOf(each.folder)) + " ('" + each.name + "')";
        if (!query.Bind(1, IdOf(each.folder)).Step())
        {
            problems.push_back(named + " is missing");
        }
        else if (query.Number(0) != each.Parent() || query.Number(1) != each.type)
        {
            problems.push_back(named + " is not where it was created");
        }
        query.Reset();
    }
}

void CheckFolders(Database& database, References& references, Problems& problems)
{
    Query query(database, "SELECT f.id, f.props, (SELECT count(*) FROM contents c WHERE c.container IN "
                          "(" ZEB_NORMAL_CONTENTS("f.id") ", " ZEB_ASSOCIATED_CONTENTS("f.id") ")) FROM folder f");
    while (query.Step())
    {
        references.Take(Named("folder", query.Number(0)), query.Bytes(1));
        if (query.Number(2) != 2)
        {
            problems.push_back(Named("folder", query.Number(0)) + ": its counters are missing");
        }
        if (query.Number(0) < 1 || query.Number(0) > LastFolder)
        {
            problems.push_back(Named("folder", query.Number(0)) + ": no folder has such a number");
        }
    }
    CheckStandardFolders(database, problems);
    Query reached(database, "WITH RECURSIVE tree(id) AS (SELECT 1 UNION SELECT f.id FROM folder f JOIN tree t "
                            "ON f.parent=t.id) SELECT id FROM folder WHERE id NOT IN tree");
    while (reached.Step())
    {
        problems.push_back(Named("folder", reached.Number(0)) + " is not reached from the root");
    }
}

void CheckMessages(StoreConnection& store, References& references, Problems& problems)
{
    Database& database = store.Db();
    Query query(database, "SELECT id, props, " ZEB_MESSAGE_COPIES " FROM message");
    while (query.Step())
    {
        const std::string message = Named("message", query.Number(0));
        references.Take(message, query.Bytes(1));
        if (PropertyBlob::IsSound(query.Bytes(1)) && PropertyBlob::IsAsWritten(query.Bytes(1)) &&
            !(CopiesOf(PropertyBlob(query.Bytes(1), store).Decode()) == ReadCopies(query, 2)))
        {
            problems.push_back(message + ": what tables sort and restrict by does not match its properties");
        }
    }
    Query parts(database,
                "SELECT id FROM message m WHERE ((parts & ?1) != 0) != EXISTS(SELECT 1 FROM recipient r WHERE "
                "r.message=m.id) OR ((parts & ?2) != 0) != EXISTS(SELECT 1 FROM attachment a WHERE a.message=m.id)");
    parts.Bind(1, HasRecipients).Bind(2, HasAttachments);
    while (parts.Step())
    {
        problems.push_back(Named("message", parts.Number(0)) + ": it does not know its recipients or attachments");
    }
}

void CheckDates(Database& database, Problems& problems)
{
    for (const MessageId group : DateRuns(database).WrongGroups())
    {
        problems.push_back(Named("the dates of the messages from", group) + " on do not match the messages");
    }
}

void CheckSequences(Database& database, Problems& problems)
{
    Query query(database,
                "SELECT 1 FROM sqlite_sequence WHERE name=? AND (typeof(seq) != 'integer' OR seq NOT BETWEEN 0 AND ?)");
    for (const NumberedTable& table : NumberedTables)
    {
        if (query.BindText(1, table.name).Bind(2, table.last).Step())
        {
            problems.push_back("the numbers of rows of '" + std::string(table.name) + "' cannot go on");
        }
        query.Reset();
    }
}

void CheckParts(Database& database, References& references, Problems& problems)
{
    Query recipients(database, "SELECT message, props FROM recipient");
    while (recipients.Step())
    {
        references.Take(Named("a recipient of message", recipients.Number(0)), recipients.Bytes(1));
    }
    Query attachments(database, "SELECT message, number, embedded, props FROM attachment");
    std::unordered_set<std::int64_t> embedded;
    while (attachments.Step())
    {
        const std::string owner =
            Named("attachment", attachments.Number(1)) + Named(" of message", attachments.Number(0));
        references.Take(owner, attachments.Bytes(3));
        if (!attachments.IsNull(2) && !embedded.insert(attachments.Number(2)).second)
        {
            problems.push_back(owner + ": its message belongs to another attachment too");
        }
    }
    Query lost(database, "SELECT id FROM message WHERE id BETWEEN 0 AND ? AND id NOT IN "
                         "(SELECT embedded FROM attachment WHERE embedded IS NOT NULL)");
    lost.Bind(1, ContentsKey::Embedded().LastMessage());
    while (lost.Step())
    {
        problems.push_back(Named("message", lost.Number(0)) + " belongs to no attachment");
    }
    Query missing(database, "SELECT message FROM attachment WHERE embedded IS NOT NULL AND embedded NOT IN "
                            "(SELECT id FROM message WHERE id BETWEEN 0 AND ?)");
    missing.Bind(1, ContentsKey::Embedded().LastMessage());
    while (missing.Step())
    {
        problems.push_back(Named("message", missing.Number(0)) + ": a message inside it is missing");
    }
}

void CheckAddresses(Database& database, References& references, Problems& problems)
{
    Query query(database, "SELECT id, props FROM address");
    std::int64_t rows = 0;
    for (; query.Step(); ++rows)
    {
        references.Take(Named("address book entry", query.Number(0)), query.Bytes(1));
        if (query.Number(0) < 1 || query.Number(0) > LastAddress)
        {
            problems.push_back(Named("address book entry", query.Number(0)) + ": no entry has such a number");
        }
    }
    Query directory(database, "SELECT rows, props FROM directory");
    if (!directory.Step() || directory.Number(0) != rows)
    {
        problems.push_back("the address book does not count its " + std::to_string(rows) + " entries");
    }
    else if (!directory.IsNull(1))
    {
        references.Take("the address book", directory.Bytes(1));
    }
    Query members(database, "SELECT m.list, m.number FROM member m JOIN address a ON a.id=m.list "
                            "WHERE (m.address IS NULL) = (m.entry IS NULL) OR a.type != ?");
    members.Bind(1, MAPI_DISTLIST);
    while (members.Step())
    {
        problems.push_back(Named("member", members.Number(1)) + Named(" of list", members.Number(0)) +
                           " is no member of a list");
    }
}

} // namespace

std::vector<std::string> CheckPages(Database& database, int most)
{
    Problems problems;
    Query integrity(database, "PRAGMA integrity_check(" + std::to_string(most) + ")");
    while (integrity.Step())
    {
        problems.emplace_back(integrity.Bytes(0));
        const int code = CodeIn(problems.back());
        if (Database::IsOfSystem(code))
        {
            database.Fail(code);
        }
    }
    if (problems == Problems{"ok"})
    {
        problems.clear();
    }
    return problems;
}

std::vector<std::string> CheckStore(StoreConnection& connection, TextIndex& texts, HRESULT& failure)
{
    failure = S_OK;
    const std::lock_guard hold(connection.Lock());
    Database& database = connection.Db();
    Problems problems;
    try
    {
        const ReadScope snapshot(database);
        CheckDatabase(database, problems);
        References references(connection, problems);
        {
            Query query(database, "SELECT props FROM store WHERE id=1");
            references.Take("the store", query.Step() ? query.Bytes(0) : std::string_view());
        }
        CheckCounters(database, problems);
        CheckFolders(database, references, problems);
        CheckMessages(connection, references, problems);
        CheckParts(database, references, problems);
        CheckSequences(database, problems);
        const std::int64_t version = CheckSchema(database);
        if (version >= AddressBookVersion)
        {
            CheckAddresses(database, references, problems);
        }
        if (version >= DateRunsVersion)
        {
            CheckDates(database, problems);
        }
        references.CheckOrphans();
        const Problems ofTexts = texts.Problems();
        problems.insert(problems.end(), ofTexts.begin(), ofTexts.end());
    }
    catch (const Error& error)
    {
        failure = error.Code();
        problems.emplace_back(error.what());
    }
    return problems;
}

} // namespace zebstore
