// The provider's public constants, for hosts that configure it through IMsgServiceAdmin.
#pragma once

#include "platform/mapi.h"

/// The service's name, as IMsgServiceAdmin::CreateMsgService takes it.
#define ZEBSTORE_SERVICE_NAME "zebstore"

/// The file name of the provider as written in a store's entry identifier.
#define ZEBSTORE_DLL_NAME "zebstore.dll"

/// Settings of the service, for IMsgServiceAdmin::ConfigureMsgService. The store's file.
/// Without it: <local data>/zebapi/<profile>.zeb.
#define PR_ZEBSTORE_PATH_A PROP_TAG(PT_STRING8, 0x67F0)
#define PR_ZEBSTORE_PATH_W PROP_TAG(PT_UNICODE, 0x67F0)
/// "normal" (a commit survives the death of the process) or "full" (also the loss of power).
#define PR_ZEBSTORE_DURABILITY_A PROP_TAG(PT_STRING8, 0x67F1)
#define PR_ZEBSTORE_DURABILITY_W PROP_TAG(PT_UNICODE, 0x67F1)
/// PT_BOOLEAN: create the store's file when it does not exist (true when not given).
#define PR_ZEBSTORE_CREATE PROP_TAG(PT_BOOLEAN, 0x67F2)

/// A computed property of a store: checks the whole file; "ok", or one line for each problem.
#define PR_ZEBSTORE_CHECK_A PROP_TAG(PT_STRING8, 0x67F3)
#define PR_ZEBSTORE_CHECK_W PROP_TAG(PT_UNICODE, 0x67F3)

/// The application id in the header of a store's file (at byte 68, big-endian, as defined by SQLite).
#define ZEBSTORE_APPLICATION_ID 0x5A454253
/// The version of a file as this provider writes it (at byte 60, big-endian). An older file is upgraded when it is
/// opened for writing: all of it is read and rewritten.
#define ZEBSTORE_FILE_VERSION 4

/// Exports for the maintenance of a store's file; they need neither MAPIInitialize nor a session.
extern "C"
{
    /// Reports progress, on the calling thread. With `finding` (UTF-8): one line: the problem and its repair. Without:
    /// `done` of `whole` steps, 0 of 0 when unknown. It must not throw.
    typedef void(STDAPICALLTYPE ZEBSTORE_REPORT)(void* context, const char* finding, ULONGLONG done, ULONGLONG whole);

    /// Repairs a store's file: rebuilds counters, columns and indexes, deletes orphaned rows and unreadable values.
    /// Atomic: all or nothing.
    /// @param path the file, UTF-8
    /// @param copy null: repairs the file itself; else the path of the repaired copy, which is created, UTF-8
    /// @param failure receives the error text, UTF-8, truncated to `failureSize` bytes including the zero; may be null
    /// @return MAPI_E_NOT_FOUND, MAPI_E_COLLISION (`copy` exists),
    /// MAPI_E_CORRUPT_STORE (beyond repair), MAPI_E_BUSY ...
    typedef HRESULT(STDAPICALLTYPE ZEBSTORE_REPAIR)(const char* path, const char* copy, ZEBSTORE_REPORT* report,
                                                    void* context, char* failure, ULONG failureSize);
    HRESULT STDAPICALLTYPE ZebStoreRepair(const char* path, const char* copy, ZEBSTORE_REPORT* report, void* context,
                                          char* failure, ULONG failureSize);

    /// Rewrites a store's file without the free space that deleted content left; parameters as above.
    typedef HRESULT(STDAPICALLTYPE ZEBSTORE_COMPACT)(const char* path, ZEBSTORE_REPORT* report, void* context,
                                                     char* failure, ULONG failureSize);
    HRESULT STDAPICALLTYPE ZebStoreCompact(const char* path, ZEBSTORE_REPORT* report, void* context, char* failure,
                                           ULONG failureSize);
}
