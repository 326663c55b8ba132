// Lists the containers of the address book, and finds an entry by the beginning of a name.
#include "Mapi.h"

void PrintEntries(CZebTable entries)
{
    for (CZebRow row : entries.Rows({PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_OBJECT_TYPE}))
    {
        const bool list = row[PR_OBJECT_TYPE].UseDefault(ULONG(MAPI_MAILUSER)) == MAPI_DISTLIST;
        // A list has no address: the column holds PT_ERROR.
        const CStringW address = row[PR_EMAIL_ADDRESS_W].UseDefault(CStringW());
        std::printf("  %s %s\n", row[PR_DISPLAY_NAME_W].StringUtf8().GetString(),
                    list ? "(list)" : Zeb_Utf8(address).GetString());
    }
}

int main()
try
{
    Mapi mapi;
    CZebAddressBook book = mapi.Session().OpenAddressBook(nullptr, AB_NO_DIALOG);
    CZebTable containers = book.OpenRootContainer(0).GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH);
    for (CZebRow row : containers.Rows({PR_ENTRYID, PR_DISPLAY_NAME_W}))
    {
        std::printf("%s\n", row[PR_DISPLAY_NAME_W].StringUtf8().GetString());
        // Not OpenContainer: for contacts that opens the folder of the store, whose rows are messages.
        CZebABContainer container;
        book.OpenEntry(row[PR_ENTRYID], container, MAPI_BEST_ACCESS);
        PrintEntries(container.GetContentsTable(MAPI_UNICODE));
    }

    // PR_ANR is how a provider resolves what a user types: by the beginnings of the words of a name.
    CZebRestrictionAllocator typed;
    typed.Allocate();
    typed.CreateProp(PR_ANR_W, RELOP_EQ) = ZEBW("lov");
    CZebTable found = book.OpenMainContainer(nullptr).GetContentsTable(MAPI_UNICODE);
    found.Restrict(typed, 0);
    std::printf("'lov' is\n");
    PrintEntries(found);
}
catch (...)
{
    return ReportFailure();
}
