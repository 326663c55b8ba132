// Finds entries by typed names.
#pragma once

#include "zebstore/storage/RowSource.h"

#include <string>

namespace zebstore
{

/// The entries that match a name.
struct NameMatches
{
    size_t count = 0;
    PropertySet entry; ///< when exactly one matches
};
/// When several entries match `name` and it is the full name of exactly one, that entry is the result.
/// @param columns of the entry; null: the default columns of recipients
NameMatches FindByName(RowSource& rows, const std::string& name, const SPropTagArray* columns);

/// Helpers for a caller's recipients: whether one has an identifier, the typed name (UTF-8), and its properties after
/// resolution, which replace the earlier ones.
bool IsResolved(const ADRENTRY& entry);
std::string NameToResolve(const ADRENTRY& entry);
void GiveProperties(ADRENTRY& entry, const PropertySet& found, bool unicode);

/// IABContainer::ResolveNames: gives each unresolved entry of `list` the properties of the one entry among `rows` that
/// matches its PR_DISPLAY_NAME, and sets its flag.
/// @param columns null: the default columns of recipients
void ResolveNamesIn(RowSource& rows, const SPropTagArray* columns, ULONG flags, ADRLIST* list, FlagList* found);

} // namespace zebstore
