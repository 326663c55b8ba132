// Loading a library at run time.
#pragma once

#include "framework/CString.h"

/// Owns one loaded library, or nothing; unloads it when destroyed.
///
/// Modes are the sum of bits: 2 keep the library for the process's calls, 4 quiet (no error box), 16 take its
/// dependencies from its own folder. In every mode a bare name is looked for beside the binary that holds
/// this code, then in the system folder; never in the current folder or on a search path. A path with a
/// folder names exactly that file. An empty path is refused. Threads: none of its own; use one object under
/// one lock.
class CDllLoader
{
public:
    CDllLoader();
    /// Loads at once; IsEmpty() says whether it worked.
    CDllLoader(const char* path, long mode);
    virtual ~CDllLoader();
    CDllLoader(const CDllLoader&) = delete;
    CDllLoader& operator=(const CDllLoader&) = delete;

    /// Loads a library; one that is already held is released after the new one was loaded.
    /// @return whether it was loaded. When not, what was held stays, and Reason() says why.
    virtual bool Load(const char* path, long mode);

    /// Whether nothing is loaded.
    bool IsEmpty() const;

    /// The address of an export, or null when it is not there or nothing is loaded.
    void* GetProc(const char* name) const;

    /// The same with the function's type. @return whether it is there; `proc` is null when not.
    template <class Function>
    bool GetProc(const char* name, Function*& proc) const
    {
        proc = reinterpret_cast<Function*>(GetProc(name));
        return proc != nullptr;
    }

    /// Releases the library; nothing when none is held.
    void Unload();

    /// Why the last Load failed, in the system's words; empty after one that worked.
    zeb::CStringA Reason() const;

private:
    void* m_module = nullptr;
    zeb::CStringA m_reason;
};
