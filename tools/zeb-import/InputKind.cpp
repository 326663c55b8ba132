#include "tools/zeb-import/InputKind.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb-import/MboxReader.h"
#include "tools/zeb-import/MessageText.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace zeb::tools
{
namespace
{

namespace fs = std::filesystem;

/// So much of a file is looked at.
constexpr std::streamsize LookedAt = 64 * 1024;

bool BeginsWith(const std::string& text, const std::string& begin)
{
    return text.compare(0, begin.size(), begin) == 0;
}

std::string FirstBytes(const fs::path& file, const std::string& named)
{
    std::string bytes(static_cast<size_t>(LookedAt), '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), LookedAt);
    if (!stream.is_open() || stream.bad())
    {
        throw ToolError(named + " cannot be read");
    }
    bytes.resize(static_cast<size_t>(stream.gcount()));
    return bytes;
}

/// The first line that is not empty, without a byte order mark.
std::string FirstLine(std::string bytes)
{
    const bool isWide = BeginsWith(bytes, "\xFF\xFE") || BeginsWith(bytes, "\xFE\xFF");
    if (isWide)
    {
        // Letters of headers are ASCII: the other byte of each is zero.
        bytes.erase(std::remove(bytes.begin(), bytes.end(), '\0'), bytes.end());
    }
    bytes.erase(0, isWide ? 2 : BeginsWith(bytes, "\xEF\xBB\xBF") ? 3 : 0);
    bytes.erase(0, std::min(bytes.find_first_not_of("\r\n"), bytes.size()));
    return bytes.substr(0, bytes.find_first_of("\r\n"));
}

InputKind KindOfFile(const fs::path& file, const std::string& named)
{
    const std::string bytes = FirstBytes(file, named);
    if (BeginsWith(bytes, "!BDN"))
    {
        return InputKind::Pst;
    }
    if (BeginsAsCompoundFile(bytes))
    {
        return InputKind::Mail;
    }
    const std::string line = FirstLine(bytes);
    if (IsSeparator(line))
    {
        return InputKind::Mbox;
    }
    if (IsHeaderLine(line) || BeginsWith(line, ">From "))
    {
        return InputKind::Mail;
    }
    throw ToolError(named + " is no mail of a known kind: a PST, OST, mbox, .eml or .msg file, or a folder of them");
}

} // namespace

bool BeginsAsCompoundFile(const std::string& bytes)
{
    return BeginsWith(bytes, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
}

InputKind KindOf(const std::string& input)
{
    const fs::path path = fs::u8path(input);
    const std::string named = "'" + ValidUtf8(input) + "'";
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (!fs::exists(status))
    {
        throw ToolError(named + " cannot be read: " +
                        (failure ? failure : std::make_error_code(std::errc::no_such_file_or_directory)).message());
    }
    return fs::is_directory(status) ? InputKind::Folder : KindOfFile(path, named);
}

} // namespace zeb::tools
