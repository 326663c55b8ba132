#include "tools/zeb/LoadFormat.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb/LoadValues.h"

#include <algorithm>
#include <set>

namespace zeb::tools
{
namespace
{

void RequireObject(const FileJson& value, const char* what)
{
    if (!value.is_object())
    {
        throw ToolError(std::string(what) + " must be an object");
    }
}

void RefuseOtherKeys(const FileJson& object, const std::set<std::string>& known, const char* where)
{
    for (const auto& entry : object.items())
    {
        if (known.count(entry.key()) == 0)
        {
            throw ToolError("unknown key \"" + entry.key() + "\" in " + where);
        }
    }
}

/// @param mayBeNull whether null means "does not have the property"
Properties ParseProperties(const FileJson& object, const char* where, bool mayBeNull)
{
    RequireObject(object, where);
    Properties properties;
    for (const auto& entry : object.items())
    {
        Property property = PropertyNamed(entry.key());
        try
        {
            property.removed = mayBeNull && entry.value().is_null() && property.tag != PR_ATTACH_DATA_OBJ;
            if (!property.removed)
            {
                SetValues(property, entry.value());
            }
        }
        catch (const ToolError& error)
        {
            throw ToolError(entry.key() + " " + error.what());
        }
        properties.push_back(std::move(property));
    }
    return properties;
}

const FileJson& ArrayOf(const FileJson& object, const char* key)
{
    static const FileJson none = FileJson::array();
    const auto found = object.find(key);
    if (found == object.end())
    {
        return none;
    }
    if (!found->is_array())
    {
        throw ToolError(std::string("\"") + key + "\" must be an array");
    }
    return *found;
}

Properties PropertiesOf(const FileJson& object, const char* where, bool mayBeNull = true)
{
    const auto found = object.find("properties");
    if (found == object.end())
    {
        throw ToolError(std::string(where) + " has no \"properties\"");
    }
    return ParseProperties(*found, "\"properties\"", mayBeNull);
}

MessageContent ParseMessage(const FileJson& object, const char* where, int depth);

AttachmentContent ParseAttachment(const FileJson& object, int depth)
{
    RequireObject(object, "an attachment");
    RefuseOtherKeys(object, {"properties", "message"}, "an attachment");
    AttachmentContent attachment;
    attachment.properties = PropertiesOf(object, "an attachment");
    const auto message = object.find("message");
    if (message != object.end())
    {
        RequireObject(*message, "\"message\"");
        RefuseOtherKeys(*message, {"properties", "recipients", "attachments"}, "an embedded message");
        attachment.message = std::make_shared<MessageContent>(ParseMessage(*message, "an embedded message", depth + 1));
    }
    return attachment;
}

MessageContent ParseMessage(const FileJson& object, const char* where, int depth)
{
    RefuseTooDeep(depth);
    MessageContent message;
    message.properties = PropertiesOf(object, where);
    for (const FileJson& recipient : ArrayOf(object, "recipients"))
    {
        RequireObject(recipient, "a recipient");
        RefuseOtherKeys(recipient, {"properties"}, "a recipient");
        message.recipients.push_back(PropertiesOf(recipient, "a recipient", false));
    }
    for (const FileJson& attachment : ArrayOf(object, "attachments"))
    {
        message.attachments.push_back(ParseAttachment(attachment, depth));
    }
    return message;
}

FileJson ParseJson(const std::string& line)
{
    const std::string valid = ValidUtf8(line);
    if (valid != line)
    {
        throw ToolError("invalid UTF-8 at column " +
                        std::to_string(std::mismatch(line.begin(), line.end(), valid.begin(), valid.end()).first -
                                       line.begin() + 1));
    }
    try
    {
        return FileJson::parse(line);
    }
    catch (const FileJson::parse_error& error)
    {
        throw ToolError("invalid JSON: unexpected text at column " + std::to_string(error.byte));
    }
    catch (const FileJson::out_of_range&)
    {
        throw ToolError("invalid JSON: a number is beyond the range of a double");
    }
}

} // namespace

namespace
{

AddressLine ParseAddress(const FileJson& object)
{
    RefuseOtherKeys(object, {"addressBook", "properties", "members"}, "an address book line");
    AddressLine line;
    const FileJson& kind = object.at("addressBook");
    if (kind != "user" && kind != "list")
    {
        throw ToolError("\"addressBook\" must be \"user\" or \"list\"");
    }
    line.isList = kind == "list";
    line.properties = PropertiesOf(object, "the line");
    const FileJson& members = ArrayOf(object, "members");
    if (!members.empty() && !line.isList)
    {
        throw ToolError("a user has no \"members\"");
    }
    for (const FileJson& each : members)
    {
        if (!each.is_string())
        {
            throw ToolError("a member must be text");
        }
        line.members.push_back(each.get<std::string>());
    }
    return line;
}

} // namespace

LoadLine ParseLoadLine(const std::string& text)
{
    const FileJson object = ParseJson(text);
    RequireObject(object, "a line");
    if (object.contains("addressBook"))
    {
        LoadLine entry;
        entry.address = ParseAddress(object);
        return entry;
    }
    LoadLine line;
    const auto ofFolder = object.find("folderProperties");
    line.isFolder = ofFolder != object.end();
    RefuseOtherKeys(object,
                    line.isFolder
                        ? std::set<std::string>{"folder", "folderProperties"}
                        : std::set<std::string>{"folder", "associated", "properties", "recipients", "attachments"},
                    line.isFolder ? "a line of a folder" : "a line");
    const auto folder = object.find("folder");
    if (folder == object.end())
    {
        throw ToolError("\"folder\" is missing");
    }
    if (!folder->is_string())
    {
        throw ToolError("\"folder\" must be text");
    }
    line.folder = FolderPath::Parse(folder->get<std::string>());
    if (line.isFolder)
    {
        line.message.properties = ParseProperties(*ofFolder, "\"folderProperties\"", true);
        return line;
    }
    const auto associated = object.find("associated");
    if (associated != object.end())
    {
        if (!associated->is_boolean())
        {
            throw ToolError("\"associated\" must be true or false");
        }
        line.associated = associated->get<bool>();
    }
    line.message = ParseMessage(object, "the line", 0);
    return line;
}

} // namespace zeb::tools
