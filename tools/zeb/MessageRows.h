// Messages of a contents table as lines of text or JSON.
#pragma once

#include "tools/common/Lister.h"
#include "tools/common/Property.h"
#include "tools/common/Times.h"

#include <functional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The listed columns of a message; text is UTF-8.
struct MessageRow
{
    FILETIME date{};
    bool hasDate = false;
    std::string sender, subject; ///< the sender, see AuthorOf; the subject
    CZebBinary entryId;
    LONG size = 0;
    bool unread = false;
    ULONG number = 0; ///< the position among the folder's messages, from 1; 0: not shown
    Properties more;  ///< the further columns; one without values where the message does not have it
};

/// The sender of the message in the row: the author, PR_SENT_REPRESENTING_NAME, or without one PR_SENDER_NAME.
std::string AuthorOf(const CZebRow& row);

/// Sets the columns of a MessageRow. @param more the tags of further columns
void SetMessageColumns(CZebTable& table, const std::vector<ULONG>& more = {});

/// Reads the next `count` messages of a table with those columns, fewer when the table ends before.
void ForEachMessage(CZebTable& table, ULONG count, const std::function<void(const MessageRow& row)>& take,
                    const std::vector<ULONG>& more = {});

/// Newest first ("date" sent, "received"), from A to Z ("subject", "sender", "class"), largest first ("size"); equal ones
/// by date, then by subject, so that the order is defined.
void AddSortKeys(const std::string& by, bool reverse, CZebSortOrder& order);

/// The entry identifier of the message as text; empty when the row does not have it.
std::string TextOfId(const MessageRow& row);

/// The columns of a listing. On a narrow terminal the sender shrinks, then the size, the time of day and the sender are
/// left out, so that the beginning of the subject is visible.
class MessageColumns
{
public:
    /// @param numbered whether the lines begin with the number
    /// @param terminal the terminal's columns; 0 for no limit
    MessageColumns(bool numbered, size_t terminal, Zone zone);

    /// One line with its line end.
    std::string Heading() const;
    std::string Line(const MessageRow& row) const;

private:
    bool Fits(size_t date, size_t size);
    std::string Joined(const std::string& number, const std::string& date, const std::string& sender,
                       const std::string& size, const std::string& subject) const;

    const bool m_numbered;
    const size_t m_terminal;
    const Zone m_zone;
    size_t m_date = 0, m_sender = 0, m_size = 0; ///< widths; a column with width 0 is left out
};

/// The same as a JSON object.
Json MessageForMachines(const MessageRow& row);

} // namespace zeb::tools
