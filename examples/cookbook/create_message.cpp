// Creates a message with a recipient and an attachment in the inbox.
#include "Mapi.h"

#include <cstring>

int main()
try
{
    Mapi mapi;
    CZebFolder inbox = mapi.OpenInbox();

    CZebPropValArray properties(4); // large enough: growing would invalidate pointers into it
    properties[PR_SUBJECT_W] = ZEBW("Minutes");
    properties[PR_MESSAGE_CLASS_W] = ZEBW("IPM.Note");
    properties[PR_MESSAGE_FLAGS] = ULONG(MSGFLAG_UNSENT | MSGFLAG_READ);
    properties[PR_BODY_W].SetUtf8("The minutes are attached.\r\n");
    CZebMessage message = inbox.CreateMessage(properties, false, 0);

    message.AddRecipient(MAPI_TO, ZEBW("Grace Hopper"), ZEBW("grace@example.org"));
    const char minutes[] = "1. Soup\r\n2. Bread\r\n";
    message.AddAttachment(ZEBW("minutes.txt"), minutes, ULONG(std::strlen(minutes)));

    // Nothing is in the store before this call, and everything after it.
    message.SaveChanges(KEEP_OPEN_READWRITE);

    for (CZebRow row : message.GetRecipientTable().Rows({PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W}))
    {
        std::printf("to %s <%s>\n", row[PR_DISPLAY_NAME_W].StringUtf8().GetString(),
                    row[PR_EMAIL_ADDRESS_W].StringUtf8().GetString());
    }
    for (CZebRow row : message.GetAttachmentTable().Rows({PR_ATTACH_NUM, PR_ATTACH_LONG_FILENAME_W}))
    {
        std::printf("attachment %s: %s\n", row[PR_ATTACH_NUM].StringUtf8().GetString(),
                    row[PR_ATTACH_LONG_FILENAME_W].StringUtf8().GetString());
    }
}
catch (...)
{
    return ReportFailure();
}
