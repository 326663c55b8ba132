// Initialization of functions' static objects by several threads. The compiler's code compares the object's epoch with
// the calling thread's, and comes here when the object is newer than what the thread has seen.
#include <windows.h>

#include <limits.h>

/// States of the compiler's `once`; a greater number is the epoch at which the object was complete.
enum : int
{
    NotBegun = 0,
    Underway = -1
};

static SRWLOCK s_lock = SRWLOCK_INIT;
static CONDITION_VARIABLE s_changed = CONDITION_VARIABLE_INIT;

extern "C"
{
    int _Init_global_epoch = INT_MIN;
    __declspec(thread) int _Init_thread_epoch = INT_MIN;

    /// Returns with `once` == Underway to the thread that is to construct the
    /// object, and to others when it is complete.
    void __cdecl _Init_thread_header(int* once)
    {
        AcquireSRWLockExclusive(&s_lock);
        while (*once == Underway)
        {
            SleepConditionVariableSRW(&s_changed, &s_lock, INFINITE, 0);
        }
        if (*once == NotBegun)
        {
            *once = Underway;
        }
        else
        {
            _Init_thread_epoch = _Init_global_epoch;
        }
        ReleaseSRWLockExclusive(&s_lock);
    }

    void __cdecl _Init_thread_footer(int* once)
    {
        AcquireSRWLockExclusive(&s_lock);
        *once = ++_Init_global_epoch;
        _Init_thread_epoch = _Init_global_epoch;
        ReleaseSRWLockExclusive(&s_lock);
        WakeAllConditionVariable(&s_changed);
    }

    /// The constructor threw: another thread may try.
    void __cdecl _Init_thread_abort(int* once)
    {
        AcquireSRWLockExclusive(&s_lock);
        *once = NotBegun;
        ReleaseSRWLockExclusive(&s_lock);
        WakeAllConditionVariable(&s_changed);
    }
}
