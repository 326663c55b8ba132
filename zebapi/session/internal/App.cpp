#include "zebapi/session/internal/App.h"

#include "qorlog/QorLog.h"

namespace
{

CWinAppInstance<CZebAPIApp> g_application;

} // namespace

BOOL CZebAPIApp::InitInstance()
{
    LNote(1, "ZebAPI", "CZebAPIApp::InitInstance started");
    return CWinApp::InitInstance();
}
