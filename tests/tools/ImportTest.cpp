// What zeb-import keeps of a real PST file, compared with what pffexport (another reader) dumps of it.
#include "tests/integration/Host.h"

#include "platform/module.h"
#include "platform/text.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <vector>

namespace zeb::test
{
namespace
{

/// Type and bytes of a property; keyed by "0x0037" or, for a named one, by its name or number.
using Dump = std::map<std::string, std::pair<ULONG, std::string>>;

constexpr const char* Inbox = "lokay-m/MLOKAY (Non-Privileged)/Personal";
constexpr int MessagesInInbox = 47;

std::string Behind(const std::string& line, const std::string& label)
{
    const size_t at = line.compare(0, label.size(), label) == 0 ? line.find_first_not_of('\t', label.size())
                                                                : std::string::npos;
    return at == std::string::npos ? std::string() : line.substr(at);
}

/// The bytes of one line of a hexadecimal dump, "0x00000010: 81 2b ...  text".
void AppendBytes(const std::string& line, std::string& bytes)
{
    for (size_t at = 12, count = 0; count < 16 && at + 1 < line.size(); at += 3, ++count)
    {
        if (count == 8)
            ++at;
        if (!std::isxdigit(static_cast<unsigned char>(line[at])))
            return;
        bytes += static_cast<char>(std::stoi(line.substr(at, 2), nullptr, 16));
    }
}

Dump ReadDump(const std::filesystem::path& file)
{
    Dump dump;
    std::ifstream stream(file);
    std::string line, key;
    ULONG id = 0, type = 0;
    while (std::getline(stream, line))
    {
        if (!Behind(line, "Entry type:").empty())
        {
            id = static_cast<ULONG>(std::stoul(Behind(line, "Entry type:"), nullptr, 16));
            char text[16];
            std::snprintf(text, sizeof text, "0x%04X", static_cast<unsigned>(id));
            key = text;
        }
        else if (!Behind(line, "Value type:").empty())
            type = static_cast<ULONG>(std::stoul(Behind(line, "Value type:"), nullptr, 16));
        else if (!Behind(line, "Maps to entry:").empty())
            key = Behind(line, "Maps to entry:");
        else if (line.compare(0, 6, "Value:") == 0)
            dump[key] = {type, {}};
        else if (line.compare(0, 2, "0x") == 0)
            AppendBytes(line, dump[key].second);
    }
    return dump;
}

/// Text in the file ends with a terminator, or does not.
std::string WithoutTerminator(std::string utf16)
{
    while (utf16.size() >= 2 && utf16[utf16.size() - 1] == 0 && utf16[utf16.size() - 2] == 0)
        utf16.resize(utf16.size() - 2);
    return utf16;
}

/// A value's bytes as the dump has them.
std::string BytesOf(const SPropValue& value)
{
    const auto raw = [](const void* bytes, size_t size)
    { return std::string(static_cast<const char*>(bytes), size); };
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_UNICODE:
        return raw(value.Value.lpszW, platform::WideLength(value.Value.lpszW) * sizeof(WCHAR));
    case PT_BINARY:
        return raw(value.Value.bin.lpb, value.Value.bin.cb);
    case PT_BOOLEAN:
        return std::string(1, value.Value.b ? 1 : 0);
    case PT_LONG:
        return raw(&value.Value.l, 4);
    case PT_SYSTIME:
    case PT_I8:
        return raw(&value.Value.ft, 8);
    default:
        ADD_FAILURE() << "the sample has no type " << std::hex << PROP_TYPE(value.ulPropTag);
        return {};
    }
}

std::string NameOf(const CComPtr<IMAPIProp>& object, ULONG tag)
{
    SizedSPropTagArray(1, tags) = {1, {tag}};
    SPropTagArray* pointer = reinterpret_cast<SPropTagArray*>(&tags);
    ULONG count = 0;
    MAPINAMEID** names = nullptr;
    ThrowIfFailed(object->GetNamesFromIDs(&pointer, nullptr, 0, &count, &names), object, __FILE__, __LINE__);
    std::string text;
    if (count == 1 && names[0] && names[0]->ulKind == MNID_STRING)
        text = platform::Utf8FromWide(names[0]->Kind.lpwstrName,
                                      platform::WideLength(names[0]->Kind.lpwstrName));
    else if (count == 1 && names[0])
        text = std::to_string(names[0]->Kind.lID);
    Zeb_MemFree(names);
    return text;
}

/// A value that is too large for GetProps.
std::string ReadStream(CZebMessage& message, ULONG tag)
{
    const CComPtr<IStream> stream = message.OpenProperty(tag, 0);
    STATSTG size{};
    ThrowIfFailed(stream->Stat(&size, STATFLAG_NONAME), __FILE__, __LINE__);
    std::string bytes(static_cast<size_t>(size.cbSize.QuadPart), 0);
    ThrowIfFailed(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr), __FILE__, __LINE__);
    return bytes;
}

/// Everything that the store has of a message.
Dump ReadMessage(CZebMessage& message)
{
    CZebPropTagArray tags;
    message.GetPropList(&tags, MAPI_UNICODE);
    Dump dump;
    for (int i = 0; i < tags.GetCount(); ++i)
    {
        CZebPropTagArray one;
        one.AddOne(tags[i]);
        CZebPropValArray values;
        ULONG* const count = values.CountPtr();
        message.GetProps(one, count, &values, MAPI_UNICODE);
        const SPropValue& value = static_cast<const SPropValue&>(values.GetAt(0));
        std::string bytes;
        ULONG type = PROP_TYPE(value.ulPropTag);
        if (type == PT_ERROR && value.Value.err == MAPI_E_NOT_ENOUGH_MEMORY &&
            PROP_TYPE(tags[i]) != PT_OBJECT)
        {
            type = PROP_TYPE(tags[i]);
            bytes = ReadStream(message, tags[i]);
        }
        else if (type == PT_ERROR || type == PT_OBJECT)
            continue;
        else
            bytes = BytesOf(value);
        char key[16];
        std::snprintf(key, sizeof key, "0x%04X", static_cast<unsigned>(PROP_ID(tags[i])));
        const bool named = PROP_ID(tags[i]) >= 0x8000;
        dump[named ? NameOf(message.GetInterface(), tags[i]) : key] = {type, bytes};
    }
    return dump;
}

class ImportedPst : public StoreHost
{
protected:
    ImportedPst()
    {
        const std::string file = ZEB_SAMPLE_PST;
        const std::string import = "'" + platform::OwnFolder() + "zeb-import' pst '" + file + "' --inbox '" +
                                   test::Inbox + "' > '" + File("import.log") + "' 2>&1";
        EXPECT_EQ(std::system(import.c_str()), 0) << import;
        const std::string other = "pffexport -q -m items -d -t '" + File("other") + "' '" + file + "' > '" +
                                  File("other.log") + "' 2>&1";
        EXPECT_EQ(std::system(other.c_str()), 0) << other;
    }

    std::filesystem::path OtherFolder() const
    {
        return File("other.export/Top of Personal Folders/" + std::string(test::Inbox));
    }

    /// The recipients that the other reader found: one record set each.
    ULONG ExpectedRecipients()
    {
        ULONG count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(OtherFolder()))
        {
            std::ifstream stream(entry.path() / "RecipientsItemValues.txt");
            std::string line;
            while (std::getline(stream, line))
                if (!Behind(line, "Number of sets:").empty())
                    count += static_cast<ULONG>(std::stoul(Behind(line, "Number of sets:")));
        }
        return count;
    }

    /// The attachments that the other reader wrote out, and their bytes.
    std::pair<ULONG, size_t> ExpectedAttachments()
    {
        std::pair<ULONG, size_t> found{0, 0};
        for (const auto& entry : std::filesystem::directory_iterator(OtherFolder()))
        {
            if (!std::filesystem::is_directory(entry.path() / "Attachments"))
                continue;
            for (const auto& file : std::filesystem::directory_iterator(entry.path() / "Attachments"))
                if (file.path().filename() != "ItemValues.txt")
                {
                    ++found.first;
                    found.second += static_cast<size_t>(file.file_size());
                }
        }
        return found;
    }

    /// The other reader's dumps of the folder, by message identifier.
    std::map<std::string, Dump> Expected()
    {
        std::map<std::string, Dump> dumps;
        for (const auto& entry : std::filesystem::directory_iterator(OtherFolder()))
            if (std::filesystem::exists(entry.path() / "ItemValues.txt"))
            {
                Dump dump = ReadDump(entry.path() / "ItemValues.txt");
                const std::string id = WithoutTerminator(dump.at("0x1035").second);
                dumps[id] = std::move(dump);
            }
        return dumps;
    }
};

/// What a store answers for itself: sizes, flags of its own, its support mask, access rights, its provider.
const std::set<std::string> AnsweredByStore = {"0x0E07", "0x0E08", "0x0E1B", "0x0FF4",
                                               "0x0FF7", "0x340D", "0x3414"};

TEST_F(ImportedPst, KeepsEveryPropertyWithItsTypeAndBytes)
{
    const std::map<std::string, Dump> expected = Expected();
    ASSERT_EQ(expected.size(), static_cast<size_t>(MessagesInInbox));
    CZebTable table = Contents();
    table.SetColumns(1, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), expected.size());
    size_t compared = 0;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        CZebMessage message;
        m_store->OpenEntry(rows[i][PR_ENTRYID], message, MAPI_BEST_ACCESS);
        const Dump found = ReadMessage(message);
        ASSERT_EQ(found.count("0x1035"), 1u);
        ASSERT_EQ(expected.count(found.at("0x1035").second), 1u);
        const Dump& wanted = expected.at(found.at("0x1035").second);
        for (const auto& [key, value] : wanted)
        {
            if (AnsweredByStore.count(key))
                continue;
            std::string bytes = value.second;
            // The file puts the length of the subject's prefix before the subject.
            if (key == "0x0037" && bytes.compare(0, 2, std::string("\1\0", 2)) == 0)
                bytes.erase(0, 4);
            ASSERT_EQ(found.count(key), 1u) << key << " is missing";
            if (value.first == PT_UNICODE)
                bytes = WithoutTerminator(bytes);
            EXPECT_EQ(found.at(key).first, value.first) << key;
            EXPECT_TRUE(found.at(key).second == bytes) << key << " has other bytes";
            ++compared;
        }
    }
    EXPECT_GT(compared, 1500u);
}

TEST_F(ImportedPst, KeepsRecipientsAndAttachments)
{
    CZebTable table = Contents();
    table.SetColumns(2, PR_ENTRYID, PR_HASATTACH);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ULONG recipients = 0, attachments = 0;
    size_t bytes = 0;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        CZebMessage wrapper;
        m_store->OpenEntry(rows[i][PR_ENTRYID], wrapper, MAPI_BEST_ACCESS);
        CComPtr<IMessage> message;
        ThrowIfFailed(wrapper.GetInterface().QueryInterface(IID_IMessage, message), __FILE__, __LINE__);
        CComPtr<IMAPITable> raw;
        ThrowIfFailed(message->GetRecipientTable(0, raw.Put()), message, __FILE__, __LINE__);
        recipients += CZebTable(raw.Get()).GetRowCount();
        ThrowIfFailed(message->GetAttachmentTable(0, raw.Put()), message, __FILE__, __LINE__);
        const ULONG count = CZebTable(raw.Get()).GetRowCount();
        attachments += count;
        EXPECT_EQ(static_cast<bool>(rows[i][PR_HASATTACH]), count > 0);
        for (ULONG number = 0; number < count; ++number)
        {
            CComPtr<IAttach> attachment;
            ThrowIfFailed(message->OpenAttach(number, nullptr, 0, attachment.Put()), message, __FILE__,
                          __LINE__);
            CZebPropObj object(attachment.Get());
            const CComPtr<IStream> stream = object.OpenProperty(PR_ATTACH_DATA_BIN, 0);
            STATSTG size{};
            ThrowIfFailed(stream->Stat(&size, STATFLAG_NONAME), __FILE__, __LINE__);
            bytes += static_cast<size_t>(size.cbSize.QuadPart);
        }
    }
    EXPECT_EQ(recipients, ExpectedRecipients());
    EXPECT_EQ(attachments, ExpectedAttachments().first);
    EXPECT_EQ(bytes, ExpectedAttachments().second);
}

} // namespace
} // namespace zeb::test
