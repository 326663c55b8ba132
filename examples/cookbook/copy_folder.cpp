// Copies the folder Inbox/Projects with its subfolders to Archive/Projects 2026.
#include "Mapi.h"

/// Copies, unless the target exists.
/// @return whether the folder was copied
bool CopyUnlessThere(CZebFolder& from, const SBinary& folder, CZebFolder& to, const WCHAR* newName)
try
{
    from.CopyFolder(folder, to, newName);
    return true;
}
catch (CZebException* exception)
{
    // An exception is caught by pointer. One that is expected is deleted; any other goes on to the caller.
    if (exception->GetResult() != MAPI_E_COLLISION)
    {
        throw;
    }
    exception->Delete();
    return false;
}

int main()
try
{
    Mapi mapi;
    CZebMsgStore store = mapi.OpenStore();
    CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
    CZebFolder top = store.OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    CZebFolder archive = top.OpenFolderByNameW(ZEBW("Archive"));
    const CZebBinary projects = inbox.GetFolderEntryIdByNameW(ZEBW("Projects"));

    const bool copied = CopyUnlessThere(inbox, projects, archive, ZEBW("Projects 2026"));
    std::printf("%s\n", copied ? "copied" : "already there");
    CZebFolder copy = archive.OpenFolderByNameW(ZEBW("Projects 2026"));
    for (CZebRow row : copy.GetContentsTable(MAPI_UNICODE).Rows({PR_ENTRYID, PR_SUBJECT_W}))
    {
        std::printf("  %s\n", row[PR_SUBJECT_W].StringUtf8().GetString());
    }
}
catch (...)
{
    return ReportFailure();
}
