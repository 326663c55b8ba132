// Text as the store keeps it, and how it is compared.
//
// Stored text is UTF-8 in which a lone surrogate of the 16-bit form is kept as its three bytes, so every
// 16-bit text comes back as it was written. Comparison folds case by Unicode's simple folding and leaves accents
// out by its canonical decompositions, the same on both targets. The data is utf8proc's; sort keys in files depend
// on the folding, so another version of it must fold the same or rebuild them.
#pragma once

#include "platform/mapi.h"
#include "platform/text.h"

#include <string>
#include <string_view>

namespace zebstore
{

/// 16-bit text as stored text, without loss.
std::string StoredFromWide(const WCHAR* text, size_t length);
/// Stored text as 16-bit text; bytes that are not stored text become U+FFFD.
zeb::platform::WideString WideFromStored(std::string_view text);
/// Characters that WideFromStored gives at most.
inline size_t WideBound(size_t storedBytes)
{
    return storedBytes;
}
/// Decodes into `to`, which has room for WideBound(text.size()); returns the characters written.
size_t DecodeStored(std::string_view text, WCHAR* to);

bool IsAscii(std::string_view text);

/// Narrow text of this system (ANSI code page, UTF-8 on Linux) as stored text.
std::string StoredFromNarrow(std::string_view narrow);
/// Stored text as this system's narrow text; what it cannot say is replaced.
std::string NarrowFromStored(std::string_view stored);

/// How two texts are held against each other.
enum class TextFold
{
    Exact,
    IgnoreCase,         ///< letters differ in case only: equal
    IgnoreMarks,        ///< accents (nonspacing marks) are left out, and the strokes of letters like "ø"
    IgnoreCaseAndMarks, ///< both
};

/// Text in the form in which byte-wise comparison is the comparison asked for.
std::string Folded(std::string_view stored, TextFold fold);

/// The code points of a text in the widest folding: when a text is found in another under any TextFold, then the one
/// widest folded is found in the other widest folded. What Unicode makes a mark in one fold and a letter in another is
/// left out.
std::u32string WidestFolded(std::string_view stored);

/// Tables order text by this key: the first SortKeyCharacters characters, case folded, compared byte by byte
/// (that is by code point).
std::string SortKey(std::string_view stored);
/// The version of Unicode whose foldings and decompositions are used, "15.0.0".
const char* UnicodeVersion();
constexpr size_t SortKeyCharacters = 255;

} // namespace zebstore
