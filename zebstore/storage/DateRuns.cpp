#include "zebstore/storage/DateRuns.h"

#include "zebstore/storage/Checksum.h"
#include "zebstore/storage/Encoding.h"

#include <algorithm>
#include <bitset>
#include <limits>

namespace zebstore
{

namespace
{

// A run's bytes: for each message its date (8 bytes, see Encoding.h) and its place in the group (1 byte), by the date and then
// the place.
constexpr size_t EntrySize = sizeof(std::int64_t) + 1;
constexpr std::int64_t NoDate = std::numeric_limits<std::int64_t>::min();
static_assert(DateRuns::RunLength == 256, "a place has one byte, and SQL has this number");

struct DatedMessage
{
    std::int64_t date;
    MessageId message;

    bool operator<(const DatedMessage& other) const
    {
        return date != other.date ? date < other.date : message < other.message;
    }
    bool operator==(const DatedMessage& other) const { return date == other.date && message == other.message; }
};

MessageId EndOf(MessageId group)
{
    return group + DateRuns::RunLength - 1;
}

// The messages from one to another as the file has them now, by their dates.
std::vector<DatedMessage> ReadDates(Database& database, MessageId first, MessageId last)
{
    Query query(database, "SELECT id, submitted FROM message WHERE id BETWEEN ? AND ?");
    query.Bind(1, first).Bind(2, last);
    std::vector<DatedMessage> dated;
    while (query.Step())
    {
        dated.push_back({query.IsNull(1) ? NoDate : query.Number(1), query.Number(0)});
    }
    std::sort(dated.begin(), dated.end());
    return dated;
}

std::int64_t SumOf(MessageId group, std::string_view bytes)
{
    return static_cast<std::int64_t>(Checksum(bytes, static_cast<std::uint64_t>(group)));
}

std::string Encoded(const std::vector<DatedMessage>& run)
{
    std::string bytes;
    bytes.reserve(run.size() * EntrySize);
    for (const DatedMessage& each : run)
    {
        AppendNumber(bytes, each.date);
        bytes += static_cast<char>(each.message % DateRuns::RunLength);
    }
    return bytes;
}

std::vector<DatedMessage> Decoded(MessageId group, std::string_view bytes)
{
    std::vector<DatedMessage> run(bytes.size() / EntrySize);
    for (size_t i = 0; i < run.size(); ++i)
    {
        const auto place = static_cast<unsigned char>(bytes[i * EntrySize + sizeof(std::int64_t)]);
        run[i] = {ReadNumber<std::int64_t>(bytes, i * EntrySize), group + place};
    }
    return run;
}

void Remove(Database& database, MessageId group)
{
    Query(database, "DELETE FROM date_run WHERE id=?").Bind(1, group).Run();
}

void Write(Database& database, MessageId group, const std::vector<DatedMessage>& run)
{
    if (run.empty())
    {
        Remove(database, group);
        return;
    }
    const std::string bytes = Encoded(run);
    Query(database, "INSERT OR REPLACE INTO date_run(id, first, last, sum, dates) VALUES(?, ?, ?, ?, ?)")
        .Bind(1, group)
        .Bind(2, run.front().date)
        .Bind(3, run.back().date)
        .Bind(4, SumOf(group, bytes))
        .BindBlob(5, bytes)
        .Run();
}

// Appends the messages of a run by their identifiers.
void AppendMessages(std::vector<MessageId>& messages, MessageId group, std::string_view bytes)
{
    std::bitset<DateRuns::RunLength> places;
    for (size_t i = EntrySize; i <= bytes.size(); i += EntrySize)
    {
        places.set(static_cast<unsigned char>(bytes[i - 1]));
    }
    for (size_t place = 0; place < places.size(); ++place)
    {
        if (places[place])
        {
            messages.push_back(group + static_cast<MessageId>(place));
        }
    }
}

// Keeps the messages with the least dates, or the greatest.
class FirstDates
{
public:
    FirstDates(bool descending, size_t count)
        : m_descending(descending)
        , m_count(count)
    {
    }

    bool Takes(std::int64_t date) const { return Rank(date) <= m_last; }

    // The dates of one run.
    void Add(const std::vector<DatedMessage>& run)
    {
        for (const DatedMessage& each : run)
        {
            if (Takes(each.date))
            {
                m_kept.push_back({Rank(each.date), each.message});
            }
        }
        Cut();
    }

    bool AreTooMany() const { return m_kept.size() > 16 * (m_count + DateRuns::RunLength); }

    std::vector<MessageId> Messages() const
    {
        std::vector<MessageId> messages;
        for (const DatedMessage& each : m_kept)
        {
            messages.push_back(each.message);
        }
        std::sort(messages.begin(), messages.end());
        messages.erase(std::unique(messages.begin(), messages.end()), messages.end());
        return messages;
    }

private:
    // Rises in the order that was asked for.
    std::int64_t Rank(std::int64_t date) const { return m_descending ? ~date : date; }

    void Cut()
    {
        if (m_kept.size() < m_count)
        {
            return;
        }
        const auto last = m_kept.begin() + static_cast<std::ptrdiff_t>(m_count) - 1;
        std::nth_element(m_kept.begin(), last, m_kept.end());
        m_last = last->date;
        const auto isAfter = [this](const DatedMessage& each) { return each.date > m_last; };
        m_kept.erase(std::remove_if(m_kept.begin(), m_kept.end(), isAfter), m_kept.end());
    }

    const bool m_descending;
    const size_t m_count;
    std::vector<DatedMessage> m_kept; // by rank in place of the date
    std::int64_t m_last = std::numeric_limits<std::int64_t>::max();
};

} // namespace

void DateRuns::Make(MessageId group)
{
    Write(m_database, group, ReadDates(m_database, group, EndOf(group)));
}

void DateRuns::Forget(MessageId message)
{
    const MessageId group = GroupOf(message);
    std::vector<DatedMessage> run;
    {
        Query query(m_database, "SELECT dates, sum FROM date_run WHERE id=?");
        if (!query.Bind(1, group).Step() || SumOf(group, query.Bytes(0)) != query.Number(1))
        {
            return; // a damaged run is reported when it is read
        }
        run = Decoded(group, query.Bytes(0));
    }
    const auto isForgotten = [&](const DatedMessage& each) { return each.message == message; };
    run.erase(std::remove_if(run.begin(), run.end(), isForgotten), run.end());
    Write(m_database, group, run);
}

void DateRuns::Clear(ContentsKey contents)
{
    Query(m_database, "DELETE FROM date_run WHERE id BETWEEN ? AND ?")
        .Bind(1, contents.FirstMessage())
        .Bind(2, contents.LastMessage())
        .Run();
}

std::optional<std::vector<MessageId>> DateRuns::First(ContentsKey contents, MessageId open, bool descending,
                                                      size_t count)
{
    FirstDates dates(descending, count);
    dates.Add(ReadDates(m_database, open, contents.LastMessage()));
    Query query(m_database, std::string("SELECT id, dates, sum, ") +
                                (descending ? "last FROM date_run WHERE id >> 32 = ? ORDER BY last DESC"
                                            : "first FROM date_run WHERE id >> 32 = ? ORDER BY first"));
    query.Bind(1, contents.Column());
    while (query.Step() && dates.Takes(query.Number(3)))
    {
        const MessageId group = query.Number(0);
        if (SumOf(group, query.Bytes(1)) != query.Number(2))
        {
            throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + m_database.Path() +
                                                  "' is damaged: the dates of folder " +
                                                  std::to_string(contents.Folder()) + " cannot be read");
        }
        dates.Add(Decoded(group, query.Bytes(1)));
        if (dates.AreTooMany())
        {
            return std::nullopt;
        }
    }
    return dates.Messages();
}

std::optional<std::vector<MessageId>> DateRuns::All(ContentsKey contents, MessageId open, size_t rows)
{
    std::vector<MessageId> messages;
    messages.reserve(rows);
    Query query(m_database, "SELECT id, dates, sum FROM date_run WHERE id >= ? AND id < ? ORDER BY id");
    query.Bind(1, contents.FirstMessage()).Bind(2, open);
    while (query.Step())
    {
        const MessageId group = query.Number(0);
        if (SumOf(group, query.Bytes(1)) != query.Number(2))
        {
            return std::nullopt;
        }
        AppendMessages(messages, group, query.Bytes(1));
    }
    Query last(m_database, "SELECT id FROM message WHERE id BETWEEN ? AND ? ORDER BY id");
    last.Bind(1, open).Bind(2, contents.LastMessage());
    while (last.Step())
    {
        messages.push_back(last.Number(0));
    }
    return messages.size() == rows ? std::optional(std::move(messages)) : std::nullopt;
}

bool DateRuns::IsClosed(MessageId group)
{
    const ContentsKey contents = ContentsKey::Of(group);
    Query query(m_database, "SELECT next FROM contents WHERE container=?");
    return HasRuns(contents) && query.Bind(1, contents.Column()).Step() && group < OpenGroup(contents, query.Number(0));
}

// A run may list messages that were deleted.
bool DateRuns::IsRight(MessageId group)
{
    const std::vector<DatedMessage> messages = ReadDates(m_database, group, EndOf(group));
    Query query(m_database, "SELECT first, last, sum, dates FROM date_run WHERE id=?");
    if (!query.Bind(1, group).Step())
    {
        return messages.empty();
    }
    const std::string_view bytes = query.Bytes(3);
    const std::vector<DatedMessage> run = Decoded(group, bytes);
    return !messages.empty() && SumOf(group, bytes) == query.Number(2) && !run.empty() &&
           query.Number(0) == run.front().date && query.Number(1) == run.back().date &&
           std::includes(run.begin(), run.end(), messages.begin(), messages.end());
}

std::vector<MessageId> DateRuns::WrongGroups()
{
    std::vector<MessageId> wrong;
    for (const MessageId group :
         Query(m_database, "SELECT DISTINCT id & ~255 FROM message UNION SELECT id FROM date_run").Numbers())
    {
        Query run(m_database, "SELECT 1 FROM date_run WHERE id=?");
        if (IsClosed(group) ? !IsRight(group) : run.Bind(1, group).Step())
        {
            wrong.push_back(group);
        }
    }
    return wrong;
}

void DateRuns::Mend(const std::vector<MessageId>& groups)
{
    for (const MessageId group : groups)
    {
        if (IsClosed(group))
        {
            Make(group);
        }
        else
        {
            Remove(m_database, group);
        }
    }
}

} // namespace zebstore
