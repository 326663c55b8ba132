// Classifies the parts of a mail: text or attachment.
#pragma once

#include "tools/zeb-import/Mime.h"

#include <string>

namespace zeb::tools
{

/// The text of a message. The text is in the parts that a mail program shows first: the root, the alternatives of one
/// text, or the first of several parts; never in a part that is an attachment by its disposition or, except for the
/// root, by its file name.
struct TextParts
{
    GMimePart* plain = nullptr;
    GMimePart* html = nullptr;
};
TextParts TextPartsOf(GMimeObject* root);

/// The decoded bytes of a part. @throws ToolError when they cannot be read
std::string DecodedBytes(GMimePart* part, Notes& notes);

/// The complete text of a text part in UTF-8, even if the transfer encoding ends before the text does.
std::string TextOf(GMimePart* part, Notes& notes);

/// The file name of a part or of an embedded message; empty without one.
std::string FileNameOf(GMimeObject* part);

} // namespace zeb::tools
