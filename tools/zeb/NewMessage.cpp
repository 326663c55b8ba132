#include "tools/zeb/NewMessage.h"

#include "platform/tags.h"
#include "tools/common/Failure.h"
#include "tools/common/MailProperties.h"
#include "tools/common/Output.h"
#include "tools/zeb/Objects.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>

namespace zeb::tools
{
namespace
{

/// A file that becomes an attachment.
class FileBytes : public ByteSource
{
public:
    explicit FileBytes(const std::string& file)
        : m_file(ValidUtf8(file))
        , m_stream(std::filesystem::u8path(file), std::ios::binary)
    {
        std::error_code failure;
        const std::filesystem::path path = std::filesystem::u8path(file);
        if (!std::filesystem::exists(path, failure))
        {
            throw ToolError("'" + m_file + "' does not exist");
        }
        m_size = std::filesystem::file_size(path, failure);
        if (!m_stream || failure)
        {
            throw ToolError("'" + m_file + "' " +
                            (std::filesystem::is_directory(path) ? "is a folder" : "cannot be read"));
        }
    }

    uint64_t Size() override { return m_size; }

    size_t Read(char* buffer, size_t size) override
    {
        m_stream.read(buffer, static_cast<std::streamsize>(size));
        if (m_stream.bad())
        {
            throw ToolError("reading '" + m_file + "' failed");
        }
        return static_cast<size_t>(m_stream.gcount());
    }

private:
    const std::string m_file;
    std::ifstream m_stream;
    uint64_t m_size = 0;
};

struct NamedAddress
{
    std::string name, address;
};

std::string WithoutBlanks(const std::string& text)
{
    const size_t begin = text.find_first_not_of(" \t\"");
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(" \t\"") + 1 - begin);
}

NamedAddress ParseAddress(const char* option, const std::string& argument)
{
    const std::string text = ValidUtf8(argument);
    const size_t open = text.rfind('<'), close = text.rfind('>');
    NamedAddress address;
    if (open == std::string::npos)
    {
        address.address = WithoutBlanks(text);
    }
    else if (close == text.size() - 1 && close > open)
    {
        address.name = WithoutBlanks(text.substr(0, open));
        address.address = WithoutBlanks(text.substr(open + 1, close - open - 1));
    }
    const size_t at = address.address.find('@');
    if (at == std::string::npos || at == 0 || at + 1 == address.address.size() ||
        address.address.find_first_of(" ,;<>", 0) != std::string::npos)
    {
        throw UsageError(std::string(option) + " '" + Shortened(OneLine(text), 60) +
                         "' is not an address such as ada@example.org or \"Ada Lovelace <ada@example.org>\"");
    }
    if (address.name.empty())
    {
        address.name = address.address;
    }
    return address;
}

void AddRecipients(MessageContent& message, const char* option, const std::vector<std::string>& addresses, LONG kind)
{
    for (const std::string& each : addresses)
    {
        const NamedAddress address = ParseAddress(option, each);
        Properties recipient;
        AddLong(recipient, PR_RECIPIENT_TYPE, kind);
        AddText(recipient, PR_DISPLAY_NAME_W, address.name);
        AddText(recipient, PR_ADDRTYPE_W, "SMTP");
        AddText(recipient, PR_EMAIL_ADDRESS_W, address.address);
        AddText(recipient, PR_SMTP_ADDRESS_W, address.address);
        message.recipients.push_back(std::move(recipient));
    }
}

void AddAuthor(MessageContent& message, const std::string& from)
{
    const NamedAddress author = ParseAddress("--from", from);
    AddText(message.properties, PR_SENDER_NAME_W, author.name);
    AddText(message.properties, PR_SENDER_ADDRTYPE_W, "SMTP");
    AddText(message.properties, PR_SENDER_EMAIL_ADDRESS_W, author.address);
    AddText(message.properties, PR_SENT_REPRESENTING_NAME_W, author.name);
    AddText(message.properties, PR_SENT_REPRESENTING_ADDRTYPE_W, "SMTP");
    AddText(message.properties, PR_SENT_REPRESENTING_EMAIL_ADDRESS_W, author.address);
}

void AddAttachment(MessageContent& message, const std::string& file)
{
    AttachmentContent attachment;
    const std::string name = std::filesystem::u8path(ValidUtf8(file)).filename().u8string();
    AddLong(attachment.properties, PR_ATTACH_METHOD, ATTACH_BY_VALUE);
    AddLong(attachment.properties, PR_RENDERING_POSITION, -1);
    AddText(attachment.properties, PR_ATTACH_LONG_FILENAME_W, name);
    AddText(attachment.properties, PR_ATTACH_FILENAME_W, name);
    Property data;
    data.tag = PR_ATTACH_DATA_BIN;
    data.source = std::make_shared<FileBytes>(file);
    attachment.properties.push_back(std::move(data));
    message.attachments.push_back(std::move(attachment));
}

/// The text with the line ends of MAPI, CR and LF.
std::string WithMapiLineEnds(const std::string& text)
{
    std::string lines;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r'))
        {
            lines += '\r';
        }
        lines += text[i];
    }
    return lines;
}

std::string AllOfInput()
{
    std::string text{std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
    if (std::cin.bad())
    {
        throw ToolError("reading standard input failed");
    }
    return ValidUtf8(text);
}

} // namespace

MessageContent ContentOf(const NewMessageText& text)
{
    MessageContent message;
    if (!text.from.empty())
    {
        AddAuthor(message, text.from);
    }
    AddRecipients(message, "--to", text.to, MAPI_TO);
    AddRecipients(message, "--cc", text.cc, MAPI_CC);
    AddRecipients(message, "--bcc", text.bcc, MAPI_BCC);
    for (const std::string& file : text.attach)
    {
        AddAttachment(message, file);
    }
    if (!text.subject.empty())
    {
        AddText(message.properties, PR_SUBJECT_W, ValidUtf8(text.subject));
    }
    if (!text.body.empty())
    {
        AddText(message.properties, PR_BODY_W,
                WithMapiLineEnds(text.body == InputMark ? AllOfInput() : ValidUtf8(text.body)));
    }
    return message;
}

} // namespace zeb::tools
