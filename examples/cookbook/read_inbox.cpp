// Lists the inbox, the newest message first; "*" marks an unread one.
#include "Mapi.h"

int main()
try
{
    Mapi mapi;
    CZebTable contents = mapi.OpenInbox().GetContentsTable(MAPI_UNICODE);
    CZebSortOrder newestFirst(PR_CLIENT_SUBMIT_TIME, TABLE_SORT_DESCEND);
    contents.SortTable(newestFirst);
    // The provider sorts, and the loop reads the rows in batches: the inbox may have any size.
    for (CZebRow row : contents.Rows({PR_SENDER_NAME_W, PR_SUBJECT_W, PR_MESSAGE_FLAGS}))
    {
        // A message may lack a sender or a subject; the column then holds PT_ERROR, and UseDefault replaces it.
        const bool unread = (row[PR_MESSAGE_FLAGS].UseDefault(ULONG(MSGFLAG_READ)) & MSGFLAG_READ) == 0;
        const CStringA sender = Zeb_Utf8(row[PR_SENDER_NAME_W].UseDefault(CStringW(ZEBW("(nobody)"))));
        const CStringA subject = Zeb_Utf8(row[PR_SUBJECT_W].UseDefault(CStringW(ZEBW("(no subject)"))));
        std::printf("%c %-16s %s\n", unread ? '*' : ' ', sender.GetString(), subject.GetString());
    }
}
catch (...)
{
    return ReportFailure();
}
