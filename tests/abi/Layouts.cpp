// Sizes, offsets and positions in the tables of virtual functions.
#include "tests/abi/Dump.h"

#include "platform/mapi.h"

#include "tests/support/Slot.h"

#include <cstddef>

namespace abidump
{
namespace
{

void Fact(std::string& out, const char* kind, const std::string& name, unsigned long long value)
{
    out += kind;
    out += " " + name + " " + std::to_string(value) + "\n";
}

#define SIZE_OF(type) Fact(out, "size", #type, sizeof(type))
#define OFFSET_OF(type, member) Fact(out, "offset", #type "." #member, offsetof(type, member))
#define SLOT_OF(type, member) Fact(out, "slot", #type "." #member, zeb::test::SlotOf(&type::member))

void Values(std::string& out)
{
    SIZE_OF(SPropValue);
    OFFSET_OF(SPropValue, ulPropTag);
    OFFSET_OF(SPropValue, dwAlignPad);
    OFFSET_OF(SPropValue, Value);
    OFFSET_OF(SPropValue, Value.i);
    OFFSET_OF(SPropValue, Value.l);
    OFFSET_OF(SPropValue, Value.ul);
    OFFSET_OF(SPropValue, Value.flt);
    OFFSET_OF(SPropValue, Value.dbl);
    OFFSET_OF(SPropValue, Value.b);
    OFFSET_OF(SPropValue, Value.cur);
    OFFSET_OF(SPropValue, Value.at);
    OFFSET_OF(SPropValue, Value.ft);
    OFFSET_OF(SPropValue, Value.lpszA);
    OFFSET_OF(SPropValue, Value.bin);
    OFFSET_OF(SPropValue, Value.bin.lpb);
    OFFSET_OF(SPropValue, Value.lpszW);
    OFFSET_OF(SPropValue, Value.lpguid);
    OFFSET_OF(SPropValue, Value.li);
    OFFSET_OF(SPropValue, Value.MVi);
    OFFSET_OF(SPropValue, Value.MVl.lpl);
    OFFSET_OF(SPropValue, Value.MVbin.lpbin);
    OFFSET_OF(SPropValue, Value.MVszA.lppszA);
    OFFSET_OF(SPropValue, Value.MVszW.lppszW);
    OFFSET_OF(SPropValue, Value.MVguid);
    OFFSET_OF(SPropValue, Value.MVli);
    OFFSET_OF(SPropValue, Value.err);
    OFFSET_OF(SPropValue, Value.x);
    SIZE_OF(SBinary);
    OFFSET_OF(SBinary, cb);
    OFFSET_OF(SBinary, lpb);
    SIZE_OF(SBinaryArray);
    OFFSET_OF(SBinaryArray, cValues);
    OFFSET_OF(SBinaryArray, lpbin);
    SIZE_OF(SShortArray);
    OFFSET_OF(SShortArray, cValues);
    OFFSET_OF(SShortArray, lpi);
    SIZE_OF(SLongArray);
    OFFSET_OF(SLongArray, cValues);
    OFFSET_OF(SLongArray, lpl);
    SIZE_OF(SLPSTRArray);
    OFFSET_OF(SLPSTRArray, cValues);
    OFFSET_OF(SLPSTRArray, lppszA);
    SIZE_OF(SWStringArray);
    OFFSET_OF(SWStringArray, cValues);
    OFFSET_OF(SWStringArray, lppszW);
    SIZE_OF(SGuidArray);
    OFFSET_OF(SGuidArray, cValues);
    OFFSET_OF(SGuidArray, lpguid);
    SIZE_OF(SLargeIntegerArray);
    OFFSET_OF(SLargeIntegerArray, cValues);
    OFFSET_OF(SLargeIntegerArray, lpli);
    SIZE_OF(SDateTimeArray);
    OFFSET_OF(SDateTimeArray, cValues);
    OFFSET_OF(SDateTimeArray, lpft);
    SIZE_OF(SCurrencyArray);
    OFFSET_OF(SCurrencyArray, cValues);
    OFFSET_OF(SCurrencyArray, lpcur);
    SIZE_OF(SDoubleArray);
    OFFSET_OF(SDoubleArray, cValues);
    OFFSET_OF(SDoubleArray, lpdbl);
    SIZE_OF(SRealArray);
    OFFSET_OF(SRealArray, cValues);
    OFFSET_OF(SRealArray, lpflt);
    SIZE_OF(SAppTimeArray);
    OFFSET_OF(SAppTimeArray, cValues);
    OFFSET_OF(SAppTimeArray, lpat);
    SIZE_OF(FILETIME);
    OFFSET_OF(FILETIME, dwLowDateTime);
    OFFSET_OF(FILETIME, dwHighDateTime);
    SIZE_OF(SYSTEMTIME);
    OFFSET_OF(SYSTEMTIME, wYear);
    OFFSET_OF(SYSTEMTIME, wMilliseconds);
    SIZE_OF(GUID);
    OFFSET_OF(GUID, Data1);
    OFFSET_OF(GUID, Data2);
    OFFSET_OF(GUID, Data3);
    OFFSET_OF(GUID, Data4);
    SIZE_OF(LARGE_INTEGER);
    OFFSET_OF(LARGE_INTEGER, QuadPart);
}

void Rows(std::string& out)
{
    SIZE_OF(SRow);
    OFFSET_OF(SRow, ulAdrEntryPad);
    OFFSET_OF(SRow, cValues);
    OFFSET_OF(SRow, lpProps);
    SIZE_OF(SRowSet);
    OFFSET_OF(SRowSet, cRows);
    OFFSET_OF(SRowSet, aRow);
    SIZE_OF(SPropTagArray);
    OFFSET_OF(SPropTagArray, cValues);
    OFFSET_OF(SPropTagArray, aulPropTag);
    SIZE_OF(SSortOrder);
    OFFSET_OF(SSortOrder, ulPropTag);
    OFFSET_OF(SSortOrder, ulOrder);
    SIZE_OF(SSortOrderSet);
    OFFSET_OF(SSortOrderSet, cSorts);
    OFFSET_OF(SSortOrderSet, cCategories);
    OFFSET_OF(SSortOrderSet, cExpanded);
    OFFSET_OF(SSortOrderSet, aSort);
    SIZE_OF(SPropProblem);
    OFFSET_OF(SPropProblem, ulIndex);
    OFFSET_OF(SPropProblem, ulPropTag);
    OFFSET_OF(SPropProblem, scode);
    SIZE_OF(SPropProblemArray);
    OFFSET_OF(SPropProblemArray, cProblem);
    OFFSET_OF(SPropProblemArray, aProblem);
    SIZE_OF(ADRENTRY);
    OFFSET_OF(ADRENTRY, ulReserved1);
    OFFSET_OF(ADRENTRY, cValues);
    OFFSET_OF(ADRENTRY, rgPropVals);
    SIZE_OF(ADRLIST);
    OFFSET_OF(ADRLIST, cEntries);
    OFFSET_OF(ADRLIST, aEntries);
    SIZE_OF(FLATENTRY);
    OFFSET_OF(FLATENTRY, cb);
    OFFSET_OF(FLATENTRY, abEntry);
    SIZE_OF(ENTRYID);
    OFFSET_OF(ENTRYID, abFlags);
    OFFSET_OF(ENTRYID, ab);
    SIZE_OF(MAPIUID);
    OFFSET_OF(MAPIUID, ab);
    SIZE_OF(MAPINAMEID);
    OFFSET_OF(MAPINAMEID, lpguid);
    OFFSET_OF(MAPINAMEID, ulKind);
    OFFSET_OF(MAPINAMEID, Kind);
    OFFSET_OF(MAPINAMEID, Kind.lID);
    OFFSET_OF(MAPINAMEID, Kind.lpwstrName);
    SIZE_OF(MAPIERROR);
    OFFSET_OF(MAPIERROR, ulVersion);
    OFFSET_OF(MAPIERROR, lpszError);
    OFFSET_OF(MAPIERROR, lpszComponent);
    OFFSET_OF(MAPIERROR, ulLowLevelError);
    OFFSET_OF(MAPIERROR, ulContext);
    SIZE_OF(MAPIINIT_0);
    OFFSET_OF(MAPIINIT_0, ulVersion);
    OFFSET_OF(MAPIINIT_0, ulFlags);
    SIZE_OF(WAB_PARAM);
    OFFSET_OF(WAB_PARAM, cbSize);
    OFFSET_OF(WAB_PARAM, hwnd);
    OFFSET_OF(WAB_PARAM, szFileName);
    OFFSET_OF(WAB_PARAM, ulFlags);
    OFFSET_OF(WAB_PARAM, guidPSExt);
}

void Restrictions(std::string& out)
{
    SIZE_OF(SRestriction);
    OFFSET_OF(SRestriction, rt);
    OFFSET_OF(SRestriction, res);
    OFFSET_OF(SRestriction, res.resCompareProps);
    OFFSET_OF(SRestriction, res.resAnd);
    OFFSET_OF(SRestriction, res.resOr);
    OFFSET_OF(SRestriction, res.resNot);
    OFFSET_OF(SRestriction, res.resContent);
    OFFSET_OF(SRestriction, res.resProperty);
    OFFSET_OF(SRestriction, res.resBitMask);
    OFFSET_OF(SRestriction, res.resSize);
    OFFSET_OF(SRestriction, res.resExist);
    OFFSET_OF(SRestriction, res.resSub);
    OFFSET_OF(SRestriction, res.resComment);
    SIZE_OF(SAndRestriction);
    OFFSET_OF(SAndRestriction, cRes);
    OFFSET_OF(SAndRestriction, lpRes);
    SIZE_OF(SOrRestriction);
    OFFSET_OF(SOrRestriction, cRes);
    OFFSET_OF(SOrRestriction, lpRes);
    SIZE_OF(SNotRestriction);
    OFFSET_OF(SNotRestriction, ulReserved);
    OFFSET_OF(SNotRestriction, lpRes);
    SIZE_OF(SContentRestriction);
    OFFSET_OF(SContentRestriction, ulFuzzyLevel);
    OFFSET_OF(SContentRestriction, ulPropTag);
    OFFSET_OF(SContentRestriction, lpProp);
    SIZE_OF(SPropertyRestriction);
    OFFSET_OF(SPropertyRestriction, relop);
    OFFSET_OF(SPropertyRestriction, ulPropTag);
    OFFSET_OF(SPropertyRestriction, lpProp);
    SIZE_OF(SComparePropsRestriction);
    OFFSET_OF(SComparePropsRestriction, relop);
    OFFSET_OF(SComparePropsRestriction, ulPropTag1);
    OFFSET_OF(SComparePropsRestriction, ulPropTag2);
    SIZE_OF(SBitMaskRestriction);
    OFFSET_OF(SBitMaskRestriction, relBMR);
    OFFSET_OF(SBitMaskRestriction, ulPropTag);
    OFFSET_OF(SBitMaskRestriction, ulMask);
    SIZE_OF(SSizeRestriction);
    OFFSET_OF(SSizeRestriction, relop);
    OFFSET_OF(SSizeRestriction, ulPropTag);
    OFFSET_OF(SSizeRestriction, cb);
    SIZE_OF(SExistRestriction);
    OFFSET_OF(SExistRestriction, ulReserved1);
    OFFSET_OF(SExistRestriction, ulPropTag);
    OFFSET_OF(SExistRestriction, ulReserved2);
    SIZE_OF(SSubRestriction);
    OFFSET_OF(SSubRestriction, ulSubObject);
    OFFSET_OF(SSubRestriction, lpRes);
    SIZE_OF(SCommentRestriction);
    OFFSET_OF(SCommentRestriction, cValues);
    OFFSET_OF(SCommentRestriction, lpRes);
    OFFSET_OF(SCommentRestriction, lpProp);
}

void Notifications(std::string& out)
{
    SIZE_OF(NOTIFICATION);
    OFFSET_OF(NOTIFICATION, ulEventType);
    OFFSET_OF(NOTIFICATION, ulAlignPad);
    OFFSET_OF(NOTIFICATION, info);
    OFFSET_OF(NOTIFICATION, info.tab);
    OFFSET_OF(NOTIFICATION, info.obj);
    OFFSET_OF(NOTIFICATION, info.newmail);
    OFFSET_OF(NOTIFICATION, info.err);
    OFFSET_OF(NOTIFICATION, info.ext);
    SIZE_OF(TABLE_NOTIFICATION);
    OFFSET_OF(TABLE_NOTIFICATION, ulTableEvent);
    OFFSET_OF(TABLE_NOTIFICATION, hResult);
    OFFSET_OF(TABLE_NOTIFICATION, propIndex);
    OFFSET_OF(TABLE_NOTIFICATION, propPrior);
    OFFSET_OF(TABLE_NOTIFICATION, row);
    OFFSET_OF(TABLE_NOTIFICATION, ulPad);
    SIZE_OF(OBJECT_NOTIFICATION);
    OFFSET_OF(OBJECT_NOTIFICATION, cbEntryID);
    OFFSET_OF(OBJECT_NOTIFICATION, lpEntryID);
    OFFSET_OF(OBJECT_NOTIFICATION, ulObjType);
    OFFSET_OF(OBJECT_NOTIFICATION, cbParentID);
    OFFSET_OF(OBJECT_NOTIFICATION, lpParentID);
    OFFSET_OF(OBJECT_NOTIFICATION, cbOldID);
    OFFSET_OF(OBJECT_NOTIFICATION, lpOldID);
    OFFSET_OF(OBJECT_NOTIFICATION, cbOldParentID);
    OFFSET_OF(OBJECT_NOTIFICATION, lpOldParentID);
    OFFSET_OF(OBJECT_NOTIFICATION, lpPropTagArray);
    SIZE_OF(NEWMAIL_NOTIFICATION);
    OFFSET_OF(NEWMAIL_NOTIFICATION, cbEntryID);
    OFFSET_OF(NEWMAIL_NOTIFICATION, lpEntryID);
    OFFSET_OF(NEWMAIL_NOTIFICATION, cbParentID);
    OFFSET_OF(NEWMAIL_NOTIFICATION, lpParentID);
    OFFSET_OF(NEWMAIL_NOTIFICATION, ulFlags);
    OFFSET_OF(NEWMAIL_NOTIFICATION, lpszMessageClass);
    OFFSET_OF(NEWMAIL_NOTIFICATION, ulMessageFlags);
    SIZE_OF(ERROR_NOTIFICATION);
    OFFSET_OF(ERROR_NOTIFICATION, cbEntryID);
    OFFSET_OF(ERROR_NOTIFICATION, lpEntryID);
    OFFSET_OF(ERROR_NOTIFICATION, scode);
    OFFSET_OF(ERROR_NOTIFICATION, ulFlags);
    OFFSET_OF(ERROR_NOTIFICATION, lpMAPIError);
}

void Slots(std::string& out)
{
    SLOT_OF(IUnknown, AddRef);
    SLOT_OF(IUnknown, Release);
    SLOT_OF(IMAPISession, GetLastError);
    SLOT_OF(IMAPISession, GetMsgStoresTable);
    SLOT_OF(IMAPISession, OpenMsgStore);
    SLOT_OF(IMAPISession, OpenAddressBook);
    SLOT_OF(IMAPISession, OpenEntry);
    SLOT_OF(IMAPISession, CompareEntryIDs);
    SLOT_OF(IMAPISession, Advise);
    SLOT_OF(IMAPISession, Unadvise);
    SLOT_OF(IMAPISession, AdminServices);
    SLOT_OF(IMAPISession, Logoff);
    SLOT_OF(IMAPISession, SetDefaultStore);
    SLOT_OF(IMAPISession, GetStatusTable);
    SLOT_OF(IMsgStore, GetLastError);
    SLOT_OF(IMsgStore, SaveChanges);
    SLOT_OF(IMsgStore, GetProps);
    SLOT_OF(IMsgStore, OpenProperty);
    SLOT_OF(IMsgStore, Advise);
    SLOT_OF(IMsgStore, Unadvise);
    SLOT_OF(IMsgStore, CompareEntryIDs);
    SLOT_OF(IMsgStore, OpenEntry);
    SLOT_OF(IMsgStore, SetReceiveFolder);
    SLOT_OF(IMsgStore, GetReceiveFolder);
    SLOT_OF(IMsgStore, GetReceiveFolderTable);
    SLOT_OF(IMsgStore, StoreLogoff);
    SLOT_OF(IMsgStore, AbortSubmit);
    SLOT_OF(IMAPIProp, GetLastError);
    SLOT_OF(IMAPIProp, SaveChanges);
    SLOT_OF(IMAPIProp, GetProps);
    SLOT_OF(IMAPIProp, GetPropList);
    SLOT_OF(IMAPIProp, OpenProperty);
    SLOT_OF(IMAPIProp, SetProps);
    SLOT_OF(IMAPIProp, DeleteProps);
    SLOT_OF(IMAPIProp, CopyTo);
    SLOT_OF(IMAPIProp, CopyProps);
    SLOT_OF(IMAPIProp, GetNamesFromIDs);
    SLOT_OF(IMAPIProp, GetIDsFromNames);
    SLOT_OF(IMAPIContainer, GetContentsTable);
    SLOT_OF(IMAPIContainer, GetHierarchyTable);
    SLOT_OF(IMAPIContainer, OpenEntry);
    SLOT_OF(IMAPIContainer, SetSearchCriteria);
    SLOT_OF(IMAPIContainer, GetSearchCriteria);
    SLOT_OF(IMAPIFolder, CreateMessage);
    SLOT_OF(IMAPIFolder, CopyMessages);
    SLOT_OF(IMAPIFolder, DeleteMessages);
    SLOT_OF(IMAPIFolder, CreateFolder);
    SLOT_OF(IMAPIFolder, CopyFolder);
    SLOT_OF(IMAPIFolder, DeleteFolder);
    SLOT_OF(IMAPIFolder, SetReadFlags);
    SLOT_OF(IMAPIFolder, GetMessageStatus);
    SLOT_OF(IMAPIFolder, SetMessageStatus);
    SLOT_OF(IMAPIFolder, EmptyFolder);
    SLOT_OF(IMessage, GetAttachmentTable);
    SLOT_OF(IMessage, OpenAttach);
    SLOT_OF(IMessage, CreateAttach);
    SLOT_OF(IMessage, DeleteAttach);
    SLOT_OF(IMessage, GetRecipientTable);
    SLOT_OF(IMessage, ModifyRecipients);
    SLOT_OF(IMessage, SubmitMessage);
    SLOT_OF(IMessage, SetReadFlag);
    SLOT_OF(IMAPITable, GetLastError);
    SLOT_OF(IMAPITable, Advise);
    SLOT_OF(IMAPITable, Unadvise);
    SLOT_OF(IMAPITable, GetStatus);
    SLOT_OF(IMAPITable, SetColumns);
    SLOT_OF(IMAPITable, QueryColumns);
    SLOT_OF(IMAPITable, GetRowCount);
    SLOT_OF(IMAPITable, SeekRow);
    SLOT_OF(IMAPITable, SeekRowApprox);
    SLOT_OF(IMAPITable, QueryPosition);
    SLOT_OF(IMAPITable, FindRow);
    SLOT_OF(IMAPITable, Restrict);
    SLOT_OF(IMAPITable, CreateBookmark);
    SLOT_OF(IMAPITable, FreeBookmark);
    SLOT_OF(IMAPITable, SortTable);
    SLOT_OF(IMAPITable, QuerySortOrder);
    SLOT_OF(IMAPITable, QueryRows);
    SLOT_OF(IMAPITable, Abort);
    SLOT_OF(IMAPITable, ExpandRow);
    SLOT_OF(IMAPITable, SetCollapseState);
    SLOT_OF(IAddrBook, OpenEntry);
    SLOT_OF(IAddrBook, CompareEntryIDs);
    SLOT_OF(IAddrBook, Address);
    SLOT_OF(IAddrBook, GetPAB);
    SLOT_OF(IAddrBook, SetPAB);
    SLOT_OF(IAddrBook, GetDefaultDir);
    SLOT_OF(IAddrBook, GetSearchPath);
    SLOT_OF(IABContainer, CreateEntry);
    SLOT_OF(IABContainer, CopyEntries);
    SLOT_OF(IABContainer, DeleteEntries);
    SLOT_OF(IABContainer, ResolveNames);
    SLOT_OF(IDistList, CreateEntry);
    SLOT_OF(IDistList, CopyEntries);
    SLOT_OF(IDistList, DeleteEntries);
    SLOT_OF(IDistList, ResolveNames);
    SLOT_OF(IProfAdmin, GetLastError);
    SLOT_OF(IProfAdmin, GetProfileTable);
    SLOT_OF(IProfAdmin, CreateProfile);
    SLOT_OF(IProfAdmin, DeleteProfile);
    SLOT_OF(IProfAdmin, CopyProfile);
    SLOT_OF(IProfAdmin, RenameProfile);
    SLOT_OF(IProfAdmin, SetDefaultProfile);
    SLOT_OF(IProfAdmin, AdminServices);
    SLOT_OF(IMsgServiceAdmin, GetLastError);
    SLOT_OF(IMsgServiceAdmin, GetMsgServiceTable);
    SLOT_OF(IMsgServiceAdmin, CreateMsgService);
    SLOT_OF(IMsgServiceAdmin, DeleteMsgService);
    SLOT_OF(IMsgServiceAdmin, ConfigureMsgService);
    SLOT_OF(IMsgServiceAdmin, OpenProfileSection);
    SLOT_OF(IMAPIAdviseSink, OnNotify);
    SLOT_OF(IStream, Read);
    SLOT_OF(IStream, Write);
    SLOT_OF(IStream, Seek);
    SLOT_OF(IStream, SetSize);
    SLOT_OF(IStream, Stat);
    SLOT_OF(IAttach, GetProps);
    SLOT_OF(IAttach, SetProps);
}

} // namespace

std::string Layouts()
{
    std::string out;
    for (const auto& [name, size] :
         {std::pair("LONG", sizeof(LONG)), std::pair("ULONG", sizeof(ULONG)), std::pair("HRESULT", sizeof(HRESULT)),
          std::pair("WCHAR", sizeof(WCHAR)), std::pair("BOOL", sizeof(BOOL)), std::pair("BOOKMARK", sizeof(BOOKMARK)),
          std::pair("INT_PTR", sizeof(INT_PTR)), std::pair("HWND", sizeof(HWND))})
    {
        Fact(out, "size", name, size);
    }
    Values(out);
    Rows(out);
    Restrictions(out);
    Notifications(out);
    Slots(out);
    return out;
}

} // namespace abidump
