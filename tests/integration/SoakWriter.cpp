// A second host of a store: soak_writer STORE MESSAGES SECONDS. Adds MESSAGES messages to the inbox one by one,
// and later changes each of them there, moves it to the inbox's subfolder "moved" and deletes it, a few at a time;
// ends early after SECONDS. Prints how many messages it added.
#include "tests/integration/Host.h"
#include "tests/support/RegistryScope.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>

namespace
{

// A message is changed and moved after this number of further messages.
constexpr size_t ChangedAfter = 500;
constexpr size_t MovedAfter = 1000;
// The number of messages kept in the folder of moved ones; beyond it the oldest are deleted in batches.
constexpr ULONG Kept = 1500;
constexpr LONG DeletedAtOnce = 20;

/// Sender and receivers have the same text, so a row that mixes two states is detected.
void Fill(CZebPropValArray& properties, int number, int revision)
{
    CStringA subject, state;
    subject.Format("%03d of %d", number * 7919 % 1000, number);
    state.Format("%d revised %d times", number, revision);
    properties[PR_SUBJECT_A] = static_cast<const char*>(subject);
    properties[PR_SENDER_NAME_A] = static_cast<const char*>(state);
    properties[PR_DISPLAY_TO_A] = static_cast<const char*>(state);
    properties[PR_IMPORTANCE] = static_cast<LONG>((number + revision) % 3);
}

class Writer
{
public:
    explicit Writer(CZebMsgStore& store)
        : m_inbox(store.OpenInboxFolder(MAPI_BEST_ACCESS))
        , m_moved(m_inbox.OpenFolderByName("moved"))
        , m_movedRows(m_moved.GetContentsTable(0))
    {
        m_movedRows.SetColumns(1, PR_ENTRYID);
    }

    void Add(int number)
    {
        CZebPropValArray properties(4);
        Fill(properties, number, 0);
        CZebMessage message = m_inbox.CreateMessage(0);
        message.SetProps(properties, true, nullptr);
        m_messages.push_back({number, message.GetEntryID()});
        if (m_messages.size() > ChangedAfter)
        {
            Change(m_messages[m_messages.size() - ChangedAfter]);
        }
        if (m_messages.size() > MovedAfter)
        {
            m_inbox.MoveMessage(m_messages.front().id, m_moved, 0);
            m_messages.pop_front();
        }
        if (m_movedRows.GetRowCount() >= Kept + DeletedAtOnce)
        {
            DeleteFirst();
        }
    }

private:
    struct Added
    {
        int number;
        CZebBinary id;
    };

    void Change(const Added& added)
    {
        CZebPropValArray properties(4);
        Fill(properties, added.number, 1);
        CZebMessage message;
        m_inbox.OpenEntry(added.id, message, MAPI_BEST_ACCESS);
        message.SetProps(properties, true, nullptr);
    }
    void DeleteFirst()
    {
        CZebRowSet rows;
        m_movedRows.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
        m_movedRows.QueryRows(&rows, DeletedAtOnce, nullptr, nullptr);
        std::vector<SBinary> ids;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            ids.push_back(rows[i][PR_ENTRYID].operator const SPropValue&().Value.bin);
        }
        SBinaryArray list = {static_cast<ULONG>(ids.size()), ids.data()};
        m_moved.DeleteMessages(&list, nullptr, 0, nullptr);
    }

    CZebFolder m_inbox;
    CZebFolder m_moved;
    CZebTable m_movedRows;
    std::deque<Added> m_messages;
};

int Write(const char* file, int messages, int seconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    const RegistryScope registry;
    zeb::test::RegisterStore();
    Zeb_GetMAPI().Initialize(false);
    zeb::test::CreateStoreProfile("writer", file, true);
    CZebSession session = Zeb_GetMAPI().OpenSession(nullptr, "writer");
    int added = 0;
    {
        CZebMsgStore store = session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS);
        Writer writer(store);
        while (added < messages && std::chrono::steady_clock::now() < end)
        {
            writer.Add(added++);
        }
    }
    Zeb_GetMAPI().Uninitialize(&session);
    std::printf("%d of %d messages added\n", added, messages);
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 4)
    {
        return 2;
    }
    try
    {
        return Write(arguments[1], std::atoi(arguments[2]), std::atoi(arguments[3]));
    }
    catch (CException* failure)
    {
        std::fprintf(stderr, "soak_writer: %s\n", static_cast<const char*>(Zeb_GetExceptionDescription(failure)));
        failure->Delete();
        return 1;
    }
}
