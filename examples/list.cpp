// Prints the last ten subjects of the default profile's inbox, in UTF-8, read by row index.
#include "zebapi/ZebAPI.h"

#include <cstdio>

int main()
try
{
    Zeb_GetMAPI().Initialize(false);
    CZebSession session = Zeb_GetMAPI().OpenSession(nullptr, nullptr);
    {
        CZebMsgStore store = session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS);
        CZebTable contents = store.OpenInboxFolder(MAPI_BEST_ACCESS).GetContentsTable(0);
        // Before the first read: cached rows keep their columns.
        contents.SetColumns(2, PR_ENTRYID, PR_SUBJECT_W);
        // An assigned list is notified of changes; one constructed from the table, `CZebCachedTable list(contents)`, is
        // not.
        CZebCachedTable list;
        list = contents;
        const ULONG count = list.GetRowCount();
        for (ULONG i = count > 10 ? count - 10 : 0; i < count; ++i)
        {
            std::printf("%s\n", Zeb_Utf8(list[i][PR_SUBJECT_W].StringW(true)).GetString());
        }
    }
    Zeb_GetMAPI().Uninitialize(&session);
}
catch (...)
{
    std::fprintf(stderr, "%s\n", Zeb_DescribeCurrentException().GetString());
    return 1;
}
