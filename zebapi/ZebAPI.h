// The umbrella header: a host includes this file.
//
// An operation throws a CZebException*, or the _com_error of an empty wrapper. No other exception leaves it, whatever
// fails.
#pragma once

#include "zebapi/AddressBook.h"
#include "zebapi/AdviseSink.h"
#include "zebapi/BinArray.h"
#include "zebapi/Binary.h"
#include "zebapi/CachedTable.h"
#include "zebapi/Container.h"
#include "zebapi/Exception.h"
#include "zebapi/Folder.h"
#include "zebapi/IProp.h"
#include "zebapi/LogSink.h"
#include "zebapi/MEM.h"
#include "zebapi/Mapiload.h"
#include "zebapi/Message.h"
#include "zebapi/MsgStore.h"
#include "zebapi/NAMEID.h"
#include "zebapi/OnePROPVAL.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/Profiles.h"
#include "zebapi/Restrict.h"
#include "zebapi/Row.h"
#include "zebapi/RowSet.h"
#include "zebapi/SESSION.h"
#include "zebapi/SortOrder.h"
#include "zebapi/TAGS.h"
#include "zebapi/Table.h"

/// The version of the library that the host runs with, "1.2.3". Static; never throws.
ZEBAPI_EXPORT const char* Zeb_GetVersion();

/// A text as UTF-8, independent of the ANSI code page. Invalid UTF-16 becomes U+FFFD.
ZEBAPI_EXPORT zeb::CStringA Zeb_Utf8(const zeb::CStringW& text);

/// A text in UTF-8 as 16-bit text; null as an empty one. What is not UTF-8 becomes U+FFFD.
ZEBAPI_EXPORT zeb::CStringW Zeb_Wide(const char* utf8);

/// Whether a default profile is set (CZebAPI::GetDefaultProfileName). Never throws: a failure is logged and false.
ZEBAPI_EXPORT bool Zeb_HasDefaultProfile();

/// The result of the first call of Zeb_HasDefaultProfile in this process, even after profiles have changed.
ZEBAPI_EXPORT bool Zeb_HasDefaultStaticProfile();
