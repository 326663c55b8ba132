// One message of a PST or OST file.
#pragma once

#include "tools/common/PropertyWriter.h"
#include "tools/zeb-import/Pff.h"

namespace zeb::tools
{

/// Reads a complete message: properties, recipients and attachments, including embedded messages. Large attachments are
/// read when they are written; `item` must stay valid until then.
/// @throws ToolError
MessageContent ReadPstMessage(std::shared_ptr<libpff_item_t> item);

} // namespace zeb::tools
