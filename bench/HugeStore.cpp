#include "bench/HugeStore.h"

#include "bench/Sql.h"

#include <filesystem>

namespace bench
{

HugeStore::HugeStore(const std::string& folder, ULONG count)
    : m_path(folder + "/huge-" + std::to_string(count) + ".zeb")
    , m_profile("huge-" + std::to_string(count))
    , m_count(count)
{
    if (!std::filesystem::exists(m_path))
    {
        Make();
    }
    MakeProfile(m_profile, m_path);
    Open();
    if (m_inbox.GetContentsTable(0).GetRowCount() != count)
    {
        throw std::runtime_error("'" + m_path + "' does not hold the messages that it should; delete it.");
    }
}

void HugeStore::Open()
{
    m_session = Zeb_GetMAPI().OpenSession(nullptr, m_profile.c_str());
    m_store = m_session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS);
    m_inbox = m_store.OpenInboxFolder(MAPI_BEST_ACCESS);
}

void HugeStore::Close()
{
    m_inbox.Free();
    m_store.Free();
    if (m_session.IsValid())
    {
        m_session.Logoff(0, 0, 0);
    }
}

// Under another name until it is whole.
void HugeStore::Make()
{
    const std::string part = m_path + ".part";
    DeleteStore(part);
    MakeProfile(m_profile, part);
    Open();
    CZebPropValArray values(3);
    values[PR_SUBJECT_W].SetUtf8("a subject");
    values[PR_MESSAGE_CLASS_W].SetUtf8("IPM.Note");
    values[PR_SENDER_NAME_W].SetUtf8("Ada Brandt");
    m_inbox.CreateMessage(0).SetProps(values, true, nullptr);
    Close();
    Fill(part);
    std::filesystem::rename(part, m_path);
}

void HugeStore::Fill(const std::string& path) const
{
    SqlDatabase database = SqlOpen(path);
    const std::string count = std::to_string(m_count);
    const auto run = [&](const std::string& sql)
    { SqlCheck(database.get(), sqlite3_exec(database.get(), sql.c_str(), nullptr, nullptr, nullptr)); };
    run("PRAGMA journal_mode=DELETE; PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF");
    run("WITH RECURSIVE c(n) AS (VALUES(2) UNION ALL SELECT n+1 FROM c WHERE n<" + count +
        ") INSERT INTO message SELECT (m.id & ~4294967295) | n, n, flags, size, 0, "
        "132000000000000000 + ((n * 2654435761) & 4294967295) * 10000000, "
        "132000000000000000 + ((n * 2246822519) & 4294967295) * 10000000, modified, class, "
        "printf('%08x', (n * 3266489917) & 4294967295), sender, props "
        "FROM c, (SELECT * FROM message LIMIT 1) m");
    run("UPDATE contents SET rows=" + count + ", unread=" + count + ", next=" + count + "+1, change=change+" + count +
        ", recent=NULL WHERE container=(SELECT id >> 32 FROM message LIMIT 1)");
    // The provider makes the runs of dates when it opens a file of a version before them.
    run("DROP TABLE date_run; PRAGMA user_version=4; PRAGMA journal_mode=WAL");
}

HugeStores BothOf(const Options& options)
{
    const ULONG count = options.brief ? 5000 : 1000000;
    return {std::make_shared<HugeStore>(options.folder, count * 10),
            std::make_shared<HugeStore>(options.folder, count)};
}

} // namespace bench
