// zeb export
#include "platform/compoundfile.h"
#include "platform/console.h"
#include "platform/interrupt.h"
#include "platform/tags.h"
#include "tools/common/Failure.h"
#include "tools/common/FileName.h"
#include "tools/common/FolderName.h"
#include "tools/common/Lister.h"
#include "tools/common/MailProperties.h"
#include "tools/common/MsgWriter.h"
#include "tools/common/Output.h"
#include "tools/common/OutputFile.h"
#include "tools/common/Progress.h"
#include "tools/common/PropertyReader.h"
#include "tools/common/ReadableMessage.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Csv.h"
#include "tools/zeb/MimeWriter.h"
#include "tools/zeb/Objects.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace zeb::tools
{
namespace
{

struct ExportOptions
{
    std::string profile;
    std::string format;
    std::string folder;
    std::vector<std::string> messages;
    std::string output; ///< path, UTF-8; empty: standard output
};

/// A message to be exported.
struct ExportedMessage
{
    CZebBinary entryId;
    std::string name;    ///< as shown in messages
    uint64_t number = 0; ///< position among the exported ones, from 1
};

/// Writes messages in one format.
class Format
{
public:
    virtual ~Format() = default;
    virtual void Begin() {}
    /// @return false when something of the message was left out and said
    virtual bool Add(CZebMessage& message, const ExportedMessage& exported) = 0;
    virtual void End() {}
};

std::string HexOf(const CZebBinary& entryId)
{
    return entryId.IsValid() ? static_cast<const char*>(entryId.String()) : "";
}

void Note(Progress& progress, const ExportedMessage& exported, const std::string& what)
{
    progress.Clear();
    Complain("zeb", exported.name + ": " + what);
}

/// What all forms of mail need: the complete message, and notes about what they cannot hold.
class MailFormat : public Format
{
public:
    explicit MailFormat(Progress& progress)
        : m_progress(progress)
        , m_reader(ReadWhat::Values)
    {
    }

protected:
    MessageContent Read(CZebMessage& message, const ExportedMessage& exported)
    {
        MessageContent content = m_reader.ReadMessage(message);
        m_isWhole = true;
        for (const Unread& each : m_reader.TakeUnread())
        {
            Leave(exported, PropertyText(each.tag) + " is left out: " + each.reason);
        }
        return content;
    }

    void Write(const MessageContent& content, const ExportedMessage& exported, const MailSink& sink)
    {
        for (const std::string& what : WriteMail(content, sink))
        {
            Leave(exported, what);
        }
    }

    bool IsWhole() const { return m_isWhole; }

    void Leave(const ExportedMessage& exported, const std::string& what)
    {
        Note(m_progress, exported, what);
        m_isWhole = false;
    }

private:
    Progress& m_progress;
    PropertyReader m_reader;
    bool m_isWhole = true;
};

/// A file's name in a directory of exported messages: the number, which keeps their order, and the subject.
std::string NumberedName(const MessageContent& content, const ExportedMessage& exported, size_t digits,
                         const std::string& extension)
{
    std::string number = std::to_string(exported.number);
    number.insert(0, digits - std::min(digits, number.size()), '0');
    return SafeFileName(number + " " + TextIn(content.properties, PR_SUBJECT_W) + extension, number + extension);
}

/// One file for each message, or one message on standard output.
class EmlFormat final : public MailFormat
{
public:
    /// @param digits of the number that each name begins with
    EmlFormat(Progress& progress, std::string directory, size_t digits)
        : MailFormat(progress)
        , m_directory(std::move(directory))
        , m_digits(digits)
    {
    }

    void Begin() override
    {
        if (!m_directory.empty())
        {
            MakeDirectory(m_directory);
        }
    }

    bool Add(CZebMessage& message, const ExportedMessage& exported) override
    {
        const MessageContent content = Read(message, exported);
        OutputFile file(m_directory.empty() ? ""
                                            : FreeFile(m_directory, NumberedName(content, exported, m_digits, ".eml")));
        Write(content, exported, [&](const std::string& piece) { file.Write(piece); });
        file.Finish();
        return IsWhole();
    }

private:
    const std::string m_directory;
    const size_t m_digits;
};

/// One .msg file for each message, with every property.
class MsgFormat final : public MailFormat
{
public:
    /// @param output the directory, or the file for a single message @param digits of the number that each name in a
    /// directory begins with
    MsgFormat(Progress& progress, std::string output, bool isDirectory, size_t digits)
        : MailFormat(progress)
        , m_output(std::move(output))
        , m_isDirectory(isDirectory)
        , m_digits(digits)
    {
    }

    void Begin() override
    {
        if (m_isDirectory)
        {
            MakeDirectory(m_output);
        }
    }

    bool Add(CZebMessage& message, const ExportedMessage& exported) override
    {
        const MessageContent content = Read(message, exported);
        FileReplacement file(m_isDirectory ? FreeFile(m_output, NumberedName(content, exported, m_digits, ".msg"))
                                           : m_output);
        for (const std::string& what : Written(content, file))
        {
            Leave(exported, what);
        }
        file.Finish();
        return IsWhole();
    }

private:
    static std::vector<std::string> Written(const MessageContent& content, const FileReplacement& file)
    {
        try
        {
            return WriteMsg(content, file.Partial());
        }
        catch (const platform::CompoundError& error)
        {
            file.Fail(error.what());
        }
    }

    const std::string m_output;
    const bool m_isDirectory;
    const size_t m_digits;
};

/// All messages in one file with the lines of Unix.
class MboxFormat final : public MailFormat
{
public:
    MboxFormat(Progress& progress, OutputFile& out)
        : MailFormat(progress)
        , m_out(out)
    {
    }

    bool Add(CZebMessage& message, const ExportedMessage& exported) override
    {
        const MessageContent content = Read(message, exported);
        m_out.Write(MboxLine(content) + "\n" + StateOf(content.properties));
        Write(content, exported, [&](const std::string& piece)
        {
            std::string lines = piece;
            lines.erase(std::remove(lines.begin(), lines.end(), '\r'), lines.end());
            m_out.Write(lines);
        });
        m_out.Write("\n\n");
        return IsWhole();
    }

private:
    /// The headers in which mail programs keep what the user did with a message.
    static std::string StateOf(const Properties& properties)
    {
        const LONG flags = LongIn(properties, PR_MESSAGE_FLAGS, 0), verb = LongIn(properties, PR_LAST_VERB_EXECUTED, 0);
        const std::string other = std::string(verb == VerbReply || verb == VerbReplyToAll ? "A" : "") +
                                  (LongIn(properties, PR_FLAG_STATUS, 0) == FlagMarked ? "F" : "") +
                                  ((flags & MSGFLAG_UNSENT) != 0 ? "T" : "");
        return std::string("Status: ") + ((flags & MSGFLAG_READ) != 0 ? "RO" : "O") + "\n" +
               (other.empty() ? "" : "X-Status: " + other + "\n");
    }

    OutputFile& m_out;
};

/// A table of the messages without their text.
class CsvFormat final : public Format
{
public:
    explicit CsvFormat(OutputFile& out)
        : m_out(out)
    {
    }

    void Begin() override
    {
        m_out.Write(CsvRow({"number", "date", "from", "from address", "to", "cc", "subject", "size", "unread",
                            "attachments", "class", "entry id"}));
    }

    bool Add(CZebMessage& message, const ExportedMessage& exported) override
    {
        const ReadableMessage read = ReadText(message, BodyKind::None);
        CZebPropValArray values;
        message.GetProps(values, 2, PR_MESSAGE_SIZE, PR_MESSAGE_FLAGS);
        const auto number = [&](ULONG tag) { return values.hasRealValue(tag) ? static_cast<LONG>(values[tag]) : 0; };
        m_out.Write(CsvRow(
            {std::to_string(exported.number), read.hasDate ? TimeForMachines(read.date) : "", read.from.name,
             read.from.address, TextOf(read.to), TextOf(read.cc), read.subject, std::to_string(number(PR_MESSAGE_SIZE)),
             (number(PR_MESSAGE_FLAGS) & MSGFLAG_READ) != 0 ? "no" : "yes", std::to_string(read.attachments.size()),
             TextOf(message, PR_MESSAGE_CLASS_W), HexOf(exported.entryId)}));
        return true;
    }

private:
    OutputFile& m_out;
};

/// Everything that people read of the messages.
class JsonFormat final : public Format
{
public:
    explicit JsonFormat(OutputFile& out)
        : m_out(out)
    {
    }

    void Begin() override { m_out.Write("{\n  \"version\": " + std::to_string(JsonVersion) + ",\n  \"messages\": ["); }

    bool Add(CZebMessage& message, const ExportedMessage& exported) override
    {
        Json object = {{"number", exported.number}, {"entryId", HexOf(exported.entryId)}};
        object.update(JsonOf(ReadText(message, BodyKind::Plain)));
        m_out.Write(std::string(m_isFirst ? "" : ",") + "\n    " + JsonText(object));
        m_isFirst = false;
        return true;
    }

    void End() override { m_out.Write(m_isFirst ? "]\n}\n" : "\n  ]\n}\n"); }

private:
    OutputFile& m_out;
    bool m_isFirst = true;
};

/// The messages of a command line, or all of a folder.
class Selection
{
public:
    Selection(Mailbox& mailbox, const ExportOptions& options)
    {
        if (options.messages.empty() && options.folder != InputMark)
        {
            CZebFolder folder = mailbox.OpenFolder(options.folder);
            m_path = mailbox.PathOf(folder);
            m_table = folder.GetContentsTable(MAPI_UNICODE);
            m_count = m_table->GetRowCount();
            return;
        }
        std::vector<std::string> arguments = {options.folder};
        arguments.insert(arguments.end(), options.messages.begin(), options.messages.end());
        m_messages = AllOf(mailbox.FindMessages(arguments));
        m_count = m_messages.size();
    }

    uint64_t Count() const { return m_count; }

    void ForEach(const std::function<void(const ExportedMessage&)>& take)
    {
        ExportedMessage message;
        for (const FoundMessage& found : m_messages)
        {
            message.entryId = found.entryId;
            message.name = found.name;
            ++message.number;
            take(message);
        }
        if (!m_table)
        {
            return;
        }
        for (const CZebRow row : m_table->Rows({PR_ENTRYID, PR_SUBJECT_W}))
        {
            message.entryId = static_cast<const SBinary&>(row[PR_ENTRYID]);
            ++message.number;
            message.name = NumberedMessage(std::to_string(message.number), row, m_path);
            take(message);
        }
    }

private:
    FolderPath m_path;
    std::optional<CZebTable> m_table; ///< of all messages, when none is named
    std::vector<FoundMessage> m_messages;
    uint64_t m_count = 0;
};

/// Whether a format writes a file for each message.
bool HasFileForEach(const std::string& format)
{
    return format == "eml" || format == "msg";
}

/// Whether the output of a .msg export is a file: one message, and a name that says so.
bool IsMsgFile(const std::string& output, uint64_t count)
{
    constexpr const char* Extension = ".msg";
    std::error_code ignored;
    const auto path = std::filesystem::u8path(output);
    return count == 1 && path.extension().u8string() == Extension && !std::filesystem::is_directory(path, ignored);
}

std::unique_ptr<Format> FormatOf(const ExportOptions& options, OutputFile& out, Progress& progress, uint64_t count)
{
    if (options.format == "eml")
    {
        return std::make_unique<EmlFormat>(progress, options.output, std::to_string(count).size());
    }
    if (options.format == "msg")
    {
        return std::make_unique<MsgFormat>(progress, options.output, !IsMsgFile(options.output, count),
                                           std::to_string(count).size());
    }
    if (options.format == "mbox")
    {
        return std::make_unique<MboxFormat>(progress, out);
    }
    if (options.format == "csv")
    {
        return std::make_unique<CsvFormat>(out);
    }
    return std::make_unique<JsonFormat>(out);
}

int Run(const ExportOptions& options)
{
    platform::CatchInterrupt();
    Mailbox mailbox(options.profile);
    Selection selection(mailbox, options);
    const bool isFiles = HasFileForEach(options.format);
    if (isFiles && options.output.empty() && (selection.Count() != 1 || options.format == "msg"))
    {
        throw UsageError(Counted(selection.Count(), "message", "messages") + " as files: give --output DIR");
    }
    uint64_t count = 0;
    bool isWhole = true;
    {
        // No progress when the messages themselves go to the terminal.
        const bool quiet = options.output.empty() && platform::IsTerminal(platform::OutputStream::Output);
        Progress progress("messages", selection.Count(), quiet);
        OutputFile out(isFiles ? "" : options.output);
        const std::unique_ptr<Format> format = FormatOf(options, out, progress, selection.Count());
        format->Begin();
        selection.ForEach([&](const ExportedMessage& exported)
        {
            if (platform::Interrupted())
            {
                throw ToolError("interrupted");
            }
            CZebMessage message;
            if (OpenExisting(mailbox.Store(), exported.entryId, message, 0))
            {
                isWhole = format->Add(message, exported) && isWhole;
                progress.Step(++count);
            }
        });
        format->End();
        out.Finish();
    }
    if (!options.output.empty())
    {
        Print(Counted(count, "message", "messages") + " exported\n");
    }
    return isWhole ? ExitDone : ExitSkipped;
}

} // namespace

void AddExport(Command app)
{
    auto options = std::make_shared<ExportOptions>();
    Command command = app.AddCommand("export", "Exports messages of a folder for other programs");
    AddProfileOption(command, options->profile);
    command
        .AddOption(
            "format", options->format,
            "eml or msg (a file for each), mbox (one file), csv (a table without the texts), json (with the texts)")
        .Required()
        .OneOf({"eml", "msg", "mbox", "csv", "json"});
    AddFolderArgument(command, options->folder);
    command
        .AddOption(
            "messages", options->messages,
            "Messages of that folder: numbers and ranges (1-3,7,12-), subjects or entry identifiers; without them all")
        .Expect(0, 10000)
        .Type("MESSAGE...");
    command
        .AddOption("-o,--output", options->output,
                   "The file to write, or for eml and msg the directory (for one message also a .msg file); without it "
                   "standard output, but for msg")
        .Type("FILE|DIR");
    command.Footer(
        "- in place of the folder: the messages whose entry identifiers are on standard input ('zeb find --ids'). "
        "Exit code 3: exported except for what the format cannot hold, which is listed.");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
