// MAPIInitialize and MAPIUninitialize.
#pragma once

namespace zebstore
{

/// True between MAPIInitialize and the last MAPIUninitialize.
bool IsInitialized();

} // namespace zebstore
