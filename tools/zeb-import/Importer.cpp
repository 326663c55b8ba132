#include "tools/zeb-import/Importer.h"

#include "platform/interrupt.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb-import/MessageKey.h"

#include <algorithm>
#include <tuple>

namespace zeb::tools
{
namespace
{

void HeedInterrupt()
{
    if (platform::Interrupted())
    {
        throw Interruption();
    }
}

bool SamePath(const FolderPath& a, const FolderPath& b)
{
    return a.fromRoot == b.fromRoot && a.names == b.names;
}

/// Properties of the source store's view of the object, not of the object itself: the new store computes and reports
/// them.
bool IsAnsweredByStore(const Refusal& refusal)
{
    return refusal.code == MAPI_E_COMPUTED || refusal.code == MAPI_E_NO_ACCESS;
}

bool IsBefore(const FILETIME& time, const FILETIME& other)
{
    return std::tie(time.dwHighDateTime, time.dwLowDateTime) < std::tie(other.dwHighDateTime, other.dwLowDateTime);
}

void ReadToEnd(const Properties& properties)
{
    std::vector<char> piece(64 * 1024);
    for (const Property& property : properties)
    {
        while (property.source && property.source->Read(piece.data(), piece.size()) != 0)
        {
        }
    }
}

/// Reads what a message leaves to its sources, so that a dry run finds the same damage as an import.
void ReadToEnd(const MessageContent& content)
{
    ReadToEnd(content.properties);
    for (const AttachmentContent& attachment : content.attachments)
    {
        ReadToEnd(attachment.properties);
        if (attachment.message)
        {
            ReadToEnd(*attachment.message);
        }
    }
}

} // namespace

Importer::Importer(HostSession& session, const ImportChoice& choice, std::vector<FolderPath> inbox, uint64_t messages)
    : m_choice(choice)
    , m_store(session.OpenStore())
    , m_tree(m_store)
    , m_duplicates(m_tree)
    , m_inbox(std::move(inbox))
    , m_progress("messages", messages, false, std::chrono::minutes(1))
{
    CZebFolder folder = m_store.OpenInboxFolder(choice.dryRun ? 0 : MAPI_BEST_ACCESS);
    m_inboxTarget.names.push_back(TextOf(folder, PR_DISPLAY_NAME_W));
}

FolderPath Importer::TargetOf(const FolderPath& source) const
{
    // The nearest ancestor (or the folder itself) that becomes the inbox decides.
    for (FolderPath above = source;; above.names.pop_back())
    {
        const bool isInbox =
            std::any_of(m_inbox.begin(), m_inbox.end(), [&](const FolderPath& path) { return SamePath(path, above); });
        if (isInbox)
        {
            FolderPath target = m_inboxTarget;
            target.names.insert(target.names.end(), source.names.begin() + static_cast<long>(above.names.size()),
                                source.names.end());
            return target;
        }
        if (above.names.empty())
        {
            return source;
        }
    }
}

FilledFolder& Importer::FilledAt(const FolderPath& target)
{
    const std::string path = target.Text();
    const auto [entry, isNew] = m_filledByPath.emplace(path, m_filled.size());
    if (isNew)
    {
        m_filled.push_back({path, 0});
    }
    return m_filled[entry->second];
}

void Importer::WriteFolder(const FolderPath& source, const FolderPath& target, Properties properties)
{
    CZebFolder& folder = m_tree.Open(target);
    // The folder already has its name: the file's name, or the store's name for its inbox and its top folder.
    properties.erase(std::remove_if(properties.begin(), properties.end(), [](const Property& property)
    { return !property.name && PROP_ID(property.tag) == PROP_ID(PR_DISPLAY_NAME); }),
                     properties.end());
    // When several folders are merged, the first one's properties win.
    if (!properties.empty() && m_described.insert(target.Text()).second)
    {
        ReportRefusals(source.Text(), WriteProperties(folder, properties, m_names));
        folder.SaveChanges(KEEP_OPEN_READWRITE);
    }
}

void Importer::AddFolder(const FolderPath& source, Properties properties)
{
    HeedInterrupt();
    try
    {
        const FolderPath target = TargetOf(source);
        if (!m_choice.dryRun)
        {
            WriteFolder(source, target, std::move(properties));
        }
        FilledAt(target);
        ++m_folders;
    }
    catch (...)
    {
        Skip(source.Text(), CurrentFailure());
    }
    m_tree.Keep();
}

bool Importer::IsLeftOut(const MessageContent& content, const FolderPath& target, bool associated)
{
    const std::optional<FILETIME> date = m_choice.since ? DateOf(content.properties) : std::nullopt;
    if (date && IsBefore(*date, *m_choice.since))
    {
        ++m_counts.older;
        return true;
    }
    if (m_choice.skipDuplicates && m_duplicates.Has(content, target, associated))
    {
        ++m_counts.duplicates;
        return true;
    }
    return false;
}

void Importer::Write(const FolderPath& target, bool associated, const std::string& item, MessageContent& content)
{
    if (m_choice.dryRun)
    {
        return ReadToEnd(content);
    }
    CZebMessage message = m_tree.Open(target).CreateMessage(associated ? MAPI_ASSOCIATED : 0);
    ReportRefusals(item, WriteMessage(message, content, m_names));
    message.SaveChanges(KEEP_OPEN_READWRITE);
}

void Importer::AddMessage(const FolderPath& source, bool associated, const std::string& item,
                          const std::function<MessageContent(Notes& notes)>& read)
{
    HeedInterrupt();
    ++m_counts.read;
    try
    {
        Notes notes;
        MessageContent content = read(notes);
        const FolderPath target = TargetOf(source);
        if (!IsLeftOut(content, target, associated))
        {
            const std::string key = m_choice.skipDuplicates ? KeyOf(content) : std::string();
            Write(target, associated, item, content);
            m_duplicates.Add(key);
            ++m_counts.imported;
            ++FilledAt(target).messages;
            ReportNotes(item, notes);
        }
    }
    catch (...)
    {
        ++m_counts.damaged;
        Skip(item, CurrentFailure());
    }
    m_tree.Keep();
    m_progress.Step(m_counts.read);
}

void Importer::ReportRefusals(const std::string& item, const std::vector<Refusal>& refusals)
{
    for (const Refusal& refusal : refusals)
    {
        if (IsAnsweredByStore(refusal))
        {
            continue;
        }
        const char* name = Zeb_NameFromValue("MAPIErrors", static_cast<ULONG>(refusal.code), nullptr);
        Skip(item, "the store refused " + refusal.property + (name != nullptr ? " (" + std::string(name) + ")" : ""));
    }
}

void Importer::ReportNotes(const std::string& item, const Notes& notes)
{
    if (notes.Texts().empty())
    {
        return;
    }
    ++m_repaired;
    std::string all;
    for (const std::string& text : notes.Texts())
    {
        all += (all.empty() ? "" : "; ") + text;
    }
    Report(item, "repaired: " + all);
}

void Importer::Skip(const std::string& item, const std::string& reason)
{
    ++m_skipped;
    Report(item, "skipped: " + reason);
}

void Importer::PassOver(const std::string& item, const std::string& reason)
{
    ++m_passedOver;
    Report(item, "ignored: " + reason);
}

void Importer::Report(const std::string& item, const std::string& what)
{
    m_progress.Clear();
    Complain("zeb-import", OneLine(item) + ": " + OneLine(what));
}

} // namespace zeb::tools
