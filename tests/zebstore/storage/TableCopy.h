// A copy of a table's rows that is kept by the table's notifications alone.
#pragma once

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

inline std::string CellText(const SPropValue& value)
{
    const std::string tag = std::to_string(value.ulPropTag) + " ";
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_LONG:
        return tag + std::to_string(value.Value.l);
    case PT_BOOLEAN:
        return tag + (value.Value.b ? "yes" : "no");
    case PT_STRING8:
        return tag + value.Value.lpszA;
    case PT_BINARY:
        return tag + std::string(reinterpret_cast<const char*>(value.Value.bin.lpb), value.Value.bin.cb);
    case PT_ERROR:
        return tag + "error " + std::to_string(value.Value.err);
    default:
        ADD_FAILURE() << "a cell of a type that these tests do not read";
        return tag;
    }
}

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
                EXPECT_EQ(notifications[i].ulEventType, ULONG(fnevTableModified));
                Follow(notifications[i].info.tab);
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
        m_rows = std::move(rows);
        m_events.clear();
        m_whole = 0;
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
        return Waits([&] { return m_rows == expected; });
    }
    /// The same, or a notification that all may have changed.
    bool BecomesOrIsLost(const CopiedRows& expected)
    {
        return Waits([&] { return m_rows == expected || m_whole > 0; });
    }
    /// Waits for `count` events in all.
    bool Receives(size_t count)
    {
        return Waits([&] { return m_events.size() >= count; });
    }
    bool HearsWhole()
    {
        return Waits([&] { return m_whole > 0; });
    }

    CopiedRows Rows()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_rows;
    }
    /// The ulTableEvent of each event since Start.
    std::vector<ULONG> Events()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_events;
    }
    /// TABLE_CHANGED, TABLE_RELOAD and TABLE_ERROR since Start.
    int Whole()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_whole;
    }

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIAdviseSink}); }

    template <class Test>
    bool Waits(Test&& test)
    {
        std::unique_lock<std::mutex> hold(m_lock);
        return m_heard.wait_for(hold, std::chrono::seconds(10), test);
    }

    static std::string KeyOf(const SPropValue& value)
    {
        if (value.ulPropTag == PR_NULL)
        {
            return {};
        }
        EXPECT_EQ(value.ulPropTag, ULONG(PR_INSTANCE_KEY));
        return {reinterpret_cast<const char*>(value.Value.bin.lpb), value.Value.bin.cb};
    }
    CopiedRows::iterator Find(const std::string& key)
    {
        return std::find_if(m_rows.begin(), m_rows.end(), [&](const CopiedRow& row) { return row.key == key; });
    }

    void Follow(const TABLE_NOTIFICATION& table)
    {
        m_events.push_back(table.ulTableEvent);
        if (m_whole > 0)
        {
            return; // the copy must be read again before it can apply changes
        }
        switch (table.ulTableEvent)
        {
        case TABLE_ROW_ADDED:
            EXPECT_EQ(Find(KeyOf(table.propIndex)), m_rows.end()) << "the row is there already";
            return Insert(table);
        case TABLE_ROW_MODIFIED:
            Remove(KeyOf(table.propIndex));
            return Insert(table);
        case TABLE_ROW_DELETED:
            EXPECT_EQ(table.row.cValues, 0u);
            return Remove(KeyOf(table.propIndex));
        default:
            EXPECT_EQ(table.propIndex.ulPropTag, ULONG(PR_NULL));
            EXPECT_EQ(table.row.cValues, 0u);
            ++m_whole;
        }
    }

    void Remove(const std::string& key)
    {
        const auto found = Find(key);
        if (found == m_rows.end())
        {
            ADD_FAILURE() << "the row is not there";
        }
        else
        {
            m_rows.erase(found);
        }
    }

    void Insert(const TABLE_NOTIFICATION& table)
    {
        const CopiedRow row = CopyOf(table.row);
        EXPECT_EQ(row.key, KeyOf(table.propIndex));
        auto place = m_rows.begin();
        if (table.propPrior.ulPropTag != PR_NULL)
        {
            place = Find(KeyOf(table.propPrior));
            if (place == m_rows.end())
            {
                ADD_FAILURE() << "the row before it is not there";
            }
            else
            {
                ++place;
            }
        }
        m_rows.insert(place, row);
    }

    const std::thread::id m_creator = std::this_thread::get_id();
    std::mutex m_lock;
    std::condition_variable m_heard;
    CopiedRows m_rows;
    std::vector<ULONG> m_events;
    int m_whole = 0;
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
