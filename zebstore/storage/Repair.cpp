#include "zebstore/storage/Repair.h"

#include "zebstore/storage/CounterRepair.h"
#include "zebstore/storage/DateRuns.h"
#include "zebstore/storage/FolderRepair.h"
#include "zebstore/storage/MessageRow.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/RepairSql.h"
#include "zebstore/storage/StoreCheck.h"
#include "zebstore/storage/ValueRepair.h"

#include <sqlite3.h>

#include <filesystem>

namespace zebstore
{

namespace
{

constexpr int PagesAtOnce = 1000;
constexpr MessageId LastEmbedded = ContentsKey::Embedded().LastMessage();

std::string FirstDamage(Database& database)
{
    const std::vector<std::string> damage = CheckPages(database, 1);
    return damage.empty() ? std::string() : damage[0];
}

// Repairs the text index: one that does not match the messages is dropped before the repair of their rows, whose triggers
// would fail, and made again after it.
class TextRepair
{
public:
    TextRepair(StoreFile& store, const WorkReport& report)
        : m_store(store)
        , m_report(report)
    {
        DropIfWrong();
    }

    void Finish()
    {
        DropIfWrong();
        if (m_dropped)
        {
            m_store.Texts().TurnOn();
            m_store.Texts().Complete(m_report);
        }
    }

private:
    void DropIfWrong()
    {
        const std::vector<std::string> problems = m_store.Texts().Problems();
        if (problems.empty())
        {
            return;
        }
        m_report.found(problems[0] + ": rebuilt");
        m_store.Texts().TurnOff();
        m_dropped = true;
    }

    StoreFile& m_store;
    const WorkReport& m_report;
    bool m_dropped = false;
};

// Repairs the rows of one store, within one transaction.
class RowRepair : private RepairSql
{
public:
    RowRepair(StoreFile& store, const WorkReport& report)
        : RepairSql(store.Connection().Db(), report)
        , m_store(store)
        , m_database(store.Connection().Db())
        , m_report(report)
    {
    }

    // What SQLite's own check calls damage and is one row of ours.
    void MendKeys()
    {
        Change("rows of the store had another number: corrected", "UPDATE OR IGNORE store SET id=1 WHERE id != 1");
        Remove("other rows of the store", "DELETE FROM store WHERE id != 1");
        Change("rows of the address book had another number: corrected",
               "UPDATE OR IGNORE directory SET id=1 WHERE id != 1");
        Remove("other rows of the address book", "DELETE FROM directory WHERE id != 1");
        Remove("names of properties without a number for them",
               "DELETE FROM named WHERE id NOT BETWEEN 32768 AND 65534");
    }

    // Where no number is left for the next row, numbers go on after the last one that a row may have.
    void MendSequences()
    {
        Remove("large values with a number that none can have",
               "DELETE FROM large WHERE id NOT BETWEEN 1 AND " + std::to_string(LastLarge));
        Renumber(NumberedAddresses, "address book entry",
                 {"UPDATE member SET list=? WHERE list=?", "UPDATE member SET address=? WHERE address=?"});
        for (const NumberedTable& table : NumberedTables)
        {
            const std::string name = table.name;
            const std::string last = std::to_string(table.last);
            Change("numbers of rows of '" + name + "' could not go on: corrected",
                   "UPDATE sqlite_sequence SET seq=(SELECT coalesce(max(id), 0) FROM " + name + " WHERE id <= " + last +
                       ") WHERE name='" + name + "' AND (typeof(seq) != 'integer' OR seq NOT BETWEEN 0 AND " + last +
                       ")");
        }
    }

    void MendIndexes()
    {
        const std::string damage = FirstDamage(m_database);
        if (damage.empty())
        {
            return;
        }
        m_database.Execute("REINDEX");
        if (!FirstDamage(m_database).empty())
        {
            throw Error(MAPI_E_CORRUPT_STORE,
                        "the store file '" + m_store.Path() + "' has damaged pages that cannot be repaired: " + damage);
        }
        m_report.found("an index does not fit its table (" + damage + "): rebuilt");
    }

    void RemoveOwnerless()
    {
        Remove("recipients of messages that are missing",
               "DELETE FROM recipient WHERE message NOT IN (SELECT id FROM message)");
        Remove("attachments of messages that are missing",
               "DELETE FROM attachment WHERE message NOT IN (SELECT id FROM message)");
        Remove("receive folders that are missing", "DELETE FROM receive WHERE folder NOT IN (SELECT id FROM folder)");
        Remove(
            "members of what is not a list or is missing",
            "DELETE FROM member WHERE list NOT IN (SELECT id FROM address WHERE type=" + std::to_string(MAPI_DISTLIST) +
                ") OR "
                "(address IS NULL) = (entry IS NULL) OR address NOT IN (SELECT id FROM address)");
        Change("attachments whose message is missing: kept without it",
               "UPDATE attachment SET embedded=NULL WHERE embedded IS NOT NULL AND embedded NOT IN "
               "(SELECT id FROM message WHERE id BETWEEN 0 AND " +
                   std::to_string(LastEmbedded) + ")");
        Change("attachments whose message belongs to another one too: kept without it",
               "UPDATE attachment SET embedded=NULL WHERE EXISTS(SELECT 1 FROM attachment o WHERE "
               "o.embedded=attachment.embedded AND (o.message, o.number) < (attachment.message, "
               "attachment.number))");
    }

    // Messages inside attachments that do not exist; the messages inside those lose their owner in the next round.
    void RemoveLostEmbedded()
    {
        for (;;)
        {
            const std::vector<std::int64_t> lost =
                Query(m_database, "SELECT id FROM message WHERE id BETWEEN 0 AND ? AND id NOT IN "
                                  "(SELECT embedded FROM attachment WHERE embedded IS NOT NULL)")
                    .Bind(1, LastEmbedded)
                    .Numbers();
            if (lost.empty())
            {
                return;
            }
            for (const std::int64_t message : lost)
            {
                m_report.found("message " + std::to_string(message) + " belongs to no attachment: removed");
                Query(m_database, "DELETE FROM message WHERE id=?").Bind(1, message).Run();
            }
        }
    }

    void MoveLostMessages()
    {
        const std::vector<std::int64_t> columns =
            Query(m_database, "SELECT DISTINCT id >> ?1 FROM message WHERE (id >> ?1) NOT IN "
                              "(SELECT container FROM contents)")
                .Bind(1, ContentsKey::MessageBits)
                .Numbers();
        for (const std::int64_t column : columns)
        {
            const ContentsKey lost = ContentsKey::FromColumn(column);
            const FolderId folder = RecoveredFolder();
            const ContentsKey target(folder, lost.IsAssociated());
            const std::vector<std::int64_t> messages =
                Query(m_database, "SELECT id FROM message WHERE id BETWEEN ? AND ?")
                    .Bind(1, lost.FirstMessage())
                    .Bind(2, lost.LastMessage())
                    .Numbers();
            for (const std::int64_t message : messages)
            {
                MessageId placed = 0;
                const std::int64_t change = m_store.Contents().Add(target, 0, placed);
                Query(m_database, "UPDATE message SET id=?, change=? WHERE id=?")
                    .Bind(1, placed)
                    .Bind(2, change)
                    .Bind(3, message)
                    .Run();
            }
            m_report.found(std::to_string(messages.size()) + " messages belong to no folder (" +
                           std::to_string(lost.Folder()) + "): moved to folder " + std::to_string(folder));
        }
    }

    // Saving a message as it is corrects its columns, its size and the bits of its parts.
    void MendMessages()
    {
        std::vector<std::int64_t> changed;
        {
            Query query(m_database, "SELECT m.id, m.props, m.parts & ?, EXISTS(SELECT 1 FROM recipient r WHERE "
                                    "r.message=m.id), EXISTS(SELECT 1 FROM attachment a WHERE "
                                    "a.message=m.id), " ZEB_MESSAGE_COPIES " FROM message m");
            query.Bind(1, AllParts);
            while (query.Step())
            {
                const PropertyBlob blob(query.Bytes(1), m_store.Connection());
                std::int64_t parts = 0;
                if (!ReferencesIn(query.Bytes(1)).empty())
                {
                    parts |= HasLargeValues;
                }
                if (query.Number(3) != 0)
                {
                    parts |= HasRecipients;
                }
                if (query.Number(4) != 0)
                {
                    parts |= HasAttachments;
                }
                if (parts != query.Number(2) || !(CopiesOf(blob.Decode()) == ReadCopies(query, 5)))
                {
                    changed.push_back(query.Number(0));
                }
            }
        }
        for (const std::int64_t message : changed)
        {
            m_report.found("message " + std::to_string(message) +
                           ": its row does not match its properties, recipients and attachments: rebuilt");
            Query(m_database, "UPDATE message SET parts=? WHERE id=?").Bind(1, AllParts).Bind(2, message).Run();
            m_store.Messages().Save(message, {m_store.Messages().Load(message).properties, {}, {}}, 0);
        }
    }

    void MendDates()
    {
        DateRuns runs(m_database);
        const std::vector<MessageId> wrong = runs.WrongGroups();
        if (!wrong.empty())
        {
            runs.Mend(wrong);
            m_report.found(std::to_string(wrong.size()) + " runs of dates did not match their messages: rebuilt");
        }
    }

private:
    FolderId RecoveredFolder()
    {
        const FolderId top = IdOf(StandardFolder::IpmSubtree);
        if (const FolderId found = m_store.Folders().Find(top, "Recovered"))
        {
            return found;
        }
        PropertySet properties;
        properties.SetText(PR_DISPLAY_NAME_W, "Recovered");
        return m_store.Folders().Create(top, properties);
    }

    StoreFile& m_store;
    Database& m_database;
    const WorkReport& m_report;
};

} // namespace

void CopyStore(const std::string& from, const std::string& to, const WorkReport& report)
{
    std::error_code failure;
    if (std::filesystem::exists(std::filesystem::u8path(to), failure))
    {
        throw Error(MAPI_E_COLLISION, "the file '" + to + "' exists already");
    }
    Database source(from, Database::Mode::ReadOnly);
    // One snapshot: commits of others do not begin the copy anew.
    const ReadScope snapshot(source);
    Query(source, "SELECT count(*) FROM sqlite_master").Run();
    Database target(to, Database::Mode::Create);
    sqlite3_backup* const backup = sqlite3_backup_init(target.Handle(), "main", source.Handle(), "main");
    if (backup == nullptr)
    {
        target.Fail(sqlite3_errcode(target.Handle()));
    }
    int code = SQLITE_OK;
    while (code == SQLITE_OK)
    {
        code = sqlite3_backup_step(backup, PagesAtOnce);
        const int whole = sqlite3_backup_pagecount(backup);
        report.progress(static_cast<std::uint64_t>(whole - sqlite3_backup_remaining(backup)),
                        static_cast<std::uint64_t>(whole));
    }
    sqlite3_backup_finish(backup);
    if (code != SQLITE_DONE)
    {
        source.Fail(code);
    }
}

void RepairStore(StoreFile& store, const WorkReport& report)
{
    store.Connection().RequireWritable();
    Database& database = store.Connection().Db();
    StoreTransaction transaction(store.Connection());
    // Until the end rows may lack their owners.
    database.Execute("PRAGMA defer_foreign_keys=ON");
    RowRepair rows(store, report);
    rows.MendKeys();
    rows.MendIndexes();
    rows.MendSequences();
    TextRepair texts(store, report);
    rows.RemoveOwnerless();
    ValueRepair values(store.Connection(), report);
    values.MendContent();
    rows.RemoveLostEmbedded();
    FolderRepair(store, report).Mend();
    rows.MoveLostMessages();
    values.MendReferences();
    values.RemoveOrphans();
    rows.MendMessages();
    CounterRepair(database, report).Mend();
    rows.MendDates();
    texts.Finish();
    HRESULT failure = S_OK;
    const std::vector<std::string> left = store.CheckWhole(failure);
    if (!left.empty())
    {
        if (failure != S_OK && failure != MAPI_E_CORRUPT_STORE && failure != MAPI_E_CORRUPT_DATA)
        {
            throw Error(failure, left.back()); // of the disk or of memory
        }
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + store.Path() + "' cannot be repaired: " + left[0]);
    }
    transaction.Commit();
}

namespace
{

// Without the deleted messages, which runs of dates still list.
void RemakeRuns(Database& database)
{
    Transaction transaction(database);
    DateRuns runs(database);
    for (const MessageId group : Query(database, "SELECT id FROM date_run").Numbers())
    {
        runs.Make(group);
    }
    transaction.Commit();
}

} // namespace

void CompactStore(StoreFile& store, const WorkReport& report)
{
    const std::lock_guard hold(store.Lock());
    store.Connection().RequireWritable();
    Database& database = store.Connection().Db();
    constexpr int InstructionsBetween = 100000;
    sqlite3_progress_handler(database.Handle(), InstructionsBetween, [](void* report)
    {
        static_cast<const WorkReport*>(report)->progress(0, 0);
        return 0;
    }, const_cast<WorkReport*>(&report));
    try
    {
        RemakeRuns(database);
        database.Execute("VACUUM");
        database.Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    catch (...)
    {
        sqlite3_progress_handler(database.Handle(), 0, nullptr, nullptr);
        throw;
    }
    sqlite3_progress_handler(database.Handle(), 0, nullptr, nullptr);
}

} // namespace zebstore
