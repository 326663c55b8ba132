#include "zebstore/exports/MapiInitialize.h"

#include "platform/thread.h"
#include "zebstore/base/Guard.h"
#include "zebstore/base/Locks.h"
#include "zebstore/base/Memory.h"
#include "zebstore/notify/Notifier.h"

namespace zebstore
{
namespace
{

MutexOf<lockorder::Life> g_lifeLock;
long g_users = 0;

} // namespace

bool IsInitialized()
{
    const std::lock_guard hold(g_lifeLock);
    return g_users > 0;
}

} // namespace zebstore

using namespace zebstore;

HRESULT WINAPI MAPIInitialize(LPVOID init)
{
    {
        const std::lock_guard hold(g_lifeLock);
        if (g_users == 0)
        {
            ApplySwitchesOfEnvironment();
        }
    }
    return Guarded("MAPIInitialize", [&]
    {
        const auto* options = static_cast<const MAPIINIT_0*>(init);
        if (options != nullptr && options->ulVersion != MAPI_INIT_VERSION)
        {
            throw Error(MAPI_E_VERSION, "MAPIINIT_0 has an unknown version");
        }
        const std::lock_guard hold(g_lifeLock);
        ++g_users;
    });
}

void WINAPI MAPIUninitialize()
{
    Guarded("MAPIUninitialize", [] {});
    {
        const std::lock_guard hold(g_lifeLock);
        if (g_users == 0 || --g_users > 0)
        {
            return;
        }
    }
    if (zeb::platform::IsProcessEnding())
    {
        return TraceLiveCounts();
    }
    // Not under the lock: an advise sink in a call may query whether MAPI is started.
    Notifier::The().Stop();
    TraceLiveCounts();
}
