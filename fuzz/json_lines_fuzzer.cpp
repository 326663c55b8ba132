// Lines of .jsonl files: what cannot be loaded is refused with a sentence, and what can is saved so that it loads the same.
#include "fuzz/Require.h"
#include "tools/common/Failure.h"
#include "tools/zeb/LoadFormat.h"
#include "tools/zeb/SaveFormat.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace
{

using namespace zeb::tools;

// A stored message has no property that is to be deleted.
void Store(Properties& properties)
{
    properties.erase(
        std::remove_if(properties.begin(), properties.end(), [](const Property& each) { return each.removed; }),
        properties.end());
}

void Store(MessageContent& message)
{
    Store(message.properties);
    for (AttachmentContent& attachment : message.attachments)
    {
        Store(attachment.properties);
        if (attachment.message)
        {
            Store(*attachment.message);
        }
    }
}

// The line as a store has it after it was loaded.
std::optional<LoadLine> Load(const std::string& text)
{
    try
    {
        LoadLine line = ParseLoadLine(text);
        Store(line.message);
        return line;
    }
    catch (const ToolError& error)
    {
        const std::string reason = error.what();
        Require(!reason.empty(), "a refusal says why");
        Require(reason.find("[json.") == std::string::npos, "a reason is ours");
        return std::nullopt;
    }
}

std::string Saved(const LoadLine& line)
{
    return line.isFolder ? FolderLine(line.folder, line.message.properties)
                         : MessageLine(line.folder, line.associated, line.message);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    const std::optional<LoadLine> line = Load({reinterpret_cast<const char*>(data), size});
    if (!line || line->address)
    {
        return 0;
    }
    const std::string once = Saved(*line);
    const std::optional<LoadLine> again = Load(once);
    Require(again.has_value(), "what is saved can be loaded");
    Require(Saved(*again) == once, "what is loaded again is saved as before");
    return 0;
}
