#include "zebstore/objects/OwnFolder.h"

namespace zebstore
{

OwnFolder* AsOwnFolder(void* object)
{
    void* asked = nullptr;
    if (object == nullptr || FAILED(static_cast<IUnknown*>(object)->QueryInterface(OwnFolderId, &asked)))
    {
        return nullptr;
    }
    return Ref<OwnFolder>::Adopt(static_cast<OwnFolder*>(asked)).Get();
}

} // namespace zebstore
