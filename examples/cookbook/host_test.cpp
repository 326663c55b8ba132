// A test of a host's function for CI: on zebstore, with the failure that ZEBSTORE_FAULT asks for.
#include "Mapi.h"

#include <cstdlib>

/// The function under test: the number of unread messages in the inbox.
ULONG CountUnread()
{
    Mapi mapi;
    CZebTable contents = mapi.OpenInbox().GetContentsTable(MAPI_UNICODE);
    CZebRestrictionAllocator unread;
    unread.Allocate();
    unread.CreateBitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_EQZ);
    contents.Restrict(unread, 0);
    return contents.GetRowCount();
}

int Fail(const char* what)
{
    std::printf("FAILED: %s\n", what);
    return 1;
}

/// With a fault the function may fail, but only with a description; without one it must count.
int main()
try
{
    const ULONG unread = CountUnread();
    std::printf("passed: %u unread\n", static_cast<unsigned>(unread));
    return unread == 1 ? 0 : Fail("1 unread expected");
}
catch (...)
{
    // A CZebException*, or a _com_error by value when an object refuses an interface. Both have a description.
    const CStringA text = Zeb_DescribeCurrentException();
    if (std::getenv("ZEBSTORE_FAULT") == nullptr || text.IsEmpty())
    {
        return Fail(text.GetString());
    }
    std::printf("passed: failed with '%s'\n", text.GetString());
}
