// zeb load
#include "platform/interrupt.h"
#include "tools/common/Failure.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/Progress.h"
#include "tools/common/PropertyChange.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/LoadAddress.h"
#include "tools/zeb/LoadFormat.h"
#include "tools/zeb/Objects.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

namespace zeb::tools
{
namespace
{

struct LoadOptions
{
    std::string profile;
    std::string file;
    uint64_t fromLine = 1;
};

/// A .jsonl file, or standard input, read line by line.
class LineReader
{
public:
    explicit LineReader(const std::string& file)
        : m_stream(file == InputMark ? std::cin : m_file)
    {
        if (file == InputMark)
        {
            return;
        }
        m_file.open(std::filesystem::u8path(file), std::ios::binary);
        const std::filesystem::path path = std::filesystem::u8path(file);
        std::error_code ignored;
        const std::string named = "'" + ValidUtf8(file) + "' ";
        if (!std::filesystem::exists(path, ignored))
        {
            throw ToolError(named + "does not exist");
        }
        if (std::filesystem::is_directory(path, ignored))
        {
            throw ToolError(named + "is a folder");
        }
        if (!m_file.is_open())
        {
            throw ToolError(named + "cannot be read");
        }
        const auto size = std::filesystem::file_size(path, ignored);
        m_size = ignored ? 0 : size;
    }

    /// The next line that is not blank. @return false at the end. @throws ToolError; Number then returns the line that
    /// cannot be read
    bool Next(std::string& line)
    {
        while (std::getline(m_stream, line))
        {
            m_read += line.size() + 1;
            if (++m_number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
            {
                line.erase(0, 3);
            }
            if (line.find_first_not_of(" \t\r") != std::string::npos)
            {
                return true;
            }
        }
        if (m_stream.bad())
        {
            ++m_number;
            throw ToolError("reading failed");
        }
        return false;
    }

    uint64_t Size() const { return m_size; }
    uint64_t Read() const { return m_read; }
    uint64_t Number() const { return m_number; }

private:
    std::ifstream m_file;
    std::istream& m_stream;
    uint64_t m_size = 0, m_read = 0, m_number = 0;
};

/// Writes the line's message, or changes its folder. Atomic: an exception leaves the store unchanged.
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
        CZebMessage message = folder.CreateMessage(line.associated ? MAPI_ASSOCIATED : 0);
        RefuseProblems(WriteMessage(message, line.message, names));
        message.SaveChanges(KEEP_OPEN_READWRITE);
        folders.Keep();
    }
    catch (...)
    {
        const ToolError failure = CurrentError();
        folders.UndoCreated();
        throw failure;
    }
}

struct Counts
{
    unsigned long long messages = 0, folders = 0, addresses = 0;
};

void PrintCount(unsigned long long count, const char* one, const char* more)
{
    if (count > 0)
    {
        Print(Grouped(count) + " " + (count == 1 ? one : more) + " loaded\n");
    }
}

void PrintCounts(const Counts& counts)
{
    if (counts.messages + counts.folders + counts.addresses == 0)
    {
        Print("0 messages loaded\n");
    }
    PrintCount(counts.messages, "message", "messages");
    PrintCount(counts.folders, "folder", "folders");
    PrintCount(counts.addresses, "address book entry", "address book entries");
}

/// Loads lines into the store of a session.
class Loader
{
public:
    explicit Loader(HostSession& session)
        : m_session(session)
        , m_store(session.OpenStore())
        , m_folders(m_store)
    {
    }

    void Load(const std::string& text)
    {
        LoadLine line = ParseLoadLine(text);
        if (!line.address)
        {
            WriteLine(line, m_folders, m_names);
            ++(line.isFolder ? m_counts.folders : m_counts.messages);
            return;
        }
        if (!m_addresses)
        {
            m_addresses.emplace(m_session.Session());
        }
        RefuseProblems(m_addresses->Write(*line.address, m_names));
        ++m_counts.addresses;
    }

    const Counts& Loaded() const { return m_counts; }

private:
    HostSession& m_session;
    CZebMsgStore m_store;
    FolderTree m_folders;
    std::optional<AddressWriter> m_addresses;
    NameResolver m_names;
    Counts m_counts;
};

/// The text about the lines already loaded when loading stops before line `number`, and how to continue; empty when
/// none are loaded.
std::string WhatIsLoaded(const LoadOptions& options, uint64_t number)
{
    if (number <= options.fromLine)
    {
        return {};
    }
    const uint64_t count = number - options.fromLine;
    const std::string be = count == 1 ? " is" : " are";
    std::string lines;
    if (options.fromLine > 1)
    {
        lines = count == 1 ? "line " + Grouped(number - 1)
                           : "lines " + Grouped(options.fromLine) + " to " + Grouped(number - 1);
    }
    else
    {
        lines = count == 1 ? "the line before it" : "the " + Grouped(count) + " lines before it";
    }
    return "; " + lines + be + " loaded; --from-line " + std::to_string(number) + " continues";
}

void LoadLines(LineReader& reader, Loader& loader, const LoadOptions& options, Progress& progress)
{
    std::string text;
    while (reader.Next(text))
    {
        if (reader.Number() < options.fromLine)
        {
            continue;
        }
        if (platform::Interrupted())
        {
            throw ToolError("interrupted");
        }
        loader.Load(text);
        progress.Step(reader.Read());
    }
    if (options.fromLine > 1 && reader.Number() < options.fromLine)
    {
        throw ToolError("--from-line: the file has fewer lines");
    }
}

int Run(const LoadOptions& options)
{
    LineReader reader(options.file);
    platform::CatchInterrupt();
    HostSession session(options.profile);
    Counts counts;
    {
        Loader loader(session);
        Progress progress("lines", reader.Size());
        try
        {
            LoadLines(reader, loader, options, progress);
        }
        catch (...)
        {
            progress.Clear();
            const uint64_t number = std::max(reader.Number(), options.fromLine);
            throw CurrentError((options.file == InputMark ? "standard input" : ValidUtf8(options.file)) + ":" +
                                   std::to_string(number) + ": ",
                               WhatIsLoaded(options, number));
        }
        counts = loader.Loaded();
    }
    PrintCounts(counts);
    return ExitDone;
}

} // namespace

void AddLoad(Command app)
{
    auto options = std::make_shared<LoadOptions>();
    Command command =
        app.AddCommand("load", "Loads messages and address book entries from a .jsonl file, one per line");
    AddProfileOption(command, options->profile);
    command.AddOption("file", options->file, "The file to load; - reads standard input").Required().Type("FILE.jsonl");
    command.AddOption("--from-line", options->fromLine, "Begin at line N, to continue where a load stopped")
        .Type("N")
        .Between(uint64_t{1}, uint64_t{1'000'000'000'000});
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
