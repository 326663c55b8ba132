// Lists the default container of the Windows Address Book: no profile, no session.
#include "zebapi/ZebAPI.h"

#include <cstdio>

/// Starts and ends the Windows Address Book.
struct AddressBookLibrary
{
    AddressBookLibrary() { Zeb_GetMAPI().Initialize(true); }
    ~AddressBookLibrary() { Zeb_GetMAPI().Uninitialize(nullptr); }
};

/// Frees the rows of a set and the set. The Windows Address Book has no FreeProws, so CZebRowSet cannot free them.
struct WabRows
{
    SRowSet* set = nullptr;
    ~WabRows()
    {
        for (ULONG i = 0; set != nullptr && i < set->cRows; ++i)
        {
            Zeb_MemFree(set->aRow[i].lpProps);
        }
        Zeb_MemFree(set);
    }
};

int main()
try
{
    AddressBookLibrary library;
    CZebAddressBook book = Zeb_GetMAPI().GetWABAddressBook(false);
    CZebTable entries = book.OpenMainContainer(nullptr).GetContentsTable(MAPI_UNICODE);
    entries.SetColumns(2, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE);
    for (;;)
    {
        WabRows rows;
        entries.QueryRows(&rows.set, 50, nullptr, nullptr);
        if (rows.set->cRows == 0)
        {
            return 0;
        }
        for (ULONG i = 0; i < rows.set->cRows; ++i)
        {
            const CZebRow row(&rows.set->aRow[i], nullptr);
            std::printf("%s\n", row[PR_DISPLAY_NAME_W].StringUtf8().GetString());
        }
    }
}
catch (...)
{
    std::fprintf(stderr, "%s\n", Zeb_DescribeCurrentException().GetString());
    return 1;
}
