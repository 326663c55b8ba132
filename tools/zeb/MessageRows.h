// Messages of a contents table as lines, for people and for machines.
#pragma once

#include "zebapi/ZebAPI.h"

#include <nlohmann/json.hpp>

#include <string>

namespace zeb::tools
{

/// What a listing shows of a message; text is UTF-8.
struct MessageRow
{
    FILETIME date{};
    bool hasDate = false;
    std::string sender, subject; ///< whom it is from, as AuthorOf says; what it is about
    CZebBinary entryId;
    LONG size = 0;
    bool unread = false;
    ULONG number = 0; ///< the place among the folder's messages from 1; 0 where none is shown
};

/// Whom the message in the row is from: the author, PR_SENT_REPRESENTING_NAME, or when there is none the one who
/// sent it, PR_SENDER_NAME.
std::string AuthorOf(const CZebRow& row);

/// The columns that ReadMessageRow reads.
void SetMessageColumns(CZebTable& table);
MessageRow ReadMessageRow(const CZebRow& row);

/// Newest first ("date"), by subject from A to Z ("subject"), largest first ("size"); equals by date, then
/// by subject, so that the order is settled.
void AddSortKeys(const std::string& by, CZebSortOrder& order);

/// One line of a listing in columns, cut to the terminal's width, with its line end.
/// @param numbered whether the lines begin with the number
std::string MessageLineForPeople(const MessageRow& row, bool numbered, size_t terminalColumns);
std::string MessageHeading(bool numbered, size_t terminalColumns);

/// The same as an object.
nlohmann::ordered_json MessageForMachines(const MessageRow& row);

} // namespace zeb::tools
