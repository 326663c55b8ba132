// Locks.
#pragma once

#include "platform/mapi.h"

#ifndef _WIN32
#include <pthread.h>
#endif

namespace zeb
{

/// A recursive critical section: the owning thread may lock it again, and must unlock it the same number of times.
///
/// It is the system's own object, so a host can lock the one that the library returns.
class CCriticalSection
{
public:
#ifdef _WIN32
    CCriticalSection() { InitializeCriticalSection(&m_section); }
    ~CCriticalSection() { DeleteCriticalSection(&m_section); }
#else
    CCriticalSection()
    {
        pthread_mutexattr_t recursive;
        pthread_mutexattr_init(&recursive);
        pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutex_init(&m_section, &recursive);
        pthread_mutexattr_destroy(&recursive);
    }
    ~CCriticalSection() { pthread_mutex_destroy(&m_section); }
#endif
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    /// Waits without time-out. @return true
    bool Lock()
    {
#ifdef _WIN32
        EnterCriticalSection(&m_section);
#else
        pthread_mutex_lock(&m_section);
#endif
        return true;
    }
    /// @return true
    bool Unlock()
    {
#ifdef _WIN32
        LeaveCriticalSection(&m_section);
#else
        pthread_mutex_unlock(&m_section);
#endif
        return true;
    }

private:
#ifdef _WIN32
    CRITICAL_SECTION m_section;
#else
    pthread_mutex_t m_section;
#endif
};

/// Holds a critical section for a scope.
class CSingleLock
{
public:
    /// `initialLock`: lock immediately.
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

    /// Takes the lock.
    bool Lock()
    {
        if (!m_locked)
        {
            m_locked = m_section->Lock();
        }
        return m_locked;
    }
    /// @return whether the lock was held
    bool Unlock()
    {
        if (!m_locked)
        {
            return false;
        }
        m_locked = false;
        return m_section->Unlock();
    }
    /// Whether this object holds the lock.
    bool IsLocked() const { return m_locked; }

private:
    CCriticalSection* m_section;
    bool m_locked = false;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CCriticalSection;
using zeb::CSingleLock;
#endif
