// Writes properties of every type and size into folders, messages, recipients and attachments.
#pragma once

#include "tools/common/Property.h"

#include <map>

namespace zeb::tools
{

/// What was not written: the provider's answer for single properties.
struct Refusal
{
    std::string property; ///< its name
    long code = 0;
};

/// Maps the names of named properties to the store's tags and remembers them: names mean the same in all
/// objects of one store.
class NameResolver
{
public:
    /// Gives every named property of `properties` its tag in the store of `object`; asks for all names that
    /// are not known yet in one call.
    /// @throws CZebException*, ToolError
    void Resolve(IMAPIProp* object, Properties& properties);

private:
    void Ask(IMAPIProp* object, const std::map<std::string, const PropertyName*>& missing);
    static std::string KeyOf(const PropertyName& name);
    std::map<std::string, ULONG> m_identifiers;
};

/// Writes `properties` to `object`, does not save. Values above 32 KiB go through a stream.
/// @return the properties that the provider refused; computed ones (MAPI_E_COMPUTED) are among them.
/// @throws CZebException*, ToolError
std::vector<Refusal> WriteProperties(IMAPIProp* object, Properties& properties, NameResolver& names);

/// One attachment of a message.
struct AttachmentContent;

/// All of one message.
struct MessageContent
{
    Properties properties;
    std::vector<Properties> recipients;
    std::vector<AttachmentContent> attachments;
};

struct AttachmentContent
{
    Properties properties;
    std::shared_ptr<MessageContent> message; ///< the embedded message, when it is one
};

/// Fills a new message, embedded messages included; the message itself is not saved.
/// @throws CZebException*, ToolError
std::vector<Refusal> WriteMessage(IMessage* message, MessageContent& content, NameResolver& names);

/// The folder's own interface, for the calls that the wrapper does not offer.
CComPtr<IMAPIFolder> InterfaceOf(const CZebFolder& folder);

/// Creates a message in the folder. @param associated among the folder's associated contents.
CComPtr<IMessage> CreateMessage(const CZebFolder& folder, bool associated);

/// Saves for good. @throws CZebException*
void Save(IMAPIProp* object);

} // namespace zeb::tools
