// Writes two named properties to a message, and lists all named properties of the message with their names.
#include "Mapi.h"

// A property set of one's own: generate a GUID once and keep it.
const GUID CookbookSet = {0x5C0FFEE0, 0xB00C, 0x4C6B, {0x9A, 1, 2, 3, 4, 5, 6, 7}};

void PrintNamed(CZebMessage& message)
{
    CZebPropTagArray tags;
    message.GetPropList(&tags, MAPI_UNICODE);
    for (int i = 0; i < tags.GetCount(); ++i)
    {
        GUID set{};
        LONG id = 0;
        CStringW name;
        // Tags from 0x80000000 on have names; GetNameOfTag returns false for one without.
        if (tags[i] < 0x80000000 || !message.GetNameOfTag(tags[i], set, id, name))
        {
            continue;
        }
        CStringA label = Zeb_Utf8(name);
        if (name.IsEmpty())
        {
            label.Format("0x%04X", static_cast<unsigned>(id));
        }
        CZebPropValArray values;
        message.GetProps(values, 1, tags[i]);
        std::printf("%s = %s\n", label.GetString(), values.GetAt(0).StringUtf8().GetString());
    }
}

int main()
try
{
    Mapi mapi;
    CZebFolder inbox = mapi.OpenInbox();
    // A store gives each name a tag of its own. Ask the store that holds the message; never save a tag elsewhere.
    const ULONG priority = inbox.GetNamedTag(CookbookSet, ZEBW("Priority"), PT_UNICODE);
    const ULONG ticket = inbox.GetNamedTag(CookbookSet, 0x8001, PT_LONG);

    CZebPropValArray properties(3);
    properties[PR_SUBJECT_W] = ZEBW("Ticket 4711");
    properties[priority] = ZEBW("high");
    properties[ticket] = 4711;
    CZebMessage message = inbox.CreateMessage(properties, true, 0);
    PrintNamed(message);
}
catch (...)
{
    return ReportFailure();
}
