// find-text: the messages whose body holds a word, by the text index, against SQLite's LIKE over the same texts.
#include "bench/Benches.h"
#include "bench/Sql.h"
#include "bench/Stores.h"
#include "bench/Vocabulary.h"

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace bench
{

namespace
{

constexpr size_t BodySize = 1024;
/// Its place in the list of words by frequency: about one message in a hundred holds it.
constexpr size_t WordSearched = 2000;

/// The same texts as messages of a store with a text index, and as rows of a plain table.
class TextStores
{
public:
    TextStores(const std::string& folder, ULONG count)
        : m_path(folder + "/texts-" + std::to_string(count) + ".zeb")
        , m_plain(folder + "/texts-" + std::to_string(count) + ".db")
        , m_count(count)
    {
        MakeProfile("texts", m_path);
        Open();
        if (m_inbox.GetContentsTable(0).GetRowCount() != count)
        {
            Close();
            Fill();
            Open();
        }
        m_database = SqlOpen(m_plain);
    }
    ~TextStores() { Close(); }
    TextStores(const TextStores&) = delete;
    TextStores& operator=(const TextStores&) = delete;

    size_t FindByTable()
    {
        CZebTable table = m_inbox.GetContentsTable(MAPI_UNICODE);
        CZebRestrictionAllocator node;
        node.Allocate();
        node.CreateContent(PR_BODY_A, m_words.At(WordSearched).c_str(), FL_SUBSTRING | FL_IGNORECASE);
        table.Restrict(node, 0);
        return table.GetRowCount();
    }

    size_t FindBySql()
    {
        const std::string pattern = "%" + m_words.At(WordSearched) + "%";
        SqlStatement select = SqlPrepare(m_database.get(), "SELECT id FROM text WHERE body LIKE ? ORDER BY id");
        SqlCheck(m_database.get(), sqlite3_bind_text(select.get(), 1, pattern.c_str(), -1, SQLITE_STATIC));
        size_t found = 0;
        int code = SQLITE_ROW;
        while ((code = sqlite3_step(select.get())) == SQLITE_ROW)
        {
            ++found;
        }
        SqlCheck(m_database.get(), code);
        return found;
    }

private:
    void Open()
    {
        m_session = Zeb_GetMAPI().OpenSession(nullptr, "texts");
        m_store = m_session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS);
        m_inbox = m_store.OpenInboxFolder(MAPI_BEST_ACCESS);
    }

    void Close()
    {
        m_inbox.Free();
        m_store.Free();
        if (m_session.IsValid())
        {
            m_session.Logoff(0, 0, 0);
        }
    }

    void Fill()
    {
        DeleteStore(m_path);
        DeleteStore(m_plain);
        MakeProfile("texts", m_path, "on");
        std::fclose(std::fopen(m_plain.c_str(), "wb"));
        SqlDatabase plain = SqlOpen(m_plain);
        SqlCheck(plain.get(), sqlite3_exec(plain.get(),
                                           "PRAGMA journal_mode=OFF; CREATE TABLE text(id INTEGER PRIMARY KEY, "
                                           "body TEXT NOT NULL); BEGIN",
                                           nullptr, nullptr, nullptr));
        SqlStatement insert = SqlPrepare(plain.get(), "INSERT INTO text(body) VALUES(?)");
        Open();
        Vocabulary words;
        for (ULONG number = 0; number < m_count; ++number)
        {
            const std::string body = words.Body(BodySize);
            CZebPropValArray values(2);
            values[PR_SUBJECT_W].SetUtf8(("message " + std::to_string(number)).c_str());
            values[PR_BODY_W].SetUtf8(body.c_str());
            m_inbox.CreateMessage(0).SetProps(values, true, nullptr);
            SqlCheck(plain.get(),
                     sqlite3_bind_text(insert.get(), 1, body.data(), static_cast<int>(body.size()), SQLITE_STATIC));
            SqlRun(plain.get(), insert.get());
        }
        SqlCheck(plain.get(), sqlite3_exec(plain.get(), "COMMIT", nullptr, nullptr, nullptr));
        Close();
    }

    std::string m_path, m_plain;
    ULONG m_count;
    Vocabulary m_words;
    CZebSession m_session{nullptr};
    CZebMsgStore m_store;
    CZebFolder m_inbox;
    SqlDatabase m_database;
};

} // namespace

Measurement SearchText(const Options& options)
{
    const ULONG count = options.brief ? 3000 : options.texts;
    auto stores = std::make_shared<TextStores>(options.folder, count);
    std::fprintf(stderr, "find-text: %lu messages of 1 KB, %lu found\n", static_cast<unsigned long>(count),
                 static_cast<unsigned long>(stores->FindByTable()));
    auto found = std::make_shared<size_t>(0);
    return {"find-text", 0.02, [=] { return Seconds([&] { *found = stores->FindByTable(); }); }, [=]
    {
        size_t expected = 0;
        const double seconds = Seconds([&] { expected = stores->FindBySql(); });
        if (expected == 0 || expected != *found)
        {
            throw std::runtime_error("find-text found " + std::to_string(*found) + " messages, not " +
                                     std::to_string(expected) + ".");
        }
        return seconds;
    }, options.brief ? 3 : 7};
}

} // namespace bench
