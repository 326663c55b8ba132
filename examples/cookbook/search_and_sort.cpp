// Searches the inbox: subjects that contain "lunch", sent since 2026-01-03; by sender, then by date.
#include "Mapi.h"

/// Seconds since 1970 as a FILETIME, which counts 100 ns since 1601.
FILETIME FileTimeOf(LONGLONG seconds)
{
    const ULONGLONG ticks = static_cast<ULONGLONG>(seconds + 11644473600) * 10000000;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

int main()
try
{
    Mapi mapi;
    CZebTable contents = mapi.OpenInbox().GetContentsTable(MAPI_UNICODE);

    // A restriction is a tree: each node is made by the call that says its kind.
    CZebRestrictionAllocator wanted;
    wanted.Allocate();
    wanted.CreateAnd(2);
    wanted[0].CreateContentW(PR_SUBJECT_W, ZEBW("lunch"), FL_SUBSTRING | FL_IGNORECASE);
    wanted[1].CreateProp(PR_CLIENT_SUBMIT_TIME, RELOP_GE) = FileTimeOf(1767398400);
    contents.Restrict(wanted, 0);

    CZebSortOrder order(PR_SENDER_NAME_W, TABLE_SORT_ASCEND);
    order.Add(PR_CLIENT_SUBMIT_TIME, TABLE_SORT_ASCEND);
    contents.SortTable(order);

    std::printf("%u found\n", static_cast<unsigned>(contents.GetRowCount()));
    for (CZebRow row : contents.Rows({PR_SENDER_NAME_W, PR_SUBJECT_W}))
    {
        std::printf("%-16s %s\n", row[PR_SENDER_NAME_W].StringUtf8().GetString(),
                    row[PR_SUBJECT_W].StringUtf8().GetString());
    }
}
catch (...)
{
    return ReportFailure();
}
