// Everything of the library: what a host includes.
//
// What an operation throws is a CZebException*, or the _com_error of an empty wrapper. Nothing else leaves it, whatever fails on
// its way.
#pragma once

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/MEM.h"
#include "zebapi/frame/Mapiload.h"
#include "zebapi/frame/Profiles.h"
#include "zebapi/frame/SESSION.h"
#include "zebapi/objects/AddressBook.h"
#include "zebapi/objects/Container.h"
#include "zebapi/objects/Folder.h"
#include "zebapi/objects/IProp.h"
#include "zebapi/objects/Message.h"
#include "zebapi/objects/MsgStore.h"
#include "zebapi/objects/NAMEID.h"
#include "zebapi/tables/AdviseSink.h"
#include "zebapi/tables/CachedTable.h"
#include "zebapi/tables/Restrict.h"
#include "zebapi/tables/Row.h"
#include "zebapi/tables/RowSet.h"
#include "zebapi/tables/SortOrder.h"
#include "zebapi/tables/Table.h"
#include "zebapi/values/BinArray.h"
#include "zebapi/values/Binary.h"
#include "zebapi/values/OnePROPVAL.h"
#include "zebapi/values/PROPVALArray.h"
#include "zebapi/values/TAGS.h"

/// A text as UTF-8, whatever the ANSI code page is. What is no character of UTF-16 becomes U+FFFD.
ZEBAPI_EXPORT zeb::CStringA Zeb_Utf8(const zeb::CStringW& text);

/// Whether a default profile is set (CZebAPI::GetDefaultProfileName). Never throws: a failure is logged and
/// false.
ZEBAPI_EXPORT bool Zeb_HasDefaultProfile();

/// What Zeb_HasDefaultProfile answered at the first call in this process, also after profiles have changed.
ZEBAPI_EXPORT bool Zeb_HasDefaultStaticProfile();
