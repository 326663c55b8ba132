// zeb load
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/Progress.h"
#include "tools/common/PropertyChange.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/LoadAddress.h"
#include "tools/zeb/LoadFormat.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

namespace zeb::tools
{
namespace
{

struct Options
{
    std::string profile;
    std::string file;
};

/// A .jsonl file, read line by line.
class LineReader
{
public:
    explicit LineReader(const std::string& file)
        : m_stream(file, std::ios::binary)
    {
        std::error_code ignored;
        const std::string named = "'" + Utf8FromNarrow(file) + "' ";
        if (!std::filesystem::exists(file, ignored))
            throw ToolError(named + "is not there");
        if (std::filesystem::is_directory(file, ignored))
            throw ToolError(named + "is a folder");
        if (!m_stream)
            throw ToolError(named + "can not be read");
        const auto size = std::filesystem::file_size(file, ignored);
        m_size = ignored ? 0 : size;
    }

    /// The next line that is not blank. @return false at the end.
    bool Next(std::string& line)
    {
        while (std::getline(m_stream, line))
        {
            m_read += line.size() + 1;
            if (++m_number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
                line.erase(0, 3);
            if (line.find_first_not_of(" \t\r") != std::string::npos)
                return true;
        }
        if (m_stream.bad())
            throw ToolError("reading failed");
        return false;
    }

    uint64_t Size() const { return m_size; }
    uint64_t Read() const { return m_read; }
    uint64_t Number() const { return m_number; }

private:
    std::ifstream m_stream;
    uint64_t m_size = 0, m_read = 0, m_number = 0;
};

/// Writes the line's message, or changes its folder. Either all of it is in the store afterwards, or, with an exception, nothing.
void WriteLine(LoadLine& line, FolderTree& folders, NameResolver& names)
{
    try
    {
        CZebFolder& folder = folders.Open(line.folder);
        if (line.isFolder)
        {
            ChangeProperties(folder, line.message.properties, names);
            folders.Keep();
            return;
        }
        const CComPtr<IMessage> message = CreateMessage(folder, line.associated);
        RefuseProblems(WriteMessage(message.Get(), line.message, names));
        Save(message.Get());
        folders.Keep();
    }
    catch (...)
    {
        const std::string failure = CurrentFailure();
        folders.UndoCreated();
        throw ToolError(failure);
    }
}

struct Counts
{
    unsigned long long messages = 0, folders = 0, addresses = 0;
};

void PrintCount(unsigned long long count, const char* one, const char* more)
{
    if (count > 0)
        Print(Grouped(count) + " " + (count == 1 ? one : more) + " loaded\n");
}

void PrintCounts(const Counts& counts)
{
    if (counts.messages + counts.folders + counts.addresses == 0)
        Print("0 messages loaded\n");
    PrintCount(counts.messages, "message", "messages");
    PrintCount(counts.folders, "folder", "folders");
    PrintCount(counts.addresses, "address book entry", "address book entries");
}

int Run(const Options& options)
{
    LineReader reader(options.file);
    HostSession session(options.profile);
    CZebMsgStore store = session.OpenStore();
    FolderTree folders(store);
    std::optional<AddressWriter> addresses;
    NameResolver names;
    Counts counts;
    {
        Progress progress("lines", reader.Size());
        std::string text;
        try
        {
            while (reader.Next(text))
            {
                LoadLine line = ParseLoadLine(text);
                if (line.address)
                {
                    if (!addresses)
                        addresses.emplace(session.Session());
                    RefuseProblems(addresses->Write(*line.address, names));
                    ++counts.addresses;
                }
                else
                {
                    WriteLine(line, folders, names);
                    ++(line.isFolder ? counts.folders : counts.messages);
                }
                progress.Step(reader.Read());
            }
        }
        catch (...)
        {
            progress.Clear();
            FailWhile(Utf8FromNarrow(options.file) + ":" + std::to_string(reader.Number()));
        }
    }
    PrintCounts(counts);
    return ExitDone;
}

} // namespace

void AddLoad(CLI::App& app, Action& action)
{
    auto options = std::make_shared<Options>();
    CLI::App* command =
        app.add_subcommand("load", "Loads messages and address book entries from a .jsonl file, one a line");
    AddProfileOption(*command, options->profile);
    command->add_option("file", options->file, "The file")->required()->type_name("FILE.jsonl");
    command->callback([options, &action] { action = [options] { return Run(*options); }; });
}

} // namespace zeb::tools
