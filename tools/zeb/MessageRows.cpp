#include "tools/zeb/MessageRows.h"

#include "tools/common/HostSession.h"
#include "tools/common/Output.h"

#include <algorithm>

namespace zeb::tools
{
namespace
{

constexpr size_t NumberWidth = 7, DateWidth = 19, SenderWidth = 28, SizeWidth = 10;

std::string RightAligned(const std::string& text, size_t width)
{
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string Columns(const std::string& number, const std::string& date, const std::string& sender,
                    const std::string& size, const std::string& subject, size_t terminalColumns)
{
    const std::string line = (number.empty() ? "" : RightAligned(number, NumberWidth) + "  ") +
                             Fitted(date, DateWidth) + "  " + Fitted(sender, SenderWidth) + "  " +
                             RightAligned(size, SizeWidth) + "  " + subject;
    return Shortened(line, terminalColumns) + "\n";
}

} // namespace

std::string AuthorOf(const CZebRow& row)
{
    const std::string author = TextOf(row, PR_SENT_REPRESENTING_NAME_W);
    return author.empty() ? TextOf(row, PR_SENDER_NAME_W) : author;
}

void SetMessageColumns(CZebTable& table)
{
    table.SetColumns(7, PR_CLIENT_SUBMIT_TIME, PR_SENT_REPRESENTING_NAME_W, PR_SENDER_NAME_W, PR_MESSAGE_SIZE,
                     PR_SUBJECT_W, PR_ENTRYID, PR_MESSAGE_FLAGS);
}

MessageRow ReadMessageRow(const CZebRow& row)
{
    MessageRow line;
    line.hasDate = row.hasRealValue(PR_CLIENT_SUBMIT_TIME);
    if (line.hasDate)
        line.date = static_cast<const FILETIME&>(row[PR_CLIENT_SUBMIT_TIME]);
    line.sender = AuthorOf(row);
    line.subject = TextOf(row, PR_SUBJECT_W);
    if (row.hasRealValue(PR_MESSAGE_SIZE))
        line.size = static_cast<LONG>(row[PR_MESSAGE_SIZE]);
    if (row.hasRealValue(PR_ENTRYID))
        line.entryId = static_cast<const SBinary&>(row[PR_ENTRYID]);
    line.unread =
        row.hasRealValue(PR_MESSAGE_FLAGS) && (static_cast<LONG>(row[PR_MESSAGE_FLAGS]) & MSGFLAG_READ) == 0;
    return line;
}

void AddSortKeys(const std::string& by, CZebSortOrder& order)
{
    if (by == "subject")
        order.Add(PR_SUBJECT_W, TABLE_SORT_ASCEND);
    if (by == "size")
        order.Add(PR_MESSAGE_SIZE, TABLE_SORT_DESCEND);
    order.Add(PR_CLIENT_SUBMIT_TIME, TABLE_SORT_DESCEND);
    if (by != "subject")
        order.Add(PR_SUBJECT_W, TABLE_SORT_ASCEND);
}

std::string MessageLineForPeople(const MessageRow& row, bool numbered, size_t terminalColumns)
{
    return Columns(numbered ? std::to_string(row.number) : std::string(),
                   row.hasDate ? TimeForPeople(row.date) : "", OneLine(row.sender),
                   Grouped(static_cast<unsigned long long>(std::max<LONG>(row.size, 0))),
                   OneLine(row.subject), terminalColumns);
}

std::string MessageHeading(bool numbered, size_t terminalColumns)
{
    return Columns(numbered ? "#" : "", "date (UTC)", "sender", "size", "subject", terminalColumns);
}

nlohmann::ordered_json MessageForMachines(const MessageRow& row)
{
    nlohmann::ordered_json object;
    if (row.number != 0)
        object["number"] = row.number;
    object["date"] = row.hasDate ? nlohmann::ordered_json(TimeForMachines(row.date)) : nullptr;
    object["sender"] = row.sender;
    object["size"] = row.size;
    object["subject"] = row.subject;
    object["unread"] = row.unread;
    object["entryId"] = row.entryId.IsValid() ? static_cast<const char*>(row.entryId.String()) : "";
    return object;
}

} // namespace zeb::tools
