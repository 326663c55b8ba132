// Finding people by the beginnings of their names (PR_ANR).
#pragma once

#include "zebstore/storage/PropertySet.h"

#include <string_view>

namespace zebstore
{

/// Whether an entry of the address book answers to a name, without regard to case and accents.
///
/// The name is cut into words at blanks, commas and semicolons. Each must begin a word of the entry's display name, its
/// given name, its surname, its account or one of its e-mail addresses; so "bran ada" finds "Ada Brandt". After a '='
/// the rest must be the whole display name, account or address. A name without words finds nothing.
/// @param folded the name, TextFold::IgnoreCaseAndMarks
bool MatchesName(std::string_view folded, const ValueSource& entry);

} // namespace zebstore
