#include "tools/zeb-import/MimeSource.h"

#include "tools/common/Failure.h"
#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/InputKind.h"
#include "tools/zeb-import/MimeMessage.h"
#include "tools/zeb-import/MsgReader.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace zeb::tools
{
namespace
{

namespace fs = std::filesystem;

FolderPath TopNamed(const std::string& name)
{
    FolderPath path;
    path.names.push_back(name);
    return path;
}

std::string BytesOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
    {
        throw ToolError("it cannot be opened");
    }
    std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (stream.bad())
    {
        throw ToolError("it cannot be read");
    }
    return bytes;
}

/// One message: a .msg file when it begins as one, otherwise Internet mail.
MessageContent ContentOfFile(const fs::path& file, const std::optional<MailState>& state, Notes& notes)
{
    char begin[8] = {};
    std::ifstream(file, std::ios::binary).read(begin, sizeof begin);
    return BeginsAsCompoundFile({begin, sizeof begin}) ? ReadMsg(file.u8string(), notes)
                                                       : ContentOfMail(BytesOf(file), state, notes);
}

bool IsMailFile(const fs::path& file)
{
    const std::string extension = LowerCase(file.extension().u8string());
    return extension == ".eml" || extension == ".msg";
}

bool IsFolder(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

/// A Maildir keeps its messages in "cur" and "new", and messages not yet delivered in "tmp".
bool IsMaildir(const fs::path& directory)
{
    return IsFolder(directory / "cur") && IsFolder(directory / "new");
}

bool IsPartOfMaildir(const fs::path& directory)
{
    const std::string name = directory.filename().u8string();
    return (name == "cur" || name == "new" || name == "tmp") && IsMaildir(directory.parent_path());
}

/// The path of a subfolder: ".Sent.2020" of a Maildir is the folder "2020" in "Sent".
FolderPath PathBelow(const FolderPath& above, const fs::path& folder, bool inMaildir)
{
    const std::string name = folder.filename().u8string();
    if (!inMaildir || name.size() < 2 || name[0] != '.' || name.find("..") != std::string::npos || name.back() == '.')
    {
        return above.Below(name);
    }
    FolderPath path = above;
    for (size_t at = 1; at <= name.size();)
    {
        const size_t end = std::min(name.find('.', at), name.size());
        path = path.Below(name.substr(at, end - at));
        at = end + 1;
    }
    return path;
}

/// The folder itself: "mail/." and "mail/" are the folder "mail".
fs::path Whole(const fs::path& path)
{
    const fs::path whole = fs::absolute(path).lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

} // namespace

MboxSource::MboxSource(const std::string& file)
    : m_file(file)
    , m_folder(TopNamed(fs::u8path(file).stem().u8string()))
    , m_reader(file)
{
}

void MboxSource::Run(Importer& importer)
{
    importer.AddFolder(m_folder, {});
    for (MboxMessage message; m_reader.Next(message);)
    {
        importer.AddMessage(m_folder, false,
                            m_file + ", message " + std::to_string(message.number) + " at offset " +
                                std::to_string(message.offset),
                            [&](Notes& notes) { return ContentOfMail(std::move(message.bytes), std::nullopt, notes); });
    }
}

EmlSource::EmlSource(const std::string& input)
{
    const fs::path path = fs::u8path(input);
    std::error_code ignored;
    if (fs::is_regular_file(path, ignored))
    {
        const fs::path whole = fs::absolute(path).lexically_normal();
        const fs::path above = whole.parent_path();
        const fs::path named = above.has_filename() ? above.filename() : whole.stem();
        m_folders.push_back({TopNamed(named.u8string()), {}});
        TakeFile(path, m_folders.front());
        return;
    }
    if (!IsFolder(path))
    {
        throw ToolError("'" + input + "' is neither a folder nor a file");
    }
    Walk(path, TopNamed(Whole(path).filename().u8string()), true);
}

void EmlSource::PassOver(const fs::path& path, const std::string& reason)
{
    m_passedOver.emplace_back(path.u8string(), reason);
}

EmlSource::Listing EmlSource::List(const fs::path& directory, bool isTop)
{
    Listing listing;
    std::error_code failure;
    for (fs::directory_iterator entry(directory, failure), end; !failure && entry != end; entry.increment(failure))
    {
        std::error_code ignored;
        if (entry->is_directory(ignored) && entry->is_symlink(ignored))
        {
            PassOver(entry->path(), "it is a link to a folder");
        }
        else if (entry->is_directory(ignored))
        {
            listing.folders.push_back(entry->path());
        }
        else if (entry->is_regular_file(ignored) || entry->is_symlink(ignored))
        {
            listing.files.push_back(entry->path());
        }
        else
        {
            PassOver(entry->path(), "it is not a file");
        }
    }
    if (failure && isTop)
    {
        throw ToolError("'" + directory.u8string() + "' cannot be read: " + failure.message());
    }
    if (failure)
    {
        m_unreadable.emplace_back(directory.u8string(), failure.message());
    }
    std::sort(listing.folders.begin(), listing.folders.end());
    std::sort(listing.files.begin(), listing.files.end());
    return listing;
}

void EmlSource::TakeFile(const fs::path& file, Folder& folder)
{
    const std::string place = Whole(file.parent_path().empty() ? "." : file.parent_path()).filename().u8string();
    File taken{file, std::nullopt};
    if (place == "cur" || place == "new")
    {
        taken.state = StateInFileName(file.filename().u8string(), place == "new");
    }
    folder.files.push_back(std::move(taken));
    ++m_count;
}

void EmlSource::TakeMaildir(const fs::path& directory, Folder& folder)
{
    for (const char* part : {"cur", "new"})
    {
        for (const fs::path& file : List(directory / part, false).files)
        {
            TakeFile(file, folder);
        }
    }
    if (IsFolder(directory / "tmp"))
    {
        for (const fs::path& file : List(directory / "tmp", false).files)
        {
            PassOver(file, "it is not yet delivered");
        }
    }
}

void EmlSource::Walk(const fs::path& directory, const FolderPath& path, bool isTop)
{
    const Listing listing = List(directory, isTop);
    const bool isMaildir = IsMaildir(directory), isPart = IsPartOfMaildir(Whole(directory));
    Folder folder{path, {}};
    for (const fs::path& file : listing.files)
    {
        if (isPart || IsMailFile(file))
        {
            TakeFile(file, folder);
        }
        else
        {
            PassOver(file, "it is not an .eml or .msg file");
        }
    }
    m_hasMaildir = m_hasMaildir || isMaildir;
    if (isMaildir)
    {
        TakeMaildir(directory, folder);
    }
    m_folders.push_back(std::move(folder));
    for (const fs::path& below : listing.folders)
    {
        if (!IsPartOfMaildir(below))
        {
            Walk(below, PathBelow(path, below, isMaildir), false);
        }
    }
}

std::vector<FolderPath> EmlSource::Folders()
{
    std::vector<FolderPath> paths;
    for (const Folder& folder : m_folders)
    {
        paths.push_back(folder.path);
    }
    return paths;
}

void EmlSource::Run(Importer& importer)
{
    for (const Folder& folder : m_folders)
    {
        importer.AddFolder(folder.path, {});
        for (const File& file : folder.files)
        {
            importer.AddMessage(folder.path, false, file.path.u8string(),
                                [&](Notes& notes) { return ContentOfFile(file.path, file.state, notes); });
        }
    }
    for (const auto& [path, reason] : m_unreadable)
    {
        importer.Skip(path, reason);
    }
    for (const auto& [path, reason] : m_passedOver)
    {
        importer.PassOver(path, reason);
    }
}

} // namespace zeb::tools
