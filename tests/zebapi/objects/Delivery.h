// Handlers of notifications that do what a test gives them.
#pragma once

#include "ObjectsTest.h"
#include "zebapi/CachedTable.h"

#include <atomic>
#include <functional>
#include <utility>

namespace zeb::test
{

class Delivery : public ObjectsTest
{
};

/// A cached table with something of its own to do in each notification.
class Handling : public CZebCachedTable
{
public:
    explicit Handling(std::function<void(Handling&)> handle)
        : m_handle(std::move(handle))
    {
    }
    ~Handling() override { Free(); }
    using CZebCachedTable::Unbind;
    using CZebCachedTable::operator=;

    void OnTable_Modified(TABLE_NOTIFICATION* notification) override
    {
        CZebCachedTable::OnTable_Modified(notification);
        ++m_calls;
        m_handle(*this);
    }
    std::atomic<int> m_calls{0};

private:
    std::function<void(Handling&)> m_handle;
};

/// Runs what it is given inside each notification.
class Handler : public CAdviseSinkDelegate
{
public:
    explicit Handler(std::function<void()> handle)
        : m_handle(std::move(handle))
    {
    }
    void OnTable_Modified(TABLE_NOTIFICATION*) override { m_handle(); }

private:
    std::function<void()> m_handle;
};

inline void Notify(IMAPIAdviseSink* sink)
{
    NOTIFICATION notification = {};
    notification.ulEventType = fnevTableModified;
    notification.info.tab.ulTableEvent = TABLE_CHANGED;
    sink->OnNotify(1, &notification);
}

} // namespace zeb::test
