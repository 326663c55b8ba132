// The names of MAPI's constants.
#pragma once

#include "platform/export.h"
#include "platform/mapi.h"
#include "zebapi/constants/NameTable.h"

// The names of MAPI's constants, in 22 tables: MAPIErrors, CMCErrors, PropTags (by full tag; text properties
// as PT_STRING8), PropIDs (by property identifier), PropType, FolderType, TableStatus, TableType, SortOrder,
// RestrictionType, RelOp, Bmr, FuzzyLevel, MAPIObjTypes, NotifEvents, TableEvents, MsgFlags, RecipType,
// EIDFlags, ResourceType, Priority and AttachMethod. Table names are case-insensitive. An unknown table, or a null
// name, behaves like a row that is not found. The longest name has 43 characters: give buffers of at least 44. Nothing
// here throws, and every function may be called from any thread.

/// The name of the first row with this value, copied to `buffer` if not null; without a buffer the pointer is to static
/// storage. Not found: null, and the buffer then holds the value as "0x%08X".
ZEBAPI_EXPORT const char* Zeb_NameFromValue(const char* table, ULONG value, char* buffer = nullptr);
/// The name of a row, copied into `buffer`. Past the last row: null, and the buffer gets "Row %lu Not Found".
ZEBAPI_EXPORT const char* Zeb_NameAt(const char* table, ULONG index, char* buffer);
/// The value of a row; 0 past the last.
ZEBAPI_EXPORT ULONG Zeb_ValueAt(const char* table, ULONG index);
/// The number of rows.
ZEBAPI_EXPORT ULONG Zeb_TableCount(const char* table);
/// The value of the first row with this name, case-sensitive. 1 when found, else 0 and `value` is unchanged.
ZEBAPI_EXPORT int Zeb_ValueFromName(const char* table, const char* name, ULONG* value);
