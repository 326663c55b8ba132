#include "tools/common/HostSession.h"
#include "tools/common/Output.h"
#include "tools/common/Times.h"
#include "tools/zebview/RowList.h"

#include <algorithm>

namespace zeb::view
{
namespace
{

using tools::NumberOf;
using tools::TextOf;

std::string DateCell(const CZebRow& row)
{
    for (const ULONG tag : {PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME})
    {
        if (row.hasRealValue(tag))
        {
            return tools::TimeForPeople(static_cast<const FILETIME&>(row[tag]), tools::Zone::Local);
        }
    }
    return "";
}

std::string SenderCell(const CZebRow& row)
{
    const std::string author = TextOf(row, PR_SENT_REPRESENTING_NAME_W);
    return author.empty() ? TextOf(row, PR_SENDER_NAME_W) : author;
}

std::string SubjectCell(const CZebRow& row)
{
    return TextOf(row, PR_SUBJECT_W);
}

std::string SizeCell(const CZebRow& row)
{
    return tools::Grouped(static_cast<unsigned long long>(std::max<LONG>(NumberOf(row, PR_MESSAGE_SIZE), 0)));
}

std::string ClassCell(const CZebRow& row)
{
    return TextOf(row, PR_MESSAGE_CLASS_W);
}

std::string NameCell(const CZebRow& row)
{
    return TextOf(row, PR_DISPLAY_NAME_W);
}

std::string KindCell(const CZebRow& row)
{
    switch (NumberOf(row, PR_OBJECT_TYPE))
    {
    case MAPI_MAILUSER:
        return "user";
    case MAPI_DISTLIST:
        return "list";
    case MAPI_ABCONT:
        return "container";
    default:
        return "";
    }
}

std::string AddressTypeCell(const CZebRow& row)
{
    return TextOf(row, PR_ADDRTYPE_W);
}

std::string AddressCell(const CZebRow& row)
{
    return TextOf(row, PR_EMAIL_ADDRESS_W);
}

} // namespace

const RowKind& MessageKind()
{
    static const RowKind Kind = {
        {{"Date", 165, false, {PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME}, true, &DateCell},
         {"From", 170, false, {PR_SENT_REPRESENTING_NAME_W, PR_SENDER_NAME_W}, false, &SenderCell},
         {"Subject", 320, false, {PR_SUBJECT_W}, false, &SubjectCell},
         {"Size", 80, true, {PR_MESSAGE_SIZE}, true, &SizeCell},
         {"Class", 110, false, {PR_MESSAGE_CLASS_W}, false, &ClassCell}},
        {PR_ENTRYID, PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME, PR_SENT_REPRESENTING_NAME_W, PR_SENDER_NAME_W,
         PR_SUBJECT_W, PR_MESSAGE_SIZE, PR_MESSAGE_FLAGS, PR_MESSAGE_CLASS_W},
        {PR_SUBJECT_W, PR_SENDER_NAME_W, PR_SENT_REPRESENTING_NAME_W},
        0,
        "message",
        "messages"};
    return Kind;
}

const RowKind& AddressKind()
{
    static const RowKind Kind = {{{"Name", 240, false, {PR_DISPLAY_NAME_W}, false, &NameCell},
                                  {"Kind", 80, false, {}, false, &KindCell},
                                  {"Type", 70, false, {PR_ADDRTYPE_W}, false, &AddressTypeCell},
                                  {"Address", 330, false, {PR_EMAIL_ADDRESS_W}, false, &AddressCell}},
                                 {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W},
                                 {PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W},
                                 0,
                                 "entry",
                                 "entries"};
    return Kind;
}

} // namespace zeb::view
