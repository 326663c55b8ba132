// zeb watch
#include "platform/datetime.h"
#include "platform/interrupt.h"
#include "tools/common/Color.h"
#include "tools/common/Failure.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Times.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/MessageRows.h"
#include "tools/zeb/Objects.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>

namespace zeb::tools
{
namespace
{

/// The number of messages kept in memory, so that a deleted one can be named.
constexpr ULONG MostRemembered = 100'000;
/// Poll interval for Ctrl-C.
constexpr std::chrono::milliseconds Patience{200};

struct WatchOptions
{
    std::string profile;
    std::string folder;
    ULONG count = 0;
    bool utc = false;
    bool json = false;
};

/// One change of the table.
struct Change
{
    const char* event = "";
    FILETIME time{};
    std::string key; ///< the bytes of PR_INSTANCE_KEY
    std::string subject, sender, entryId;
};

std::string InstanceKeyOf(const SPropValue& value)
{
    if (PROP_TYPE(value.ulPropTag) != PT_BINARY)
    {
        return {};
    }
    return std::string(reinterpret_cast<const char*>(value.Value.bin.lpb), value.Value.bin.cb);
}

std::string EntryIdOf(const CZebRow& row)
{
    return row.hasRealValue(PR_ENTRYID) ? static_cast<const char*>(row[PR_ENTRYID].String(false)) : "";
}

/// Queue of changes from the provider's thread to the command's thread.
class Changes : public CAdviseSinkDelegate
{
public:
    void OnTable_Modified(TABLE_NOTIFICATION* notification) override
    {
        Change change;
        change.event = NameOf(notification->ulTableEvent);
        change.time = platform::CurrentFileTime();
        change.key = InstanceKeyOf(notification->propIndex);
        const CZebRow row(&notification->row, nullptr);
        if (notification->row.cValues > 0)
        {
            change.subject = TextOf(row, PR_SUBJECT_W);
            change.sender = AuthorOf(row);
            change.entryId = EntryIdOf(row);
        }
        const std::lock_guard<std::mutex> hold(m_lock);
        m_waiting.push_back(std::move(change));
        m_arrived.notify_one();
    }

    /// @return false when none arrived within the poll interval
    bool Next(Change& change)
    {
        std::unique_lock<std::mutex> hold(m_lock);
        if (!m_arrived.wait_for(hold, Patience, [&] { return !m_waiting.empty(); }))
        {
            return false;
        }
        change = std::move(m_waiting.front());
        m_waiting.pop_front();
        return true;
    }

private:
    static const char* NameOf(ULONG event)
    {
        switch (event)
        {
        case TABLE_ROW_ADDED:
            return "added";
        case TABLE_ROW_DELETED:
            return "deleted";
        case TABLE_ROW_MODIFIED:
            return "modified";
        case TABLE_RELOAD:
            return "reload";
        case TABLE_ERROR:
            return "error";
        default:
            return "changed";
        }
    }

    std::mutex m_lock;
    std::condition_variable m_arrived;
    std::deque<Change> m_waiting;
};

/// The messages of the table by key; the notification of a deletion contains only the key.
class Memory
{
public:
    explicit Memory(CZebTable& table)
    {
        if (table.GetRowCount() > MostRemembered)
        {
            return;
        }
        for (CZebRow row : CZebTableRows(table))
        {
            if (row.hasRealValue(PR_INSTANCE_KEY))
            {
                m_known[InstanceKeyOf(row[PR_INSTANCE_KEY])] = {TextOf(row, PR_SUBJECT_W), EntryIdOf(row)};
            }
        }
    }

    /// Fills in subject and identifier of a deleted message, and stores those of others.
    void Complete(Change& change)
    {
        if (change.key.empty())
        {
            return;
        }
        const auto known = m_known.find(change.key);
        if (change.event != std::string("deleted"))
        {
            if (known != m_known.end() || m_known.size() < MostRemembered)
            {
                m_known[change.key] = {change.subject, change.entryId};
            }
            return;
        }
        if (known == m_known.end())
        {
            return;
        }
        change.subject = known->second.subject;
        change.entryId = known->second.entryId;
        m_known.erase(known);
    }

private:
    struct Message
    {
        std::string subject, entryId;
    };

    std::map<std::string, Message> m_known;
};

Tone ToneOf(const Change& change)
{
    const std::string event = change.event;
    return event == "added" ? Tone::Added : event == "deleted" ? Tone::Removed : Tone::Changed;
}

std::string LineOf(const Change& change, Zone zone)
{
    std::string line = TimeForPeople(change.time, zone) + "  " + Toned(ToneOf(change), Fitted(change.event, 8));
    if (!change.subject.empty() || !change.key.empty())
    {
        line += "  '" + OneLine(change.subject) + "'";
    }
    if (!change.sender.empty())
    {
        line += " from " + OneLine(change.sender);
    }
    return line;
}

Json JsonOf(const Change& change)
{
    return {{"time", TimeForMachines(change.time)},
            {"event", change.event},
            {"subject", change.subject},
            {"sender", change.sender},
            {"entryId", change.entryId}};
}

int Run(const WatchOptions& options)
{
    platform::CatchInterrupt();
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FolderPath path = mailbox.PathOf(folder);
    CZebTable table = folder.GetContentsTable(MAPI_UNICODE);
    table.SetColumns(5, PR_INSTANCE_KEY, PR_SUBJECT_W, PR_SENT_REPRESENTING_NAME_W, PR_SENDER_NAME_W, PR_ENTRYID);
    Changes changes;
    CAdviseSinkBinder subscription(&changes, nullptr);
    try
    {
        subscription.AdviseChecked(table);
    }
    catch (...)
    {
        FailWhile("watching " + Named(path));
    }
    Memory memory(table);
    Complain("zeb", "watching " + Named(path) + "; Ctrl-C stops");
    const Lister lister(options.json);
    const Zone zone = options.utc ? Zone::Utc : Zone::Local;
    for (ULONG shown = 0; (options.count == 0 || shown < options.count) && !platform::Interrupted();)
    {
        Change change;
        if (!changes.Next(change))
        {
            continue;
        }
        memory.Complete(change);
        lister.Line([&] { return JsonOf(change); }, [&] { Print(LineOf(change, zone) + "\n"); });
        FlushOutput();
        ++shown;
    }
    return ExitDone;
}

} // namespace

void AddWatch(Command app)
{
    auto options = std::make_shared<WatchOptions>();
    Command command = app.AddCommand("watch", "Prints each change of a folder's messages as it happens, until Ctrl-C");
    AddProfileOption(command, options->profile);
    AddFolderArgument(command, options->folder);
    AddCountOption(command, "--count", options->count, "Stop after N changes");
    AddUtcOption(command, options->utc);
    command.AddFlag("--json", options->json, "Print JSON, one object per line");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
