// IMAPIProp::CopyTo and CopyProps, through the interfaces of both objects, so the target may belong to another
// provider.
#pragma once

#include "zebstore/objects/CopyRequest.h"

namespace zebstore
{

/// Copies properties and parts from one object to another.
/// @return the problems, null when there were none; owned by the caller.
SPropProblemArray* CopyProperties(const CopyRequest& request);

} // namespace zebstore
