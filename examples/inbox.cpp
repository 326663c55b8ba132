// Prints the subjects of the default profile's inbox, in UTF-8.
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
        contents.SetColumns(2, PR_ENTRYID, PR_SUBJECT_W);
        CZebRowSet rows;
        contents.QueryRows(&rows, 0, nullptr, nullptr);
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            std::printf("%s\n", Zeb_Utf8(rows[i][PR_SUBJECT_W].StringW(true)).GetString());
        }
    }
    Zeb_GetMAPI().Uninitialize(&session);
}
catch (...)
{
    std::fprintf(stderr, "%s\n", Zeb_DescribeCurrentException().GetString());
    return 1;
}
