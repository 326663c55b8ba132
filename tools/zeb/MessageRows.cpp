#include "tools/zeb/MessageRows.h"

#include "tools/common/Color.h"
#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyValues.h"

#include <algorithm>
#include <iterator>

namespace zeb::tools
{
namespace
{

constexpr size_t NumberWidth = 7, DateWidth = 19, DayWidth = 10, SenderWidth = 28, NarrowSender = 12, SizeWidth = 10;
constexpr size_t Gap = 2;
/// The minimum width of the subject; below it another column shrinks.
constexpr size_t SubjectWidth = 20;
/// So few rows are read at once, and no more than these.
constexpr ULONG FewRows = 50;

Property ReadCell(const CZebRow& row, ULONG tag)
{
    Property property;
    property.tag = tag;
    if (row.hasRealValue(tag))
    {
        property.values = ValueBytes(row[tag]);
    }
    return property;
}

MessageRow ReadMessageRow(const CZebRow& row, const std::vector<ULONG>& more)
{
    MessageRow line;
    for (const ULONG tag : {PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME})
    {
        if (!line.hasDate && row.hasRealValue(tag))
        {
            line.date = static_cast<const FILETIME&>(row[tag]);
            line.hasDate = true;
        }
    }
    line.sender = AuthorOf(row);
    line.subject = TextOf(row, PR_SUBJECT_W);
    if (row.hasRealValue(PR_MESSAGE_SIZE))
    {
        line.size = static_cast<LONG>(row[PR_MESSAGE_SIZE]);
    }
    if (row.hasRealValue(PR_ENTRYID))
    {
        line.entryId = static_cast<const SBinary&>(row[PR_ENTRYID]);
    }
    line.unread = row.hasRealValue(PR_MESSAGE_FLAGS) && (static_cast<LONG>(row[PR_MESSAGE_FLAGS]) & MSGFLAG_READ) == 0;
    for (const ULONG tag : more)
    {
        line.more.push_back(ReadCell(row, tag));
    }
    return line;
}

} // namespace

std::string AuthorOf(const CZebRow& row)
{
    const std::string author = TextOf(row, PR_SENT_REPRESENTING_NAME_W);
    return author.empty() ? TextOf(row, PR_SENDER_NAME_W) : author;
}

void SetMessageColumns(CZebTable& table, const std::vector<ULONG>& more)
{
    std::vector<ULONG> tags = {
        PR_CLIENT_SUBMIT_TIME, PR_SENT_REPRESENTING_NAME_W, PR_SENDER_NAME_W, PR_MESSAGE_SIZE, PR_SUBJECT_W, PR_ENTRYID,
        PR_MESSAGE_FLAGS,      PR_MESSAGE_DELIVERY_TIME};
    std::copy_if(more.begin(), more.end(), std::back_inserter(tags),
                 [&](ULONG tag) { return std::find(tags.begin(), tags.end(), tag) == tags.end(); });
    table.SetColumns(TagArray(tags));
}

void ForEachMessage(CZebTable& table, ULONG count, const std::function<void(const MessageRow& row)>& take,
                    const std::vector<ULONG>& more)
{
    if (count == 0)
    {
        return;
    }
    if (count <= FewRows)
    {
        CZebRowSet rows;
        table.QueryRows(&rows, static_cast<LONG>(count), nullptr, nullptr);
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            take(ReadMessageRow(rows[i], more));
        }
        return;
    }
    for (CZebRow row : CZebTableRows(table))
    {
        take(ReadMessageRow(row, more));
        if (--count == 0)
        {
            return;
        }
    }
}

void AddSortKeys(const std::string& by, bool reverse, CZebSortOrder& order)
{
    const auto add = [&](ULONG tag, ULONG direction)
    {
        const ULONG other = direction == TABLE_SORT_ASCEND ? TABLE_SORT_DESCEND : TABLE_SORT_ASCEND;
        order.Add(tag, reverse ? other : direction);
    };
    if (by == "subject")
    {
        add(PR_SUBJECT_W, TABLE_SORT_ASCEND);
    }
    else if (by == "size")
    {
        add(PR_MESSAGE_SIZE, TABLE_SORT_DESCEND);
    }
    else if (by == "sender")
    {
        add(PR_SENT_REPRESENTING_NAME_W, TABLE_SORT_ASCEND);
        add(PR_SENDER_NAME_W, TABLE_SORT_ASCEND);
    }
    else if (by == "received")
    {
        add(PR_MESSAGE_DELIVERY_TIME, TABLE_SORT_DESCEND);
    }
    else if (by == "class")
    {
        add(PR_MESSAGE_CLASS_W, TABLE_SORT_ASCEND);
    }
    add(PR_CLIENT_SUBMIT_TIME, TABLE_SORT_DESCEND);
    if (by != "received")
    {
        add(PR_MESSAGE_DELIVERY_TIME, TABLE_SORT_DESCEND);
    }
    if (by != "subject")
    {
        add(PR_SUBJECT_W, TABLE_SORT_ASCEND);
    }
}

MessageColumns::MessageColumns(bool numbered, size_t terminal, Zone zone)
    : m_numbered(numbered)
    , m_terminal(terminal)
    , m_zone(zone)
{
    if (!Fits(DateWidth, SizeWidth) && !Fits(DateWidth, 0) && !Fits(DayWidth, 0))
    {
        m_sender = 0;
    }
}

/// Sets the widths, with the sender as wide as possible. @return whether that is wide enough
bool MessageColumns::Fits(size_t date, size_t size)
{
    m_date = date;
    m_size = size;
    m_sender = SenderWidth;
    if (m_terminal == 0)
    {
        return true;
    }
    const size_t others =
        (m_numbered ? NumberWidth + Gap : 0) + date + Gap + (size ? size + Gap : 0) + Gap + SubjectWidth;
    m_sender = m_terminal > others ? std::min(m_terminal - others, SenderWidth) : 0;
    return m_sender >= NarrowSender;
}

std::string MessageColumns::Joined(const std::string& number, const std::string& date, const std::string& sender,
                                   const std::string& size, const std::string& subject) const
{
    const std::string gap(Gap, ' ');
    std::string line = m_numbered ? RightAligned(number, NumberWidth) + gap : "";
    line += Fitted(date.substr(0, m_date), m_date) + gap;
    if (m_sender > 0)
    {
        line += Fitted(sender, m_sender) + gap;
    }
    if (m_size > 0)
    {
        line += RightAligned(size, m_size) + gap;
    }
    return Shortened(line + subject, m_terminal) + "\n";
}

std::string MessageColumns::Heading() const
{
    const std::string zone = NameOfZone(m_zone);
    return Toned(Tone::Heading,
                 Joined("#", m_date == DayWidth ? "day" : "date (" + zone + ")", "sender", "size", "subject"));
}

std::string MessageColumns::Line(const MessageRow& row) const
{
    const std::string line =
        Joined(std::to_string(row.number), row.hasDate ? TimeForPeople(row.date, m_zone) : "", OneLine(row.sender),
               Grouped(static_cast<unsigned long long>(std::max<LONG>(row.size, 0))), OneLine(row.subject));
    return Toned(row.unread ? Tone::Unread : Tone::Plain, line);
}

std::string TextOfId(const MessageRow& row)
{
    return row.entryId.IsValid() ? std::string(row.entryId.String()) : "";
}

Json MessageForMachines(const MessageRow& row)
{
    Json object;
    if (row.number != 0)
    {
        object["number"] = row.number;
    }
    object["date"] = row.hasDate ? Json(TimeForMachines(row.date)) : Json(nullptr);
    object["sender"] = row.sender;
    object["size"] = row.size;
    object["subject"] = row.subject;
    object["unread"] = row.unread;
    object["entryId"] = TextOfId(row);
    return object;
}

} // namespace zeb::tools
