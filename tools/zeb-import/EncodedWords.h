// Encoded words of mail headers, "=?charset?Q?text?=".
#pragma once

#include <string>

namespace zeb::tools
{

/// Rewrites the encoded words that GMime does not decode completely as UTF-8 words: words whose bytes are invalid in
/// their character set (decoded by DecodeText), and sequences of words, of which GMime loses those after base64
/// padding. All other text is unchanged.
/// @return whether bytes were invalid in their character set
bool MendEncodedWords(std::string& header);

} // namespace zeb::tools
