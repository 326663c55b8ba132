// Encoded words of mail headers, "=?charset?Q?text?=".
#pragma once

#include <string>

namespace zeb::tools
{

/// Rewrites the encoded words that GMime does not decode whole into words of UTF-8: those whose bytes are not
/// text of the character set that they name, with what DecodeText makes of them, and several words that follow
/// each other, of which it loses those after the padding of base64. All other text stays as it is.
/// @return whether bytes were not text of their character set
bool MendEncodedWords(std::string& header);

} // namespace zeb::tools
