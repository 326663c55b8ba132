// Profile administration.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// IProfAdmin; the caller owns the one reference.
IProfAdmin* NewProfAdmin();

} // namespace zebstore
