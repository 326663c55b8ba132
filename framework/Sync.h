// Locks.
#pragma once

#include <mutex>

/// A recursive critical section: the thread that holds it may take it again, and releases it as often.
class CCriticalSection
{
public:
    CCriticalSection() = default;
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    /// Waits without time-out. @return true
    bool Lock()
    {
        m_mutex.lock();
        return true;
    }
    /// @return true
    bool Unlock()
    {
        m_mutex.unlock();
        return true;
    }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a critical section for a scope.
class CSingleLock
{
public:
    /// `initialLock`: take the lock at once.
    explicit CSingleLock(CCriticalSection* section, bool initialLock = false)
        : m_section(section)
    {
        if (initialLock)
        {
            Lock();
        }
    }
    ~CSingleLock() { Unlock(); }
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;

    bool Lock()
    {
        if (!m_locked)
        {
            m_locked = m_section->Lock();
        }
        return m_locked;
    }
    /// @return whether it held the lock.
    bool Unlock()
    {
        if (!m_locked)
        {
            return false;
        }
        m_locked = false;
        return m_section->Unlock();
    }
    bool IsLocked() const { return m_locked; }

private:
    CCriticalSection* m_section;
    bool m_locked = false;
};
