#include "tools/common/ListedAttachment.h"

#include "tools/common/HostSession.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"

#include <filesystem>

namespace zeb::tools
{
namespace
{

std::string NameOf(const CZebRow& row)
{
    for (const ULONG tag : {PR_ATTACH_LONG_FILENAME_W, PR_ATTACH_FILENAME_W, PR_DISPLAY_NAME_W})
    {
        std::string name = TextOf(row, tag);
        if (!name.empty())
        {
            return name;
        }
    }
    return "";
}

std::string FileNameOf(const std::string& path)
{
    return std::filesystem::u8path(path).filename().u8string();
}

} // namespace

std::vector<ListedAttachment> AttachmentsOf(CZebMessage& message)
{
    CZebRowSet rows;
    message.GetAttachments(rows);
    std::vector<ListedAttachment> attachments(rows.Count());
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        attachments[i].number = static_cast<ULONG>(static_cast<LONG>(rows[i][PR_ATTACH_NUM]));
        attachments[i].name = NameOf(rows[i]);
        attachments[i].size = NumberOf(rows[i], PR_ATTACH_SIZE);
        attachments[i].method = NumberOf(rows[i], PR_ATTACH_METHOD);
    }
    return attachments;
}

bool IsMessage(const ListedAttachment& attachment)
{
    return attachment.method == ATTACH_EMBEDDED_MSG;
}

std::string LineOf(const ListedAttachment& attachment, size_t position)
{
    const std::string name = attachment.name.empty() ? "(no name)" : OneLine(attachment.name);
    return "  " + std::to_string(position) + "  " + name + (IsMessage(attachment) ? "  message" : "") + "  " +
           Grouped(static_cast<unsigned long long>(attachment.size)) + " bytes" +
           (attachment.file.empty() ? "" : "  saved as " + OneLine(FileNameOf(attachment.file))) + "\n";
}

Json JsonOf(const ListedAttachment& attachment)
{
    return {{"number", attachment.number},
            {"name", TextOrNull(attachment.name)},
            {"size", attachment.size},
            {"message", IsMessage(attachment)},
            {"file", TextOrNull(attachment.file)}};
}

} // namespace zeb::tools
