#include "tools/zeb-import/MimeEnvelope.h"

#include "platform/tags.h"
#include "platform/text.h"
#include "tools/common/MailProperties.h"
#include "tools/zeb-import/Addresses.h"
#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/MailDate.h"

#include <cstring>

namespace zeb::tools
{
namespace
{

/// The headers of one message, encoded and unfolded.
class Headers
{
public:
    explicit Headers(GMimeMessage* message)
        : m_list(g_mime_object_get_header_list(GMIME_OBJECT(message)))
    {
    }

    /// The values of all headers of that name, in order.
    std::vector<std::string> All(const char* name) const
    {
        std::vector<std::string> values;
        for (int i = 0, count = g_mime_header_list_get_count(m_list); i < count; ++i)
        {
            GMimeHeader* header = g_mime_header_list_get_header_at(m_list, i);
            if (g_ascii_strcasecmp(g_mime_header_get_name(header), name) != 0)
            {
                continue;
            }
            const char* raw = g_mime_header_get_raw_value(header);
            const GText value(g_mime_utils_header_unfold(raw != nullptr ? raw : ""));
            values.push_back(Trimmed(value.get()));
        }
        return values;
    }

    /// The value of the first header of that name; empty when there is none.
    std::optional<std::string> First(const char* name) const
    {
        const std::vector<std::string> all = All(name);
        return all.empty() ? std::nullopt : std::optional<std::string>(all.front());
    }

    std::string FirstOr(const char* name, const char* other) const { return First(name).value_or(other); }

private:
    GMimeHeaderList* m_list;
};

std::string Decoded(const std::string& value)
{
    return GText(g_mime_utils_header_decode_text(nullptr, value.c_str())).get();
}

struct AddressTags
{
    ULONG name, type, address;
};

void AddPerson(Properties& properties, const AddressTags& tags, const MailAddress& person)
{
    AddText(properties, tags.name, person.name);
    if (person.address.empty())
    {
        return;
    }
    AddText(properties, tags.type, "SMTP");
    AddText(properties, tags.address, person.address);
}

void AddAuthor(Properties& properties, const Headers& headers)
{
    const std::vector<MailAddress> from = ParseAddresses(headers.FirstOr("From", ""));
    const std::vector<MailAddress> sender = ParseAddresses(headers.FirstOr("Sender", ""));
    if (!from.empty())
    {
        AddPerson(properties,
                  {PR_SENT_REPRESENTING_NAME_W, PR_SENT_REPRESENTING_ADDRTYPE_W, PR_SENT_REPRESENTING_EMAIL_ADDRESS_W},
                  from.front());
    }
    if (!sender.empty() || !from.empty())
    {
        AddPerson(properties, {PR_SENDER_NAME_W, PR_SENDER_ADDRTYPE_W, PR_SENDER_EMAIL_ADDRESS_W},
                  sender.empty() ? from.front() : sender.front());
    }
}

void AppendNumber(std::string& bytes, ULONG number)
{
    for (int shift = 0; shift < 32; shift += 8)
    {
        bytes += static_cast<char>(number >> shift & 0xFF);
    }
}

/// A one-off entry identifier: flags, the one-off UID, version 0, Unicode without rich text, then name, address type
/// and address.
std::string OneOff(const MailAddress& person)
{
    constexpr unsigned char Head[] = {0,    0,    0,    0,    0x81, 0x2B, 0x1F, 0xA4, 0xBE, 0xA3, 0x10, 0x19,
                                      0x9D, 0x6E, 0x00, 0xDD, 0x01, 0x0F, 0x54, 0x02, 0,    0,    0x01, 0x90};
    std::string bytes(reinterpret_cast<const char*>(Head), sizeof Head);
    for (const std::string& text : {person.name, std::string("SMTP"), person.address})
    {
        const platform::WideString wide = platform::WideFromUtf8(text.data(), text.size());
        bytes.append(reinterpret_cast<const char*>(wide.c_str()), (wide.size() + 1) * sizeof(WCHAR));
    }
    return bytes;
}

/// Names as a list, identifiers as a FLATENTRYLIST: count, total bytes, then each identifier with its size, padded to 4
/// bytes.
void AddReplyTo(Properties& properties, const Headers& headers)
{
    std::string names, entries;
    ULONG count = 0;
    for (const MailAddress& person : ParseAddresses(headers.FirstOr("Reply-To", "")))
    {
        names += (names.empty() ? "" : "; ") + person.name;
        const std::string id = OneOff(person);
        AppendNumber(entries, static_cast<ULONG>(id.size()));
        entries += id;
        entries.append((4 - entries.size() % 4) % 4, '\0');
        ++count;
    }
    if (count == 0)
    {
        return;
    }
    std::string list;
    AppendNumber(list, count);
    AppendNumber(list, static_cast<ULONG>(entries.size()));
    AddBytes(properties, PR_REPLY_RECIPIENT_ENTRIES, list + entries);
    AddText(properties, PR_REPLY_RECIPIENT_NAMES_W, names);
}

/// The delivery time: the date of the topmost Received header (after its last semicolon).
std::optional<int64_t> ArrivalOf(const Headers& headers)
{
    const std::string received = headers.FirstOr("Received", "");
    const size_t date = received.rfind(';');
    return date == std::string::npos ? std::nullopt : MomentOf(Trimmed(received.substr(date + 1)));
}

void AddDates(Properties& properties, const Headers& headers, Notes& notes)
{
    const std::optional<std::string> date = headers.First("Date");
    const std::optional<int64_t> sent = MomentOf(date.value_or(""));
    const std::optional<int64_t> arrived = ArrivalOf(headers);
    if (date && !sent)
    {
        notes.Add("'" + *date + "' is not a date");
    }
    if (sent)
    {
        AddTime(properties, PR_CLIENT_SUBMIT_TIME, *sent);
    }
    if (arrived || sent)
    {
        AddTime(properties, PR_MESSAGE_DELIVERY_TIME, arrived ? *arrived : *sent);
    }
}

void AddRank(Properties& properties, const Headers& headers)
{
    const std::string importance =
        LowerCase(headers.FirstOr("Importance", headers.FirstOr("X-MSMail-Priority", "").c_str()));
    const char number = headers.FirstOr("X-Priority", " ").append(" ")[0];
    if (importance == "high" || (importance.empty() && (number == '1' || number == '2')))
    {
        AddLong(properties, PR_IMPORTANCE, IMPORTANCE_HIGH);
    }
    else if (importance == "low" || (importance.empty() && (number == '4' || number == '5')))
    {
        AddLong(properties, PR_IMPORTANCE, IMPORTANCE_LOW);
    }
    else if (importance == "normal" || number == '3')
    {
        AddLong(properties, PR_IMPORTANCE, IMPORTANCE_NORMAL);
    }
    const std::string priority = LowerCase(headers.FirstOr("Priority", ""));
    if (priority == "urgent")
    {
        AddLong(properties, PR_PRIORITY, PRIO_URGENT);
    }
    else if (priority == "non-urgent")
    {
        AddLong(properties, PR_PRIORITY, PRIO_NONURGENT);
    }
    else if (priority == "normal")
    {
        AddLong(properties, PR_PRIORITY, PRIO_NORMAL);
    }
    const std::string sensitivity = LowerCase(headers.FirstOr("Sensitivity", ""));
    if (sensitivity == "personal")
    {
        AddLong(properties, PR_SENSITIVITY, SENSITIVITY_PERSONAL);
    }
    else if (sensitivity == "private")
    {
        AddLong(properties, PR_SENSITIVITY, SENSITIVITY_PRIVATE);
    }
    else if (sensitivity == "company-confidential")
    {
        AddLong(properties, PR_SENSITIVITY, SENSITIVITY_COMPANY_CONFIDENTIAL);
    }
}

void AddState(Properties& properties, const MailState& state)
{
    AddLong(properties, PR_MESSAGE_FLAGS, (state.read ? MSGFLAG_READ : 0) | (state.draft ? MSGFLAG_UNSENT : 0));
    if (state.answered)
    {
        AddLong(properties, PR_LAST_VERB_EXECUTED, VerbReply);
    }
    if (state.flagged)
    {
        AddLong(properties, PR_FLAG_STATUS, FlagMarked);
    }
    if (state.trashed)
    {
        AddLong(properties, PR_MSG_STATUS, MSGSTATUS_DELMARKED);
    }
}

void AddIdentifiers(Properties& properties, const Headers& headers)
{
    if (const auto id = headers.First("Message-ID"))
    {
        AddText(properties, PR_INTERNET_MESSAGE_ID_W, Decoded(*id));
    }
    if (const auto id = headers.First("In-Reply-To"))
    {
        AddText(properties, PR_IN_REPLY_TO_ID_W, Decoded(*id));
    }
    if (const auto ids = headers.First("References"))
    {
        AddText(properties, PR_INTERNET_REFERENCES_W, Decoded(*ids));
    }
}

void AddHeaderText(Properties& properties, GMimeMessage* message, const std::string& headers)
{
    std::string text = headers;
    if (text.empty())
    {
        const GText known(g_mime_object_get_headers(GMIME_OBJECT(message), nullptr));
        text = known ? known.get() : "";
    }
    if (!text.empty())
    {
        AddText(properties, PR_TRANSPORT_MESSAGE_HEADERS_W, WithCrLf(DecodeText(text, "").utf8));
    }
}

void AddRecipients(std::vector<Properties>& recipients, const Headers& headers, const char* name, LONG type)
{
    for (const std::string& value : headers.All(name))
    {
        for (const MailAddress& person : ParseAddresses(value))
        {
            Properties recipient;
            AddLong(recipient, PR_RECIPIENT_TYPE, type);
            AddPerson(recipient, {PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W}, person);
            if (!person.address.empty())
            {
                AddText(recipient, PR_SMTP_ADDRESS_W, person.address);
            }
            recipients.push_back(std::move(recipient));
        }
    }
}

} // namespace

void AddEnvelope(MessageContent& content, GMimeMessage* message, const std::string& headerText,
                 const std::optional<MailState>& state, Notes& notes)
{
    const Headers headers(message);
    Properties& properties = content.properties;
    AddText(properties, PR_MESSAGE_CLASS_W, "IPM.Note");
    AddText(properties, PR_SUBJECT_W, Decoded(headers.FirstOr("Subject", "")));
    AddAuthor(properties, headers);
    AddReplyTo(properties, headers);
    AddDates(properties, headers, notes);
    AddIdentifiers(properties, headers);
    AddRank(properties, headers);
    AddHeaderText(properties, message, headerText);
    const std::optional<MailState> known =
        state ? state : StateInHeaders(headers.FirstOr("Status", ""), headers.FirstOr("X-Status", ""));
    AddState(properties, known.value_or(MailState()));
    AddRecipients(content.recipients, headers, "To", MAPI_TO);
    AddRecipients(content.recipients, headers, "Cc", MAPI_CC);
    AddRecipients(content.recipients, headers, "Bcc", MAPI_BCC);
}

} // namespace zeb::tools
