#include "tools/common/MsgNames.h"

#include <algorithm>
#include <cstring>

namespace zeb::tools
{
namespace
{

using namespace msg;

/// An index has 16 bits, and identifiers end at 0xFFFE.
constexpr size_t MostNames = 0x7FFF;
/// The table is also there in parts, by a hash of the names.
constexpr ULONG FirstBucket = 0x1000, Buckets = 0x1F;
constexpr ULONG TextKind = 1;

void AppendLong(std::string& bytes, ULONG number)
{
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

/// The cyclic redundancy check of a text name: polynomial 0xEDB88320, from 0, without a final inversion.
ULONG CheckOf(const std::string& bytes)
{
    ULONG check = 0;
    for (const char byte : bytes)
    {
        check ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
        {
            check = (check & 1) != 0 ? check >> 1 ^ 0xEDB88320 : check >> 1;
        }
    }
    return check;
}

std::string BytesOf(const std::basic_string<WCHAR>& text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR)};
}

void AddStream(platform::CompoundOutput& folder, const std::string& name, const std::string& bytes)
{
    size_t done = 0;
    folder.AddStream(name, [&](char* buffer, size_t size)
    {
        const size_t piece = std::min(size, bytes.size() - done);
        std::memcpy(buffer, bytes.data() + done, piece);
        done += piece;
        return piece;
    });
}

/// The text at a position of the stream of texts. @return false when it is not there
bool TextAt(const std::string& texts, size_t at, std::basic_string<WCHAR>& text)
{
    if (at > texts.size() || texts.size() - at < sizeof(ULONG))
    {
        return false;
    }
    const size_t size = NumberFromBytes<ULONG>(texts.substr(at, sizeof(ULONG)));
    at += sizeof(ULONG);
    if (size > texts.size() - at)
    {
        return false;
    }
    text.resize(size / sizeof(WCHAR));
    std::memcpy(text.data(), texts.data() + at, text.size() * sizeof(WCHAR));
    return !text.empty();
}

/// The property set of a number of the table. @return false when it is not there
bool SetAt(const std::string& sets, unsigned number, GUID& set)
{
    if (number == MapiSet || number == PublicStringsSet)
    {
        set = number == MapiSet ? PS_MAPI : PS_PUBLIC_STRINGS;
        return true;
    }
    if (number < FirstListedSet || sets.size() / sizeof set <= number - FirstListedSet)
    {
        return false;
    }
    std::memcpy(&set, sets.data() + (number - FirstListedSet) * sizeof set, sizeof set);
    return true;
}

} // namespace

unsigned MsgNames::SetOf(const GUID& set)
{
    if (set == PS_MAPI || set == PS_PUBLIC_STRINGS)
    {
        return set == PS_MAPI ? MapiSet : PublicStringsSet;
    }
    const auto found = std::find(m_sets.begin(), m_sets.end(), set);
    const auto index = static_cast<unsigned>(found - m_sets.begin());
    if (found == m_sets.end())
    {
        m_sets.push_back(set);
    }
    return index + FirstListedSet;
}

ULONG MsgNames::IdOf(const PropertyName& name)
{
    const std::string text = name.isText ? BytesOf(name.text) : std::string();
    std::string key(reinterpret_cast<const char*>(&name.set), sizeof name.set);
    key += name.isText ? "t" + text : "n" + std::to_string(name.id);
    const auto [entry, isNew] = m_ids.emplace(key, FirstNamedId + static_cast<ULONG>(m_entries.size()));
    if (!isNew)
    {
        return entry->second;
    }
    if (m_entries.size() == MostNames)
    {
        m_ids.erase(entry);
        return 0;
    }
    Entry made;
    made.first = name.isText ? static_cast<ULONG>(m_texts.size()) : static_cast<ULONG>(name.id);
    made.hashed = name.isText ? CheckOf(text) : made.first;
    made.second = static_cast<ULONG>(m_entries.size()) << 16 | SetOf(name.set) << 1 | (name.isText ? TextKind : 0);
    m_entries.push_back(made);
    if (name.isText)
    {
        AppendLong(m_texts, static_cast<ULONG>(text.size()));
        m_texts += text;
        m_texts.resize((m_texts.size() + 3) / 4 * 4);
    }
    return entry->second;
}

void MsgNames::Write(platform::CompoundOutput& top) const
{
    std::string sets, entries;
    std::map<ULONG, std::string> buckets;
    for (const GUID& set : m_sets)
    {
        sets.append(reinterpret_cast<const char*>(&set), sizeof set);
    }
    for (const Entry& entry : m_entries)
    {
        AppendLong(entries, entry.first);
        AppendLong(entries, entry.second);
        std::string& bucket = buckets[FirstBucket + (entry.hashed ^ (entry.second & 0xFFFF)) % Buckets];
        AppendLong(bucket, entry.hashed);
        AppendLong(bucket, entry.second);
    }
    const auto folder = top.AddFolder(NamesName);
    AddStream(*folder, ValueName(GuidStream), sets);
    AddStream(*folder, ValueName(EntryStream), entries);
    AddStream(*folder, ValueName(StringStream), m_texts);
    for (const auto& [number, bucket] : buckets)
    {
        AddStream(*folder, ValueName(PROP_TAG(PT_BINARY, number)), bucket);
    }
    folder->Finish();
}

std::string MsgStream(platform::CompoundFolder& folder, const std::string& name)
{
    std::string bytes;
    if (const auto stream = folder.OpenStream(name))
    {
        // Not by the size that the directory names, which may be anything.
        char piece[4096];
        while (const size_t size = stream->Read(piece, sizeof piece))
        {
            bytes.append(piece, size);
        }
    }
    return bytes;
}

std::vector<std::optional<PropertyName>> ReadMsgNames(platform::CompoundFolder& top)
{
    std::vector<std::optional<PropertyName>> names;
    const auto folder = top.OpenFolder(NamesName);
    if (!folder)
    {
        return names;
    }
    const std::string sets = MsgStream(*folder, ValueName(GuidStream));
    const std::string entries = MsgStream(*folder, ValueName(EntryStream));
    const std::string texts = MsgStream(*folder, ValueName(StringStream));
    for (size_t at = 0; at + 2 * sizeof(ULONG) <= entries.size(); at += 2 * sizeof(ULONG))
    {
        const auto first = NumberFromBytes<ULONG>(entries.substr(at, sizeof(ULONG)));
        const auto second = NumberFromBytes<ULONG>(entries.substr(at + sizeof(ULONG), sizeof(ULONG)));
        PropertyName name;
        name.isText = (second & TextKind) != 0;
        name.id = name.isText ? 0 : static_cast<LONG>(first);
        const size_t index = second >> 16;
        names.resize(std::max(names.size(), index + 1));
        if (SetAt(sets, (second & 0xFFFF) >> 1, name.set) && (!name.isText || TextAt(texts, first, name.text)))
        {
            names[index] = name;
        }
    }
    return names;
}

} // namespace zeb::tools
