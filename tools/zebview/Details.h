// What the panes below the list show of a message, an entry of the address book or a folder.
#pragma once

#include "tools/common/ListedAttachment.h"
#include "tools/zebview/Mailbox.h"
#include "tools/zebview/PropertyRows.h"

#include <memory>
#include <string>
#include <vector>

namespace zeb::view
{

/// A recipient of a message, or a member of a distribution list.
struct RecipientRow
{
    std::string kind, name, address; ///< UTF-8
};

/// An opened object and the texts of its panes, all in UTF-8. The object itself is kept for what is opened later:
/// attachments, and values behind streams.
struct Details
{
    std::string text; ///< of the reading pane
    std::vector<PropertyRow> properties;
    std::vector<RecipientRow> recipients;
    std::vector<tools::ListedAttachment> attachments;
    std::shared_ptr<CZebMessage> message; ///< null for other objects
};

/// Reads a message without marking it as read. @throws CZebException*, ToolError
Details ReadMessageDetails(Mailbox& mailbox, const SBinary& entryId);
/// An entry of the address book, with the members of a list. @throws CZebException*, ToolError
Details ReadAddressDetails(Mailbox& mailbox, const SBinary& entryId);
/// A folder, a store or a container. @param name UTF-8 @throws CZebException*, ToolError
Details ReadObjectDetails(const std::string& name, CZebIProp& object);

/// Writes the content of an attachment to a file, which appears when it is complete.
/// @param file a path, UTF-8 @throws CZebException*; ToolError for an attachment that is not a file
void SaveAttachment(CZebMessage& message, const tools::ListedAttachment& attachment, const std::string& file);

} // namespace zeb::view
