// The parts of a mail: which are its text, and which are attachments.
#pragma once

#include "tools/zeb-import/Mime.h"

#include <string>

namespace zeb::tools
{

/// The text of a message. It is in the parts that a mail program shows first: the root, the alternatives of
/// one text, or the first of several parts; never in one that is an attachment by its disposition or, but for
/// the root, by its file name.
struct TextParts
{
    GMimePart* plain = nullptr;
    GMimePart* html = nullptr;
};
TextParts TextPartsOf(GMimeObject* root);

/// The bytes of a part after its transfer encoding. @throws ToolError when they cannot be read
std::string DecodedBytes(GMimePart* part, Notes& notes);

/// The text of a text part in UTF-8, whole also where the transfer encoding ends before the text does.
std::string TextOf(GMimePart* part, Notes& notes);

/// The file name of a part or of a message inside; empty without one.
std::string FileNameOf(GMimeObject* part);

} // namespace zeb::tools
