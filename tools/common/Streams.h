// Reads properties that are too large for a row through their streams.
#pragma once

#include "zebapi/ZebAPI.h"

#include <functional>
#include <string>

namespace zeb::tools
{

/// Opens a property for reading. @return null when the object does not have it
/// @throws CZebException*
CComPtr<IStream> OptionalStream(CZebIProp& object, ULONG tag);

/// Reads a stream from its position to its end, piece by piece. @throws CZebException*
void ForEachPiece(IStream& stream, const std::function<void(const std::string& piece)>& take);

} // namespace zeb::tools
