// Prints the newest message of the folder Inbox/News: its HTML if it has one, else its plain text.
#include "Mapi.h"

const ULONG HtmlTag = PROP_TAG(PT_BINARY, 0x1013); // PR_HTML: bytes in the code page PR_INTERNET_CPID
const ULONG CodePageTag = PROP_TAG(PT_LONG, 0x3FDE);

/// Prints a binary property of any length. Bodies are read as streams: GetProps refuses long values.
void PrintStream(CZebMessage& message, ULONG tag)
{
    CComPtr<IStream> stream = message.OpenProperty(tag, 0);
    char buffer[4096];
    ULONG read = 0;
    do
    {
        ThrowIfFailed(stream->Read(buffer, sizeof buffer, &read));
        std::fwrite(buffer, 1, read, stdout);
    } while (read > 0);
}

CZebMessage OpenNewest(CZebMsgStore& store, CZebFolder folder)
{
    CZebTable contents = folder.GetContentsTable(MAPI_UNICODE);
    contents.SetColumns(1, PR_ENTRYID);
    contents.SortTable(CZebSortOrder(PR_CLIENT_SUBMIT_TIME, TABLE_SORT_DESCEND));
    CZebRowSet rows;
    contents.QueryRows(&rows, 1, nullptr, nullptr);
    CZebMessage message;
    store.OpenEntry(rows[0][PR_ENTRYID], message, 0);
    return message;
}

int main()
try
{
    Mapi mapi;
    CZebMsgStore store = mapi.OpenStore();
    CZebMessage message = OpenNewest(store, store.OpenInboxFolder(0).OpenFolderByNameW(ZEBW("News")));
    CZebPropValArray values;
    message.GetProps(values, 3, PR_SUBJECT_W, HtmlTag, CodePageTag);
    std::printf("Subject: %s\n", values[PR_SUBJECT_W].StringUtf8().GetString());
    // A long HTML is reported as MAPI_E_NOT_ENOUGH_MEMORY: it exists. Only MAPI_E_NOT_FOUND means that there is none.
    const SPropValue& html = values.GetAt(1);
    if (PROP_TYPE(html.ulPropTag) == PT_ERROR && html.Value.err == MAPI_E_NOT_FOUND)
    {
        std::printf("\n%s\n", Zeb_Utf8(message.GetLongStringW(PR_BODY_W)).GetString());
        return 0;
    }
    std::printf("HTML in code page %s\n\n", values[CodePageTag].StringUtf8().GetString());
    PrintStream(message, HtmlTag);
}
catch (...)
{
    return ReportFailure();
}
