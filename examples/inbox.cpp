// Prints the subjects of the default profile's inbox.
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
        contents.SetColumns(2, PR_ENTRYID, PR_SUBJECT);
        CZebRowSet rows;
        contents.QueryRows(&rows, 0, nullptr, nullptr);
        for (ULONG i = 0; i < rows.Count(); ++i)
            std::printf("%s\n", rows[i][PR_SUBJECT].String(true).GetString());
    }
    Zeb_GetMAPI().Uninitialize(&session);
}
catch (CException* e)
{
    std::fprintf(stderr, "%s\n", Zeb_GetExceptionDescription(e).GetString());
    e->Delete();
    return 1;
}
