// A copy of a table's rows that is kept by the table's notifications alone.
#pragma once

#include "tests/zebstore/storage/CellText.h"

#include "zebstore/base/Memory.h"
#include "zebstore/base/Object.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zebstore::test
{

/// A row by its instance key, with its cells as bytes that can be compared.
struct CopiedRow
{
    std::string key;
    std::vector<std::string> cells;
    bool operator==(const CopiedRow& other) const { return key == other.key && cells == other.cells; }
};
inline std::ostream& operator<<(std::ostream& to, const CopiedRow& row)
{
    std::int64_t number = 0;
    std::memcpy(&number, row.key.data(), std::min(row.key.size(), sizeof(number)));
    to << (number & 0xFFFFFFFF) << "(";
    for (const std::string& cell : row.cells)
    {
        to << cell.substr(cell.find(' ') + 1) << ";";
    }
    return to << ")";
}
using CopiedRows = std::vector<CopiedRow>;

/// The last column is the instance key.
inline CopiedRow CopyOf(const SRow& row)
{
    CopiedRow copy;
    for (ULONG i = 0; i < row.cValues; ++i)
    {
        copy.cells.push_back(CellText(row.lpProps[i]));
    }
    if (!copy.cells.empty())
    {
        copy.key = copy.cells.back().substr(copy.cells.back().find(' ') + 1);
    }
    return copy;
}

/// All rows of a table, from its beginning.
inline CopiedRows ReadCopy(IMAPITable& table)
{
    CopiedRows rows;
    EXPECT_EQ(table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    SRowSet* set = nullptr;
    EXPECT_EQ(table.QueryRows(100000, 0, &set), S_OK);
    for (ULONG i = 0; set && i < set->cRows; ++i)
    {
        rows.push_back(CopyOf(set->aRow[i]));
        Free(set->aRow[i].lpProps);
    }
    Free(set);
    return rows;
}

/// Rows to which the changes of a table are applied. Threads: one at a time.
class RowCopy
{
public:
    void Start(CopiedRows rows)
    {
        m_rows = std::move(rows);
        m_events.clear();
        m_whole = 0;
    }
    const CopiedRows& Rows() const { return m_rows; }
    /// The ulTableEvent of each event since Start.
    const std::vector<ULONG>& Events() const { return m_events; }
    /// TABLE_CHANGED, TABLE_RELOAD and TABLE_ERROR since Start.
    int Whole() const { return m_whole; }

    /// @return what is wrong with the change, empty for nothing
    std::string Follow(const NOTIFICATION& notification)
    {
        if (notification.ulEventType != fnevTableModified)
        {
            return "not an event of a table";
        }
        const TABLE_NOTIFICATION& table = notification.info.tab;
        m_events.push_back(table.ulTableEvent);
        if (m_whole > 0)
        {
            return {}; // the copy must be read again before it can apply changes
        }
        switch (table.ulTableEvent)
        {
        case TABLE_ROW_ADDED:
            return Find(KeyOf(table.propIndex)) != m_rows.end() ? "the row is there already" : Insert(table);
        case TABLE_ROW_MODIFIED:
        {
            const std::string fault = Remove(KeyOf(table.propIndex));
            return fault.empty() ? Insert(table) : fault;
        }
        case TABLE_ROW_DELETED:
            return table.row.cValues != 0 ? "a deleted row has values" : Remove(KeyOf(table.propIndex));
        default:
            ++m_whole;
            return table.propIndex.ulPropTag != PR_NULL || table.row.cValues != 0 ? "an event of the table has a row"
                                                                                  : "";
        }
    }

private:
    static std::string KeyOf(const SPropValue& value)
    {
        if (value.ulPropTag != PR_INSTANCE_KEY)
        {
            return {};
        }
        return {reinterpret_cast<const char*>(value.Value.bin.lpb), value.Value.bin.cb};
    }
    CopiedRows::iterator Find(const std::string& key)
    {
        return std::find_if(m_rows.begin(), m_rows.end(), [&](const CopiedRow& row) { return row.key == key; });
    }

    std::string Remove(const std::string& key)
    {
        const auto found = Find(key);
        if (found == m_rows.end())
        {
            return "the row is not there";
        }
        m_rows.erase(found);
        return {};
    }

    std::string Insert(const TABLE_NOTIFICATION& table)
    {
        const CopiedRow row = CopyOf(table.row);
        if (row.key.empty() || row.key != KeyOf(table.propIndex))
        {
            return "the event's key is not that of its row";
        }
        auto place = m_rows.begin();
        if (table.propPrior.ulPropTag != PR_NULL)
        {
            place = Find(KeyOf(table.propPrior));
            if (place == m_rows.end())
            {
                return "the row before it is not there";
            }
            ++place;
        }
        m_rows.insert(place, row);
        return {};
    }

    CopiedRows m_rows;
    std::vector<ULONG> m_events;
    int m_whole = 0;
};

/// Applies the changes that it receives; one that it cannot apply fails the test. Threads: any.
class CopyingSink final : public Object<IMAPIAdviseSink>
{
public:
    ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION notifications) override
    {
        std::function<void()> then;
        {
            const std::lock_guard<std::mutex> hold(m_lock);
            EXPECT_NE(std::this_thread::get_id(), m_creator) << "not on the provider's own thread";
            for (ULONG i = 0; i < count; ++i)
            {
                EXPECT_EQ(m_copy.Follow(notifications[i]), "");
            }
            then = m_then;
        }
        m_heard.notify_all();
        if (then)
        {
            then();
        }
        return 0;
    }

    void Start(CopiedRows rows)
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        m_copy.Start(std::move(rows));
    }
    /// Called at the end of each notification, without a lock.
    void Then(std::function<void()> then)
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        m_then = std::move(then);
    }

    /// Waits until the copy is `expected`. @return false after ten seconds
    bool Becomes(const CopiedRows& expected)
    {
        return Waits([&] { return m_copy.Rows() == expected; });
    }
    /// The same, or a notification that all may have changed.
    bool BecomesOrIsLost(const CopiedRows& expected)
    {
        return Waits([&] { return m_copy.Rows() == expected || m_copy.Whole() > 0; });
    }
    /// Waits for `count` events in all.
    bool Receives(size_t count)
    {
        return Waits([&] { return m_copy.Events().size() >= count; });
    }
    bool HearsWhole()
    {
        return Waits([&] { return m_copy.Whole() > 0; });
    }

    CopiedRows Rows()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_copy.Rows();
    }
    /// The ulTableEvent of each event since Start.
    std::vector<ULONG> Events()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_copy.Events();
    }
    /// TABLE_CHANGED, TABLE_RELOAD and TABLE_ERROR since Start.
    int Whole()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_copy.Whole();
    }

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIAdviseSink}); }

    template <class Test>
    bool Waits(Test&& test)
    {
        std::unique_lock<std::mutex> hold(m_lock);
        return m_heard.wait_for(hold, std::chrono::seconds(10), test);
    }

    const std::thread::id m_creator = std::this_thread::get_id();
    std::mutex m_lock;
    std::condition_variable m_heard;
    RowCopy m_copy;
    std::function<void()> m_then;
};

/// A table with a sink that copies it, as long as this lives.
class Followed
{
public:
    explicit Followed(const Ref<IMAPITable>& table)
        : m_table(table)
        , m_sink(Ref<CopyingSink>::Adopt(new CopyingSink))
    {
        EXPECT_EQ(m_table->Advise(fnevTableModified, m_sink.Get(), &m_connection), S_OK);
        EXPECT_NE(m_connection, 0u);
        m_sink->Start(ReadCopy(*m_table));
    }
    ~Followed()
    {
        if (m_connection)
        {
            EXPECT_EQ(m_table->Unadvise(m_connection), S_OK);
        }
    }
    Followed(Followed&& other) noexcept
        : m_table(std::move(other.m_table))
        , m_sink(std::move(other.m_sink))
        , m_connection(std::exchange(other.m_connection, 0))
    {
    }

    IMAPITable& Table() { return *m_table; }
    const Ref<IMAPITable>& TablePointer() const { return m_table; }
    CopyingSink& Sink() { return *m_sink; }
    ULONG_PTR Number() const { return m_connection; }
    void Forget() { m_connection = 0; }

private:
    Ref<IMAPITable> m_table;
    Ref<CopyingSink> m_sink;
    ULONG_PTR m_connection = 0;
};

} // namespace zebstore::test
