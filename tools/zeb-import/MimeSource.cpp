#include "tools/zeb-import/MimeSource.h"

#include "tools/common/Failure.h"
#include "tools/zeb-import/MimeMessage.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace zeb::tools
{
namespace
{

GRef<GMimeStream> OpenFile(const std::string& file)
{
    StartMime();
    GError* error = nullptr;
    GRef<GMimeStream> stream(g_mime_stream_file_open(file.c_str(), "r", &error));
    if (!stream)
    {
        const std::string reason = error ? error->message : "it can not be opened";
        g_clear_error(&error);
        throw ToolError("'" + file + "' can not be read: " + reason);
    }
    return stream;
}

FolderPath Named(const std::string& name)
{
    FolderPath path;
    path.names.push_back(name);
    return path;
}

GRef<GMimeMessage> Parse(GMimeParser* parser)
{
    return GRef<GMimeMessage>(g_mime_parser_construct_message(parser, nullptr));
}

MessageContent ContentOf(const GRef<GMimeMessage>& message)
{
    if (!message)
        throw ToolError("it is no mail message");
    return ContentOfMime(message.get());
}

bool HasHeaders(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string line;
    if (!std::getline(stream, line))
        return false;
    const size_t colon = line.find(':');
    const std::string name = line.substr(0, colon);
    return colon != std::string::npos && colon > 0 &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) { return c > ' ' && c < 0x7F; });
}

MessageContent ParseEml(const std::string& file)
{
    if (!HasHeaders(file))
        throw ToolError("it is no mail message");
    const GRef<GMimeStream> stream = OpenFile(file);
    const GRef<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    return ContentOf(Parse(parser.get()));
}

} // namespace

MboxSource::MboxSource(const std::string& file)
    : m_file(file)
    , m_folder(Named(std::filesystem::path(file).stem().string()))
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored))
        throw ToolError("'" + file + "' is no file");
    std::ifstream stream(file, std::ios::binary);
    char begin[5] = {};
    stream.read(begin, sizeof begin);
    if (!stream || std::memcmp(begin, "From ", sizeof begin) != 0)
        throw ToolError("'" + file + "' is no mbox file: it does not begin with \"From \"");
}

void MboxSource::Run(Importer& importer)
{
    importer.AddFolder(m_folder, {});
    const GRef<GMimeStream> stream = OpenFile(m_file);
    const GRef<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    g_mime_parser_set_format(parser.get(), GMIME_FORMAT_MBOX);
    for (uint64_t number = 1; !g_mime_parser_eos(parser.get()); ++number)
    {
        const gint64 before = g_mime_parser_tell(parser.get());
        const GRef<GMimeMessage> message = Parse(parser.get());
        // Blank lines behind the last message are no message; and a parser that does not move would never end.
        if (!message && (g_mime_parser_eos(parser.get()) || g_mime_parser_tell(parser.get()) == before))
            break;
        importer.AddMessage(m_folder, false, m_file + ", message " + std::to_string(number),
                            [&] { return ContentOf(message); });
    }
}

EmlSource::EmlSource(const std::string& folder)
{
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored))
        throw ToolError("'" + folder + "' is no folder");
    // "mail/." and "mail/" are the folder "mail".
    const std::filesystem::path whole = std::filesystem::absolute(folder).lexically_normal();
    Walk(folder, Named((whole.has_filename() ? whole : whole.parent_path()).filename().string()));
}

void EmlSource::Walk(const std::string& directory, const FolderPath& path)
{
    std::error_code failure;
    std::vector<std::filesystem::path> folders, files;
    for (std::filesystem::directory_iterator entry(directory, failure), end; !failure && entry != end;
         entry.increment(failure))
    {
        if (entry->is_directory(failure) && !entry->is_symlink(failure))
            folders.push_back(entry->path());
        else if (entry->path().extension() == ".eml")
            files.push_back(entry->path());
    }
    if (failure)
        throw ToolError("'" + directory + "' can not be read: " + failure.message());
    std::sort(folders.begin(), folders.end());
    std::sort(files.begin(), files.end());
    Folder folder{path, {}};
    for (const auto& file : files)
        folder.files.push_back(file.string());
    m_count += files.size();
    m_folders.push_back(std::move(folder));
    for (const auto& below : folders)
        Walk(below.string(), path.Below(below.filename().string()));
}

std::vector<FolderPath> EmlSource::Folders()
{
    std::vector<FolderPath> paths;
    for (const Folder& folder : m_folders)
        paths.push_back(folder.path);
    return paths;
}

void EmlSource::Run(Importer& importer)
{
    for (const Folder& folder : m_folders)
    {
        importer.AddFolder(folder.path, {});
        for (const std::string& file : folder.files)
            importer.AddMessage(folder.path, false, file, [&] { return ParseEml(file); });
    }
}

} // namespace zeb::tools
