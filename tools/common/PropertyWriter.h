// Writes properties of every type and size into folders, messages, recipients and attachments.
#pragma once

#include "tools/common/Property.h"

#include <map>

namespace zeb::tools
{

/// A property that was not written, with the provider's error.
struct Refusal
{
    std::string property; ///< its name
    long code = 0;
};

/// Maps the names of named properties to the store's tags and caches them: a name has the same tag in all objects of
/// one store.
class NameResolver
{
public:
    /// Gives every named property of `properties` its tag in the store of `object`; queries all unknown names in one
    /// call.
    /// @throws CZebException*, ToolError
    void Resolve(CZebIProp& object, Properties& properties);

private:
    void Ask(CZebIProp& object, const std::map<std::string, const PropertyName*>& missing);
    static std::string KeyOf(const PropertyName& name);
    std::map<std::string, ULONG> m_identifiers;
};

/// Writes `properties` to `object`; does not save. Values above 32 KiB go through a stream.
/// @return the properties that the provider refused; including computed ones (MAPI_E_COMPUTED).
/// @throws CZebException*, ToolError
std::vector<Refusal> WriteProperties(CZebIProp& object, Properties& properties, NameResolver& names);

/// One attachment of a message.
struct AttachmentContent;

/// One complete message.
struct MessageContent
{
    Properties properties;
    std::vector<Properties> recipients;
    std::vector<AttachmentContent> attachments;
};

struct AttachmentContent
{
    Properties properties;
    std::shared_ptr<MessageContent> message; ///< the embedded message, if the attachment is one
};

/// Refuses embedded messages that are nested deeper than 32: files with such are errors or attacks on the stack.
/// @param depth 0 for the message itself @throws ToolError
void RefuseTooDeep(int depth);

/// Fills a new message, including embedded messages; the message itself is not saved.
/// @throws CZebException*, ToolError
std::vector<Refusal> WriteMessage(CZebMessage& message, MessageContent& content, NameResolver& names);

} // namespace zeb::tools
