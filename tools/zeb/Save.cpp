// zeb save
#include "platform/console.h"
#include "platform/interrupt.h"
#include "tools/common/Failure.h"
#include "tools/common/FolderName.h"
#include "tools/common/Output.h"
#include "tools/common/OutputFile.h"
#include "tools/common/Progress.h"
#include "tools/common/PropertyReader.h"
#include "tools/zeb/Command.h"
#include "tools/zeb/Objects.h"
#include "tools/zeb/SaveFormat.h"

#include <memory>

namespace zeb::tools
{
namespace
{

struct SaveOptions
{
    std::string profile;
    std::string folder;
    std::string file;
    bool onlyThis = false;
};

/// Saves a folder with its messages and subfolders.
class Saver
{
public:
    Saver(Mailbox& mailbox, OutputFile& out, bool subfolders, uint64_t messages, bool quiet)
        : m_mailbox(mailbox)
        , m_out(out)
        , m_subfolders(subfolders)
        , m_progress("messages", messages, quiet)
        , m_reader(ReadWhat::Values)
    {
    }

    void SaveFolder(CZebFolder& folder, const FolderPath& path)
    {
        Properties properties = m_reader.ReadObject(folder);
        Report(Named(path), properties);
        m_out.Write(FolderLine(path, properties));
        ++m_folders;
        // A search folder shows messages of other folders.
        if (!IsSearchFolder(folder))
        {
            SaveMessages(folder, path, true);
            SaveMessages(folder, path, false);
        }
        if (m_subfolders)
        {
            SaveSubfolders(folder, path);
        }
    }

    uint64_t Messages() const { return m_messages; }
    uint64_t Folders() const { return m_folders; }
    uint64_t Skipped() const { return m_skipped; }

private:
    static bool IsSearchFolder(CZebFolder& folder)
    {
        CZebPropValArray values;
        folder.GetProps(values, 1, PR_FOLDER_TYPE);
        return values.hasRealValue(PR_FOLDER_TYPE) && static_cast<LONG>(values[PR_FOLDER_TYPE]) == FOLDER_SEARCH;
    }

    void SaveSubfolders(CZebFolder& folder, const FolderPath& path)
    {
        ForEachSubfolder(folder, [&](CZebFolder& child, const std::string& name)
        { SaveFolder(child, m_mailbox.IsTop(child) ? FolderPath() : path.Below(name)); });
    }

    void SaveMessages(CZebFolder& folder, const FolderPath& path, bool associated)
    {
        CZebTable table = folder.GetContentsTable(MAPI_UNICODE | (associated ? MAPI_ASSOCIATED : 0));
        for (CZebRow row : table.Rows({PR_ENTRYID}))
        {
            SaveMessage(folder, path, associated, row[PR_ENTRYID]);
        }
    }

    void SaveMessage(CZebFolder& folder, const FolderPath& path, bool associated, const SBinary& entryId)
    {
        if (platform::Interrupted())
        {
            throw ToolError("interrupted");
        }
        CZebMessage message(nullptr);
        // One that was deleted since the table was read is no longer part of the folder.
        if (!OpenExisting(folder, entryId, message, MAPI_BEST_ACCESS))
        {
            return;
        }
        MessageContent content = m_reader.ReadMessage(message);
        Report("a message of " + Named(path), content);
        m_out.Write(MessageLine(path, associated, content));
        m_progress.Step(++m_messages);
    }

    /// Records the properties that a line cannot represent.
    static void NoteNameless(const Properties& properties, std::vector<Unread>& unread)
    {
        for (const Property& property : properties)
        {
            if (NameInFile(property).empty())
            {
                unread.push_back({property.tag, "it has the identifier of a named property, but no name"});
            }
        }
    }

    static void NoteNameless(const MessageContent& message, std::vector<Unread>& unread)
    {
        NoteNameless(message.properties, unread);
        for (const Properties& recipient : message.recipients)
        {
            NoteNameless(recipient, unread);
        }
        for (const AttachmentContent& attachment : message.attachments)
        {
            NoteNameless(attachment.properties, unread);
            if (attachment.message)
            {
                NoteNameless(*attachment.message, unread);
            }
        }
    }

    template <class Content>
    void Report(const std::string& where, const Content& content)
    {
        std::vector<Unread> unread = m_reader.TakeUnread();
        NoteNameless(content, unread);
        for (const Unread& each : unread)
        {
            char tag[16];
            std::snprintf(tag, sizeof tag, "0x%08X", static_cast<unsigned>(each.tag));
            m_progress.Clear();
            Complain("zeb", where + ": property " + tag + " is omitted: " + each.reason);
            ++m_skipped;
        }
    }

    Mailbox& m_mailbox;
    OutputFile& m_out;
    const bool m_subfolders;
    Progress m_progress;
    PropertyReader m_reader;
    uint64_t m_messages = 0, m_folders = 0, m_skipped = 0;
};

/// The number of messages in a folder and, with `subfolders`, below it.
uint64_t CountMessages(CZebFolder& folder, bool subfolders)
{
    CZebPropValArray values;
    folder.GetProps(values, 2, PR_CONTENT_COUNT, PR_ASSOC_CONTENT_COUNT);
    uint64_t count = 0;
    for (const ULONG tag : {PR_CONTENT_COUNT, PR_ASSOC_CONTENT_COUNT})
    {
        if (values.hasRealValue(tag))
        {
            count += static_cast<ULONG>(values[tag]);
        }
    }
    if (!subfolders)
    {
        return count;
    }
    CZebTable table = folder.GetHierarchyTable(CONVENIENT_DEPTH);
    for (CZebRow row : table.Rows({PR_CONTENT_COUNT, PR_ASSOC_CONTENT_COUNT}))
    {
        for (const ULONG tag : {PR_CONTENT_COUNT, PR_ASSOC_CONTENT_COUNT})
        {
            if (row.hasRealValue(tag))
            {
                count += static_cast<ULONG>(row[tag]);
            }
        }
    }
    return count;
}

int Run(const SaveOptions& options)
{
    platform::CatchInterrupt();
    Mailbox mailbox(options.profile);
    CZebFolder folder = mailbox.OpenFolder(options.folder);
    const FolderPath path = mailbox.PathOf(folder);
    OutputFile out(options.file);
    // No progress when the lines themselves go to the terminal.
    const bool quiet = options.file.empty() && platform::IsTerminal(platform::OutputStream::Output);
    uint64_t messages = 0, folders = 0, skipped = 0;
    {
        Saver saver(mailbox, out, !options.onlyThis, CountMessages(folder, !options.onlyThis), quiet);
        saver.SaveFolder(folder, path);
        messages = saver.Messages();
        folders = saver.Folders();
        skipped = saver.Skipped();
    }
    out.Finish();
    if (!options.file.empty())
    {
        Print(Grouped(messages) + (messages == 1 ? " message in " : " messages in ") + Grouped(folders) +
              (folders == 1 ? " folder saved\n" : " folders saved\n"));
    }
    return skipped == 0 ? ExitDone : ExitSkipped;
}

} // namespace

void AddSave(Command app)
{
    auto options = std::make_shared<SaveOptions>();
    Command command =
        app.AddCommand("save", "Saves a folder with its messages and subfolders as lines that 'zeb load' reads");
    AddProfileOption(command, options->profile);
    AddFolderArgument(command, options->folder);
    command
        .AddOption("-o,--output", options->file,
                   "The file to write; without it standard output. The file appears when everything is written")
        .Type("FILE.jsonl");
    command.AddFlag("--this-only", options->onlyThis, "Omit the subfolders");
    command.Footer("Exit code 3: saved except for properties that a file cannot represent, which are listed.");
    command.Runs([options] { return Run(*options); });
}

} // namespace zeb::tools
