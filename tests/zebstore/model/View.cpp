#include "tests/zebstore/model/View.h"

#include <algorithm>

namespace zebstore::model
{

namespace
{

std::string RowText(const test::CopiedRows& rows, size_t index)
{
    if (index >= rows.size())
    {
        return "(no row)";
    }
    std::string text;
    for (const std::string& cell : rows[index].cells)
    {
        const size_t space = cell.find(' ');
        text += (text.empty() ? "" : " ") + ReadableTag(static_cast<ULONG>(std::stoul(cell.substr(0, space)))) + "=" +
                Readable(cell.substr(space + 1));
    }
    return text;
}

ModelRows::const_iterator Find(const ModelRows& rows, const std::string& key)
{
    return std::find_if(rows.begin(), rows.end(), [&](const ModelRow& row) { return row.key == key; });
}

std::string StateOf(const Folder& folder, const Item& item)
{
    std::string state = std::to_string(folder.version);
    for (const auto& each : item.own)
    {
        state += "," + Readable(each.second);
    }
    return state;
}

} // namespace

ULONG MirrorSink::OnNotify(ULONG count, LPNOTIFICATION notifications)
{
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        for (ULONG i = 0; i < count; ++i)
        {
            const std::string fault = m_copy.Follow(notifications[i]);
            if (m_fault.empty() && !fault.empty())
            {
                m_fault = fault + ", in an event " + std::to_string(m_copy.Events().back());
            }
        }
    }
    m_heard.notify_all();
    return 0;
}

void MirrorSink::Start(test::CopiedRows rows)
{
    const std::lock_guard<std::mutex> hold(m_lock);
    m_copy.Start(std::move(rows));
}

test::CopiedRows MirrorSink::Rows()
{
    const std::lock_guard<std::mutex> hold(m_lock);
    return m_copy.Rows();
}

std::string MirrorSink::Fault()
{
    const std::lock_guard<std::mutex> hold(m_lock);
    return m_fault;
}

std::vector<ULONG> MirrorSink::Events()
{
    const std::lock_guard<std::mutex> hold(m_lock);
    return m_copy.Events();
}

bool MirrorSink::Receives(size_t count)
{
    std::unique_lock<std::mutex> hold(m_lock);
    return m_heard.wait_for(hold, std::chrono::seconds(10), [&] { return m_copy.Events().size() >= count; });
}

View::View(int number, int session, TableKind kind, Ref<IMAPITable> table)
    : m_number(number)
    , m_session(session)
    , m_kind(std::move(kind))
    , m_table(std::move(table))
{
}

View::~View()
{
    if (m_sink)
    {
        m_table->Unadvise(m_connection);
    }
}

std::string View::Name() const
{
    const char* kind = m_kind.isHierarchy    ? (m_kind.isDeep ? "deep hierarchy" : "hierarchy")
                       : m_kind.isAssociated ? "associated contents"
                                             : "contents";
    return "table " + std::to_string(m_number) + " (" + kind + " of folder " + std::to_string(m_kind.folder->number) +
           ", session " + std::to_string(m_session) + ")";
}

const std::vector<model::Kind>& View::Kinds() const
{
    return m_kind.isHierarchy ? FolderKinds() : MailColumnKinds();
}

void View::Choose(std::vector<ULONG> columns)
{
    Sync();
    SetColumns(*m_table, columns);
    m_columns = std::move(columns);
    if (m_sink)
    {
        const test::CopiedRows rows = ReadRows(*m_table);
        SetCursor(rows.size());
        m_sink->Start(rows);
    }
}

void View::Reset()
{
    m_seen = Rows();
    for (auto& each : m_bookmarks)
    {
        each.second.isValid = false;
    }
    SetCursor(0);
    if (m_sink)
    {
        const test::CopiedRows rows = ReadRows(*m_table);
        SetCursor(m_seen.size());
        m_sink->Start(rows);
    }
}

void View::Sort(const Order& order)
{
    SortBy(*m_table, order);
    m_order = order;
    Reset();
}

void View::Restrict(std::optional<Condition> restriction)
{
    RestrictTo(*m_table, restriction ? &*restriction : nullptr);
    m_restriction = std::move(restriction);
    Reset();
}

void View::Follow()
{
    Sync();
    m_sink = Ref<MirrorSink>::Adopt(new MirrorSink);
    Check(m_table->Advise(fnevTableModified, m_sink.Get(), &m_connection), S_OK, "Advise");
    m_sink->Start(ReadRows(*m_table));
    SetCursor(m_seen.size());
}

void View::Unfollow()
{
    Check(m_table->Unadvise(m_connection), S_OK, "Unadvise");
    m_sink = {};
}

void View::Gather(const Folder& folder, int depth, const std::string& above, ModelRows& rows) const
{
    for (const FolderPtr& child : folder.children)
    {
        Item item = ShownOf(*child, depth);
        // A row moves with the rows above it.
        const std::string state = above + "/" + StateOf(*child, item);
        rows.push_back({child->key, state, std::move(item)});
        if (m_kind.isDeep)
        {
            Gather(*child, depth + 1, state, rows);
        }
    }
}

ModelRows View::Rows() const
{
    ModelRows rows;
    if (m_kind.isHierarchy)
    {
        Gather(*m_kind.folder, 1, std::string(), rows);
    }
    else
    {
        for (const MailPtr& mail : m_kind.folder->Mails(m_kind.isAssociated))
        {
            rows.push_back({mail->key, std::to_string(mail->version), ShownOf(*mail)});
        }
    }
    if (m_restriction)
    {
        rows.erase(std::remove_if(rows.begin(), rows.end(),
                                  [&](const ModelRow& row) { return !Holds(*m_restriction, row.item); }),
                   rows.end());
    }
    std::stable_sort(rows.begin(), rows.end(), [&](const ModelRow& left, const ModelRow& right)
    { return IsBefore(left.item, right.item, m_order); });
    return rows;
}

test::CopiedRows View::Cells(const ModelRows& rows, size_t begin, size_t end) const
{
    test::CopiedRows cells;
    for (size_t i = begin; i < end; ++i)
    {
        test::CopiedRow row;
        for (const ULONG column : m_columns)
        {
            const auto found = rows[i].item.own.find(PROP_ID(column));
            row.cells.push_back(column == PR_INSTANCE_KEY
                                    ? std::to_string(PR_INSTANCE_KEY) + " " + rows[i].key
                                    : ShownAs(column, found != rows[i].item.own.end() ? found->second : Value()));
        }
        row.key = rows[i].key;
        cells.push_back(std::move(row));
    }
    return cells;
}

void View::SetCursor(size_t index)
{
    m_cursor = Mark();
    m_cursor.index = index;
    m_cursor.key = index < m_seen.size() ? m_seen[index].key : std::string();
}

std::vector<std::string> View::MarkedKeys() const
{
    std::vector<std::string> keys = {m_cursor.key};
    for (const auto& each : m_bookmarks)
    {
        if (each.second.isValid)
        {
            keys.push_back(each.second.key);
        }
    }
    return keys;
}

// To its row; from a row that is gone to the next one that is left. @return false when there is none
bool View::Move(Mark& mark, const ModelRows& now) const
{
    if (mark.key.empty())
    {
        return false;
    }
    for (auto place = Find(m_seen, mark.key); place != m_seen.end(); ++place)
    {
        const auto found = Find(now, place->key);
        if (found != now.end())
        {
            mark.key = found->key;
            mark.index = static_cast<size_t>(found - now.begin());
            return true;
        }
        mark.isGone = true;
    }
    return false;
}

ULONG View::Position() const
{
    ULONG row = 0, numerator = 0, denominator = 0;
    Check(m_table->QueryPosition(&row, &numerator, &denominator), S_OK, "QueryPosition");
    return row;
}

// A cursor after all rows stays after those that were there and did not change; new and changed ones may come after it.
void View::FindEnd(const ModelRows& now)
{
    const ULONG row = Position();
    Check(row <= now.size(), "the cursor is after the last row");
    for (size_t i = row; i < now.size(); ++i)
    {
        const auto before = Find(m_seen, now[i].key);
        Check(before == m_seen.end() || before->state != now[i].state,
              "the cursor was at the end, and is before an old row");
    }
    m_seen = now;
    SetCursor(row);
}

const ModelRows& View::Sync()
{
    const ModelRows now = Rows();
    for (auto each = m_bookmarks.begin(); each != m_bookmarks.end();)
    {
        if (!each->second.isValid || Move(each->second, now))
        {
            ++each;
            continue;
        }
        // Where a bookmark goes when no row is left after it is not stated.
        Check(m_table->FreeBookmark(each->first), S_OK, "FreeBookmark");
        each = m_bookmarks.erase(each);
    }
    const bool wasFirst = m_cursor.index == 0;
    if (Move(m_cursor, now))
    {
        // Rows that come in front of all others may be read from a cursor that was in front of all, or be skipped.
        const bool isFirst = wasFirst && m_cursor.index != 0 && Position() == 0;
        m_seen = now;
        SetCursor(isFirst ? 0 : m_cursor.index);
    }
    else
    {
        FindEnd(now);
    }
    return m_seen;
}

void View::CompareMirror(bool mayBeLost)
{
    if (!m_sink)
    {
        return;
    }
    Check(m_sink->Fault().empty(), Name() + ": " + m_sink->Fault());
    const std::vector<ULONG> events = m_sink->Events();
    const bool isLost = std::any_of(events.begin(), events.end(),
                                    [](ULONG event) { return event == TABLE_CHANGED || event == TABLE_RELOAD; });
    Check(std::find(events.begin(), events.end(), ULONG(TABLE_ERROR)) == events.end(), Name() + ": TABLE_ERROR");
    if (isLost)
    {
        Check(mayBeLost, Name() + ": the rows must be read again, for no reason");
        Unfollow();
        Follow();
        return;
    }
    const test::CopiedRows expected = Cells(Rows());
    const test::CopiedRows mirror = m_sink->Rows();
    Check(mirror == expected, Name() + ": the copy that its notifications keep is wrong\n" + Unlike(mirror, expected));
    m_sink->Start(mirror);
}

void View::CompareWhole()
{
    Sync();
    const test::CopiedRows expected = Cells(m_seen);
    const test::CopiedRows got = ReadRows(*m_table);
    Check(got == expected, Name() + ": the rows are wrong\n" + Unlike(got, expected));
    SetCursor(m_seen.size());
}

std::string Unlike(const test::CopiedRows& got, const test::CopiedRows& expected)
{
    size_t at = 0;
    while (at < got.size() && at < expected.size() && got[at] == expected[at])
    {
        ++at;
    }
    return std::to_string(got.size()) + " rows, not " + std::to_string(expected.size()) + "; row " +
           std::to_string(at) + "\n  is  " + RowText(got, at) + "\n  not " + RowText(expected, at);
}

} // namespace zebstore::model
