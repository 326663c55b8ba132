// Everything of the library: what a host includes.
//
// What an operation throws is a CZebException*, or the _com_error of an empty wrapper.
// Nothing else leaves it, whatever fails on its way.
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

/// A text as UTF-8, whatever the ANSI code page is. What is no character of UTF-16 becomes U+FFFD.
ZEBAPI_EXPORT zeb::CStringA Zeb_Utf8(const zeb::CStringW& text);

/// A text in UTF-8 as 16-bit text; null as an empty one. What is not UTF-8 becomes U+FFFD.
ZEBAPI_EXPORT zeb::CStringW Zeb_Wide(const char* utf8);

/// Whether a default profile is set (CZebAPI::GetDefaultProfileName). Never throws: a failure is logged and false.
ZEBAPI_EXPORT bool Zeb_HasDefaultProfile();

/// What Zeb_HasDefaultProfile answered at the first call in this process, also after profiles have changed.
ZEBAPI_EXPORT bool Zeb_HasDefaultStaticProfile();
