// An entry that is being created.
#pragma once

#include "zebstore/storage/AddressStorage.h"

namespace zebstore
{

/// What saving a new object of IABContainer::CreateEntry does.
struct NewEntry
{
    AddressId list = 0; ///< the list that it becomes a member of; 0: none
    ULONG flags = 0;    ///< CREATE_CHECK_DUP_STRICT, CREATE_CHECK_DUP_LOOSE, CREATE_REPLACE
};

} // namespace zebstore
