// The pointer-sized arguments of MAPI's methods on 64-bit Windows, as published. Some compilers' headers declare
// them with 32 bits: with those this file does not compile.
#include "platform/mapi.h"

#include <type_traits>

// The Linux headers' calling convention carries an attribute that clang does not take on pointers to members.
#if defined(__clang__)
#pragma clang diagnostic ignored "-Wignored-attributes"
#endif

// A pointer to a member converts to no other signature.
#define TAKES(interface, method, ...)                                                                                  \
    [[maybe_unused]] constexpr HRESULT (STDMETHODCALLTYPE interface::* interface##method)(__VA_ARGS__) =               \
        &interface::method

static_assert(std::is_same_v<BOOKMARK, ULONG_PTR>);

TAKES(IMAPITable, Advise, ULONG, LPMAPIADVISESINK, ULONG_PTR*);
TAKES(IMAPITable, Unadvise, ULONG_PTR);
TAKES(IMAPITable, SeekRow, ULONG_PTR, LONG, LONG*);
TAKES(IMAPITable, FindRow, LPSRestriction, ULONG_PTR, ULONG);
TAKES(IMAPITable, CreateBookmark, ULONG_PTR*);
TAKES(IMAPITable, FreeBookmark, ULONG_PTR);
TAKES(IMAPITable, SetCollapseState, ULONG, ULONG, LPBYTE, ULONG_PTR*);

TAKES(IMsgStore, Advise, ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*);
TAKES(IMsgStore, Unadvise, ULONG_PTR);

TAKES(IMAPISession, Advise, ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*);
TAKES(IMAPISession, Unadvise, ULONG_PTR);
TAKES(IMAPISession, OpenMsgStore, ULONG_PTR, ULONG, LPENTRYID, LPCIID, ULONG, LPMDB*);
TAKES(IMAPISession, OpenAddressBook, ULONG_PTR, LPCIID, ULONG, LPADRBOOK*);
TAKES(IMAPISession, Logoff, ULONG_PTR, ULONG, ULONG);
TAKES(IMAPISession, ShowForm, ULONG_PTR, LPMDB, LPMAPIFOLDER, LPCIID, ULONG_PTR, LPMESSAGE, ULONG, ULONG, ULONG, ULONG,
      LPSTR);
TAKES(IMAPISession, PrepareForm, LPCIID, LPMESSAGE, ULONG_PTR*);

TAKES(IAddrBook, Advise, ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*);
TAKES(IAddrBook, Unadvise, ULONG_PTR);
TAKES(IAddrBook, Address, ULONG_PTR*, LPADRPARM, LPADRLIST*);
TAKES(IAddrBook, Details, ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID, LPTSTR, ULONG);
TAKES(IAddrBook, RecipOptions, ULONG_PTR, ULONG, LPADRENTRY);

TAKES(IMAPIProp, CopyTo, ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,
      LPSPropProblemArray*);
TAKES(IMAPIProp, CopyProps, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG, LPSPropProblemArray*);
TAKES(IMessage, DeleteAttach, ULONG, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IMAPIFolder, CopyMessages, LPENTRYLIST, LPCIID, LPVOID, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IMAPIFolder, DeleteMessages, LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IMAPIFolder, CopyFolder, ULONG, LPENTRYID, LPCIID, LPVOID, LPTSTR, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IMAPIFolder, DeleteFolder, ULONG, LPENTRYID, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IMAPIFolder, SetReadFlags, LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IMAPIFolder, EmptyFolder, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IABContainer, CopyEntries, LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IDistList, CopyEntries, LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG);
TAKES(IProviderAdmin, CreateProvider, LPTSTR, ULONG, LPSPropValue, ULONG_PTR, ULONG, LPMAPIUID);
