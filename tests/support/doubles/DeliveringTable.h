// A double of IMAPITable that notifies continuously, from its own thread.
#pragma once

#include "tests/support/doubles/RowTable.h"

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

namespace zeb::test
{

/// Rows that contain their index, and a thread that sends events to every sink during the table's lifetime.
///
/// Each reading tells the generation of the rows in a second column: it is incremented with every change, and a change
/// is made before its notification. Calls are not recorded. Threads: any.
class DeliveringTable : public IMAPITable
{
public:
    static constexpr ULONG Index = PR_ROWID;
    static constexpr ULONG Generation = PR_DEPTH;

    enum class Lock
    {
        Dropped, ///< no lock is held while a sink is called
        Held     ///< the lock of the table is held while a sink is called
    };

    explicit DeliveringTable(ULONG count, Lock lock = Lock::Dropped)
        : m_count(count)
        , m_heldInDelivery(lock == Lock::Held)
        , m_thread([this] { Deliver(); })
    {
    }
    ~DeliveringTable()
    {
        m_stop = true;
        m_thread.join();
        EXPECT_EQ(m_references, 0u) << "references on the table are left";
        EXPECT_TRUE(m_sinks.empty()) << "sinks are left";
    }
    DeliveringTable(const DeliveringTable&) = delete;
    DeliveringTable& operator=(const DeliveringTable&) = delete;

    /// Notifications that reached a sink.
    ULONG Delivered() const { return m_delivered; }
    /// Waits until one more notification of a sink is complete.
    void AwaitDelivery()
    {
        for (const ULONG until = m_delivered + 2; static_cast<LONG>(m_delivered - until) < 0;)
        {
            std::this_thread::yield();
        }
    }
    /// Also notifies inside Advise, on the thread that advises, before the connection is returned.
    std::atomic<bool> m_notifiesAdvisers{false};
    /// The sinks that are registered.
    size_t Sinks()
    {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        return m_sinks.size();
    }
    /// Also notifies inside QueryRows, on the thread that reads.
    std::atomic<bool> m_notifiesReaders{false};
    /// The newest change.
    ULONG Newest() const { return m_generation; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** result) override
    {
        *result = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_references; }
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR* error) override
    {
        *error = nullptr;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPMAPIADVISESINK sink, ULONG_PTR* connection) override
    {
        ULONG_PTR given = 0;
        {
            const std::lock_guard<std::recursive_mutex> lock(m_mutex);
            sink->AddRef();
            given = ++m_connections;
            m_sinks[given] = sink;
        }
        if (m_notifiesAdvisers)
        {
            NotifyAll();
        }
        *connection = given;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR connection) override
    {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        const auto found = m_sinks.find(connection);
        if (found == m_sinks.end())
        {
            ADD_FAILURE() << "no such connection: " << connection;
            return MAPI_E_INVALID_PARAMETER;
        }
        found->second->Release();
        m_sinks.erase(found);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override
    {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        *count = m_count;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK, LONG position, LONG*) override
    {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        m_position = static_cast<ULONG>(position);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG, LPSRowSet* rows) override
    {
        const std::lock_guard<std::recursive_mutex> lock(m_mutex);
        std::vector<RowData> data;
        for (ULONG end = std::min(m_position + static_cast<ULONG>(count), m_count); m_position < end; ++m_position)
        {
            data.push_back(
                {{Index, static_cast<LONG>(m_position), ""}, {Generation, static_cast<LONG>(m_generation), ""}});
        }
        *rows = NewRowSet(data);
        if (m_notifiesReaders)
        {
            NotifyAll();
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetStatus(ULONG*, ULONG*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray, ULONG) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE QueryColumns(ULONG, LPSPropTagArray*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG, ULONG) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE QueryPosition(ULONG*, ULONG*, ULONG*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction, BOOKMARK, ULONG) override { return MAPI_E_NOT_FOUND; }
    HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction, ULONG) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet, ULONG) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE Abort() override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE ExpandRow(ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*) override
    {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE CollapseRow(ULONG, LPBYTE, ULONG, ULONG*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE GetCollapseState(ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*) override
    {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE SetCollapseState(ULONG, ULONG, LPBYTE, BOOKMARK*) override { return MAPI_E_NO_SUPPORT; }

private:
    void Deliver()
    {
        while (!m_stop)
        {
            {
                std::unique_lock<std::recursive_mutex> lock(m_mutex);
                ++m_generation;
                if (m_heldInDelivery)
                {
                    NotifyAll();
                }
            }
            if (!m_heldInDelivery)
            {
                NotifyAll();
            }
            std::this_thread::yield();
        }
    }
    void NotifyAll()
    {
        std::vector<IMAPIAdviseSink*> sinks;
        {
            const std::lock_guard<std::recursive_mutex> lock(m_mutex);
            for (const auto& advised : m_sinks)
            {
                sinks.push_back(advised.second);
                advised.second->AddRef();
            }
        }
        for (IMAPIAdviseSink* sink : sinks)
        {
            NOTIFICATION notification = {};
            notification.ulEventType = fnevTableModified;
            notification.info.tab.ulTableEvent = TABLE_ROW_MODIFIED;
            sink->OnNotify(1, &notification);
            ++m_delivered;
            sink->Release();
        }
    }

    std::recursive_mutex m_mutex;
    std::map<ULONG_PTR, IMAPIAdviseSink*> m_sinks;
    const ULONG m_count;
    const bool m_heldInDelivery;
    ULONG_PTR m_connections = 0xABABABAB00000000; // all 64 bits count
    ULONG m_position = 0;
    std::atomic<ULONG> m_generation{0};
    std::atomic<ULONG> m_references{0};
    std::atomic<ULONG> m_delivered{0};
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

} // namespace zeb::test
