// A folder of this provider, as copies to and from it use it.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/objects/StoreContext.h"

namespace zebstore
{

/// Only this provider's folders answer to it, with OwnFolder: it identifies our own folders among those that a host
/// passes in.
constexpr IID OwnFolderId = {0x7B1D8A52, 0x3C5E, 0x4F0B, {0x9A, 0x41, 0x66, 0xE2, 0x0D, 0x57, 0xB8, 0x13}};

class OwnFolder : public IMAPIFolder
{
public:
    virtual const StorePtr& StoreOfFolder() const = 0;
    virtual FolderId Id() const = 0;
    /// @throws Error MAPI_E_NO_ACCESS when the folder was opened for reading
    virtual void RequireChanges() const = 0;

protected:
    ~OwnFolder() = default;
};

/// This provider's folder that implements the interface, kept by the caller's reference; null when another provider
/// owns it.
OwnFolder* AsOwnFolder(void* object);

} // namespace zebstore
