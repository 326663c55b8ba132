// Loading a library at run time.
#pragma once

#include "framework/CString.h"

/// Owns one loaded library, or nothing; unloads it when destroyed.
///
/// Modes are sums of bits: 2 keep the library for the process's calls, 4 quiet (no error box), 16 load its dependencies
/// from its own folder. In every mode a bare name is searched in the folder of the binary with this code, then in the
/// system folder; never in the current folder or on a search path. A path with a folder names exactly that file. An
/// empty path is refused. Threads: none of its own; use one object under one lock.
class CDllLoader
{
public:
    CDllLoader();
    /// Loads immediately; IsEmpty() returns whether it failed.
    CDllLoader(const char* path, long mode);
    virtual ~CDllLoader();
    CDllLoader(const CDllLoader&) = delete;
    CDllLoader& operator=(const CDllLoader&) = delete;

    /// Loads a library; the previous one is released after the new one was loaded. @return whether it was loaded. If
    /// not, the previous one is kept and Reason() has the cause.
    virtual bool Load(const char* path, long mode);

    /// Whether nothing is loaded.
    bool IsEmpty() const;

    /// The address of an export; null when it does not exist or nothing is loaded.
    void* GetProc(const char* name) const;

    /// The same with the function's type. @return whether it exists; `proc` is null if not
    template <class Function>
    bool GetProc(const char* name, Function*& proc) const
    {
        proc = reinterpret_cast<Function*>(GetProc(name));
        return proc != nullptr;
    }

    /// Releases the library; no-op when none is loaded.
    void Unload();

    /// The system's error text of the last failed Load; empty after a successful one.
    zeb::CStringA Reason() const;

private:
    void* m_module = nullptr;
    zeb::CStringA m_reason;
};
