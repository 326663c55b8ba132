// A tour: writes a message with a recipient, a file and a named property, is notified of it, finds it, and prints it in UTF-8.
#include "zebapi/ZebAPI.h"

#include <chrono>
#include <cstdio>
#include <future>

class Change : public CAdviseSinkDelegate, public std::promise<void>
{
    // On a thread of the provider's. A row is added once: the message is saved once.
    void OnTableModified_Row_Added(TABLE_NOTIFICATION*) override { set_value(); }
};

void Print(const char* what, CZebTable table, ULONG first, ULONG second)
{
    for (CZebRow row : table.Rows({first, second}))
    {
        std::printf("%s %s, %s\n", what, row[first].StringUtf8().GetString(), row[second].StringUtf8().GetString());
    }
}

int main()
try
{
    const GUID set = {0x7A656254, 0x6F75, 0x7221, {0xA0, 1, 2, 3, 4, 5, 6, 7}};
    Zeb_GetMAPI().Initialize(false);
    CZebSession session = Zeb_GetMAPI().OpenSession(nullptr, nullptr);
    {
        CZebFolder inbox = session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS).OpenInboxFolder(MAPI_BEST_ACCESS);
        const ULONG stars = inbox.GetNamedTag(set, ZEBW("Stars"), PT_LONG);
        CZebTable contents = inbox.GetContentsTable(MAPI_UNICODE);
        Change change;
        CAdviseSinkBinder watch(&change, nullptr);
        watch.AdviseChecked(contents);
        CZebPropValArray properties(2);
        properties[PR_SUBJECT_W].SetUtf8("Gr\u00FC\u00DFe from the tour");
        properties[stars] = 5;
        CZebMessage message = inbox.CreateMessage(properties, false, 0);
        message.AddRecipient(MAPI_TO, ZEBW("Ada Lovelace"), ZEBW("ada@example.org"));
        message.AddAttachment(ZEBW("note.txt"), "a note", 6);
        message.SaveChanges(KEEP_OPEN_READWRITE);
        change.get_future().wait_for(std::chrono::seconds(10));

        CZebRestrictionAllocator wanted;
        wanted.Allocate();
        wanted.CreateContentW(PR_SUBJECT_W, ZEBW("TOUR"), FL_SUBSTRING | FL_IGNORECASE);
        contents.Restrict(wanted, 0);
        contents.SortTable(CZebSortOrder(PR_SUBJECT_W, TABLE_SORT_ASCEND));
        Print("found", contents, PR_SUBJECT_W, stars);
        Print("to", message.GetRecipientTable(), PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W);
        Print("file", message.GetAttachmentTable(), PR_ATTACH_LONG_FILENAME_W, PR_ATTACH_NUM);
    }
    Zeb_GetMAPI().Uninitialize(&session);
}
catch (...)
{
    std::fprintf(stderr, "%s\n", Zeb_DescribeCurrentException().GetString());
    return 1;
}
