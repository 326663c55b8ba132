// The application object of a program or library.
#pragma once

#include "framework/Object.h"
#include "platform/mapi.h"

namespace zeb
{

/// Base of the application object of a binary; each binary has one.
class CWinApp : public CObject
{
public:
    /// The class's record.
    static CRuntimeClass* GetThisClass()
    {
        static CRuntimeClass record = {"CWinApp", static_cast<int>(sizeof(CWinApp)), &CObject::GetThisClass};
        return &record;
    }
    /// The record of the object's class.
    CRuntimeClass* GetRuntimeClass() const override { return GetThisClass(); }

    /// Called once when the binary is loaded. @return whether the start succeeded.
    virtual BOOL InitInstance() { return TRUE; }
    /// Called once when the binary is unloaded. @return the exit code.
    virtual int ExitInstance() { return 0; }
};

/// The static instance of an application class: loading the binary constructs it and runs InitInstance,
/// unloading runs ExitInstance and destroys it.
template <class App>
class CWinAppInstance
{
public:
    CWinAppInstance()
        : m_started(m_app.InitInstance() != FALSE)
    {
    }
    ~CWinAppInstance()
    {
        if (m_started)
        {
            m_app.ExitInstance();
        }
    }
    CWinAppInstance(const CWinAppInstance&) = delete;
    CWinAppInstance& operator=(const CWinAppInstance&) = delete;

    /// The application.
    App& Get() { return m_app; }
    /// Whether InitInstance succeeded.
    bool Started() const { return m_started; }

private:
    App m_app;
    bool m_started;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CWinApp;
using zeb::CWinAppInstance;
#endif
