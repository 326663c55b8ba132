// One message of a PST or OST file.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/Pff.h"

namespace zeb::tools
{

/// Reads a message whole: properties, recipients and attachments, embedded messages included. Large
/// attachments are read when they are written; `item` must live until then.
/// @throws ToolError
MessageContent ReadPstMessage(std::shared_ptr<libpff_item_t> item);

} // namespace zeb::tools
