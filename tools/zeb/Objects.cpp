#include "tools/zeb/Objects.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb/NumberList.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <set>

namespace zeb::tools
{
namespace
{

/// Flags and provider UID: the start of every entry identifier.
constexpr size_t ShortestEntryId = 20;
constexpr size_t DeepestFolder = 1000;

bool IsHex(const std::string& text)
{
    return text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

bool IsNumber(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Prefix of a subject that looks like a number, an identifier or an assignment.
constexpr const char* SubjectMark = "subject:";

bool IsMarkedSubject(const std::string& text)
{
    return text.rfind(SubjectMark, 0) == 0;
}

/// A text quoted for a message.
std::string Quoted(const std::string& text)
{
    return "'" + Shortened(OneLine(ValidUtf8(text)), 60) + "'";
}

std::string MessageNamed(CZebPropObj& message)
{
    return "message " + Quoted(TextOf(message, PR_SUBJECT_W));
}

CZebBinary EntryIdAt(const CZebRowSet& rows, ULONG index)
{
    return CZebBinary(static_cast<const SBinary&>(rows[index][PR_ENTRYID]));
}

/// The arguments with the lines of standard input in place of each InputMark.
std::vector<std::string> WithInput(const std::vector<std::string>& arguments)
{
    std::vector<std::string> all;
    for (const std::string& argument : arguments)
    {
        if (argument != InputMark)
        {
            all.push_back(argument);
            continue;
        }
        for (std::string line; std::getline(std::cin, line);)
        {
            line.erase(line.find_last_not_of(" \t\r") + 1);
            if (!line.empty())
            {
                all.push_back(line);
            }
        }
    }
    return all;
}

} // namespace

std::string NumberedMessage(const std::string& number, const CZebRow& row, const FolderPath& path)
{
    return "message " + number + " (" + Quoted(TextOf(row, PR_SUBJECT_W)) + ") of " + Named(path);
}

bool LooksLikeEntryId(const std::string& text)
{
    return text.size() >= 2 * ShortestEntryId && IsHex(text);
}

std::string NamedEntryId(const std::string& hex)
{
    constexpr size_t Shown = 48;
    if (hex.size() <= Shown)
    {
        return "the entry identifier " + hex;
    }
    return "the entry identifier " + hex.substr(0, Shown - 12) + "..." + hex.substr(hex.size() - 9);
}

CZebBinary EntryIdFromText(const std::string& text)
{
    if (text.empty())
    {
        throw UsageError("the entry identifier is empty");
    }
    if (!IsHex(text))
    {
        throw UsageError("an entry identifier is hexadecimal text, not " + Quoted(text));
    }
    if (text.size() % 2 != 0)
    {
        throw UsageError("the entry identifier has " + Grouped(text.size()) +
                         " digits: it must have two for each byte");
    }
    return CZebBinary(text.c_str());
}

Mailbox::Mailbox(const std::string& profile)
    : m_session(profile)
    , m_store(m_session.OpenStore())
    , m_folders(m_store)
{
    try
    {
        m_top = m_store.GetSpecialFolderEntryID(PR_IPM_SUBTREE_ENTRYID);
    }
    catch (CZebException* exception)
    {
        exception->Delete();
    }
}

CZebFolder Mailbox::OpenFolder(const std::string& text)
{
    if (!LooksLikeEntryId(text))
    {
        return m_folders.Existing(FolderPath::Parse(ValidUtf8(text)));
    }
    CZebFolder folder(nullptr);
    const CZebBinary entryId = EntryIdFromText(text);
    try
    {
        m_store.OpenEntry(entryId, folder, MAPI_BEST_ACCESS);
    }
    catch (...)
    {
        FailWhile(NamedEntryId(text) + " as a folder");
    }
    return folder;
}

bool Mailbox::IsTop(CZebFolder& folder)
{
    return m_top.IsValid() && Session().CompareEntryIDs(folder.GetEntryID(), m_top);
}

FolderPath Mailbox::PathOf(CZebFolder& folder)
{
    FolderPath path;
    CZebFolder at = folder;
    for (size_t depth = 0; depth < DeepestFolder; ++depth)
    {
        if (IsTop(at))
        {
            break;
        }
        const CZebBinary parent = at.GetParentID();
        path.fromRoot = Session().CompareEntryIDs(at.GetEntryID(), parent);
        if (path.fromRoot)
        {
            break;
        }
        path.names.insert(path.names.begin(), TextOf(at, PR_DISPLAY_NAME_W));
        m_store.OpenEntry(parent, at, MAPI_BEST_ACCESS);
    }
    return path;
}

CZebPropObj Mailbox::OpenAny(const std::string& hex)
{
    const CZebBinary entryId = EntryIdFromText(hex);
    CZebPropObj object(nullptr);
    try
    {
        Session().OpenEntry(entryId, object, MAPI_BEST_ACCESS);
    }
    catch (...)
    {
        FailWhile(NamedEntryId(hex));
    }
    return object;
}

FoundMessage Mailbox::FindMessage(CZebFolder& folder, const FolderPath& path, const std::string& text, bool associated)
{
    if (LooksLikeEntryId(text))
    {
        CZebPropObj object = OpenAny(text);
        if (object.GetObjectType() != MAPI_MESSAGE ||
            !Session().CompareEntryIDs(object.GetParentID(), folder.GetEntryID()))
        {
            throw ToolError(NamedEntryId(text) + " names no message of " + Named(path));
        }
        return {EntryIdFromText(text), MessageNamed(object)};
    }
    CZebTable table = folder.GetContentsTable(MAPI_UNICODE | (associated ? MAPI_ASSOCIATED : 0));
    table.SetColumns(2, PR_ENTRYID, PR_SUBJECT_W);
    CZebRowSet rows;
    if (IsNumber(text))
    {
        const ULONG count = table.GetRowCount();
        const ULONG number = text.size() < 10 ? static_cast<ULONG>(std::stoul(text)) : 0;
        if (number == 0 || number > count)
        {
            throw ToolError("there is no message " + text + " in " + Named(path) + ": it has " +
                            Counted(count, "message", "messages") + "; write a subject of digits as " + SubjectMark +
                            text);
        }
        table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(number - 1), nullptr);
        table.QueryRows(&rows, 1, nullptr, nullptr);
        if (!rows.IsValid())
        {
            throw ToolError("message " + text + " of " + Named(path) + " no longer exists");
        }
        return {EntryIdAt(rows, 0), NumberedMessage(text, rows[0], path)};
    }
    const std::string subject = IsMarkedSubject(text) ? text.substr(std::strlen(SubjectMark)) : text;
    CZebRestrictionAllocator bySubject;
    bySubject.Allocate();
    bySubject.CreateProp(PR_SUBJECT_W, RELOP_EQ) = WideFromUtf8(subject);
    table.Restrict(bySubject, 0);
    const ULONG matches = table.GetRowCount();
    if (matches > 1)
    {
        throw ToolError(Grouped(matches) + " messages of " + Named(path) + " have the subject " + Quoted(subject) +
                        "; give the number that 'zeb find' shows");
    }
    table.QueryRows(&rows, 1, nullptr, nullptr);
    if (!rows.IsValid())
    {
        throw ToolError("there is no message with the subject " + Quoted(subject) + " in " + Named(path));
    }
    return {EntryIdAt(rows, 0), "message " + Quoted(subject) + " of " + Named(path)};
}

std::vector<FoundMessages> Mailbox::MessagesById(const std::vector<std::string>& identifiers)
{
    std::vector<FoundMessages> groups;
    std::vector<CZebBinary> parents;
    for (const std::string& hex : identifiers)
    {
        CZebPropObj object = OpenAny(hex);
        if (object.GetObjectType() != MAPI_MESSAGE)
        {
            throw ToolError(NamedEntryId(hex) + " names no message");
        }
        const CZebBinary parent = object.GetParentID();
        size_t at = parents.size();
        while (at > 0 && !Session().CompareEntryIDs(parents[at - 1], parent))
        {
            --at;
        }
        if (at == 0)
        {
            parents.push_back(parent);
            FoundMessages& group = groups.emplace_back();
            m_store.OpenEntry(parent, group.folder, MAPI_BEST_ACCESS);
            group.path = PathOf(group.folder);
            at = groups.size();
        }
        groups[at - 1].messages.push_back({EntryIdFromText(hex), MessageNamed(object)});
    }
    return groups;
}

std::vector<FoundMessages> Mailbox::FindMessages(const std::vector<std::string>& given)
{
    const std::vector<std::string> arguments = WithInput(given);
    const bool allIds = !arguments.empty() && std::all_of(arguments.begin(), arguments.end(), LooksLikeEntryId);
    if (allIds)
    {
        CZebPropObj first = OpenAny(arguments.front());
        if (first.GetObjectType() == MAPI_MESSAGE)
        {
            return MessagesById(arguments);
        }
    }
    if (arguments.size() < 2)
    {
        throw UsageError("no message is given: give its number or subject after the folder, or its entry "
                         "identifier");
    }
    FoundMessages found;
    found.folder = OpenFolder(arguments.front());
    found.path = PathOf(found.folder);
    for (size_t i = 1; i < arguments.size(); ++i)
    {
        AddMessages(found, arguments[i]);
    }
    return {found};
}

std::vector<FoundMessage> AllOf(const std::vector<FoundMessages>& groups)
{
    std::vector<FoundMessage> all;
    for (const FoundMessages& group : groups)
    {
        all.insert(all.end(), group.messages.begin(), group.messages.end());
    }
    return all;
}

void Mailbox::AddMessages(FoundMessages& found, const std::string& text)
{
    const std::vector<NumberRange> ranges = IsNumber(text) ? std::vector<NumberRange>() : ParseNumberList(text);
    if (ranges.empty())
    {
        found.messages.push_back(FindMessage(found.folder, found.path, text));
        return;
    }
    CZebTable table = found.folder.GetContentsTable(MAPI_UNICODE);
    table.SetColumns(2, PR_ENTRYID, PR_SUBJECT_W);
    const ULONG count = table.GetRowCount();
    std::set<uint64_t> known;
    for (const NumberRange& range : ranges)
    {
        const uint64_t last = range.last.value_or(count);
        if (range.first == 0 || range.first > last || last > count)
        {
            throw ToolError("there are no messages " + text + " in " + Named(found.path) + ": it has " +
                            Counted(count, "message", "messages") + "; write such a subject as " + SubjectMark + text);
        }
        table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(range.first - 1), nullptr);
        uint64_t number = range.first;
        for (const CZebRow row : CZebTableRows(table))
        {
            if (known.insert(number).second)
            {
                found.messages.push_back({static_cast<const SBinary&>(row[PR_ENTRYID]),
                                          NumberedMessage(std::to_string(number), row, found.path)});
            }
            if (++number > last)
            {
                break;
            }
        }
    }
}

} // namespace zeb::tools
