// The attachments of a message as lines of text or JSON.
#pragma once

#include "tools/common/Json.h"
#include "zebapi/ZebAPI.h"

#include <string>
#include <vector>

namespace zeb::tools
{

struct ListedAttachment
{
    ULONG number = 0; ///< PR_ATTACH_NUM
    std::string name; ///< as the sender gave it, UTF-8
    LONG size = 0;    ///< in bytes, with the attachment's properties
    LONG method = 0;  ///< PR_ATTACH_METHOD
    std::string file; ///< where it was saved, UTF-8; empty: nowhere
};

/// @throws CZebException*
std::vector<ListedAttachment> AttachmentsOf(CZebMessage& message);

/// Whether an attachment is an embedded message.
bool IsMessage(const ListedAttachment& attachment);

/// A line of a list, with its line end. @param position its number in the list, from 1
std::string LineOf(const ListedAttachment& attachment, size_t position);

/// The same as a JSON object.
Json JsonOf(const ListedAttachment& attachment);

} // namespace zeb::tools
