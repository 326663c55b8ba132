// Message services of one profile.
#pragma once

#include "zebstore/profiles/Profiles.h"
#include "zebstore/storage/StoreFile.h"

namespace zebstore
{

/// IMsgServiceAdmin of a profile; the caller owns the one reference. @throws Error MAPI_E_NOT_FOUND
IMsgServiceAdmin* NewServiceAdmin(const std::string& profile);

/// Opens the file of a profile's store, for writing when that is allowed.
std::shared_ptr<StoreFile> OpenServiceFile(const Service& service, CommitObserver* observer);

/// Adds the provider's service with its default store, which is created when it does not exist.
void AddDefaultService(const std::string& profile);

} // namespace zebstore
