// From encoded values to SPropValue: the cells of table rows and the answers of GetProps.
#pragma once

#include "zebstore/storage/PropertySet.h"

namespace zebstore
{

/// What the builder does with values and types.
struct BuildOptions
{
    /// Text asked for as PT_UNSPECIFIED is given as PT_UNICODE (else as PT_STRING8).
    bool unicode = false;
    /// Text asked for as PT_UNSPECIFIED keeps its stored type; goes before `unicode`.
    bool keepTextType = false;
    /// Large values of at most so many bytes are read whole.
    std::uint64_t wholeUpTo = 0;
};

/// Builds `count` values for `tags` (a tag of type PT_UNSPECIFIED takes the stored type), in this order, as one block
/// of MAPI memory that the caller frees. A tag that was found has the asked type in the answer; one that was not is
/// PT_ERROR with MAPI_E_NOT_FOUND; one whose stored type cannot be given as the asked type is PT_ERROR with
/// MAPI_E_NOT_FOUND as well; a large value above `wholeUpTo` is PT_ERROR with MAPI_E_NOT_ENOUGH_MEMORY. PT_NULL asks
/// for PT_NULL. A multi-valued text converts between its two forms like a single one. A tag with MV_INSTANCE is
/// answered with one value, of the single type, under that tag.
/// @param errors set to the number of PT_ERROR answers; may be null.
/// @throws Error MAPI_E_NOT_ENOUGH_MEMORY
SPropValue* BuildValues(const ULONG* tags, size_t count, const ValueSource& values, const BuildOptions& options,
                        size_t* errors = nullptr);

/// One value; text and binaries are read whole even when large. Blocks are chained to `parent`.
/// @return false when there is no such property or it cannot be given as asked; `value` is then PT_ERROR.
bool BuildValue(ULONG tag, const ValueSource& values, const BuildOptions& options, SPropValue& value, void* parent);

} // namespace zebstore
