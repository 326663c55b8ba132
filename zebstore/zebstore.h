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

/// "on" or "off": makes or drops the text index of the store's file, as ZebStoreIndex.
#define PR_ZEBSTORE_INDEX_A PROP_TAG(PT_STRING8, 0x67F4)
#define PR_ZEBSTORE_INDEX_W PROP_TAG(PT_UNICODE, 0x67F4)

/// A computed property of a store: checks the whole file; "ok", or one line for each problem.
#define PR_ZEBSTORE_CHECK_A PROP_TAG(PT_STRING8, 0x67F3)
#define PR_ZEBSTORE_CHECK_W PROP_TAG(PT_UNICODE, 0x67F3)

/// The application id in the header of a store's file (at byte 68, big-endian, as defined by SQLite).
#define ZEBSTORE_APPLICATION_ID 0x5A454253
/// The version of a file as this provider writes it (at byte 60, big-endian). An older file is upgraded when it is
/// opened for writing: all of it is read and rewritten.
#define ZEBSTORE_FILE_VERSION 6

/// What ZebStoreIndex does: tells the state, and opens the file only for reading; makes the index, or where there is one
/// indexes its waiting messages; drops the index.
#define ZEBSTORE_INDEX_STATUS 0u
#define ZEBSTORE_INDEX_ON 1u
#define ZEBSTORE_INDEX_OFF 2u

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

    /// Copies a store's file as it is at one moment, while other processes may read and write it. All or nothing.
    /// @param copy the path of the copy, which is created, UTF-8. The others, and the results, as for ZebStoreRepair
    typedef HRESULT(STDAPICALLTYPE ZEBSTORE_BACKUP)(const char* path, const char* copy, ZEBSTORE_REPORT* report,
                                                    void* context, char* failure, ULONG failureSize);
    HRESULT STDAPICALLTYPE ZebStoreBackup(const char* path, const char* copy, ZEBSTORE_REPORT* report, void* context,
                                          char* failure, ULONG failureSize);

    /// The provider's version and that of the database engine in it: "zebstore 1.2.3 (SQLite 3.45.6)". Static.
    typedef const char*(STDAPICALLTYPE ZEBSTORE_VERSION)();
    const char* STDAPICALLTYPE ZebStoreVersion();

    /// The text index of a store's file: restrictions that search for a text in subject, sender, recipients or body look
    /// up the messages that may have it instead of reading all. It is kept with every change of a message.
    typedef struct
    {
        ULONG isOn;         ///< 1: there is an index; 2: there is one that another version made, which is not used
        ULONGLONG messages; ///< in the file, those inside attachments left out
        ULONGLONG waiting;  ///< of these, those that are not indexed yet and are read by each search
        ULONGLONG bytes;    ///< the size of the index, nearly
    } ZEBSTORE_INDEX_STATE;

    /// Switches the text index of a store's file; what was indexed before a failure stays so. Parameters as above.
    /// @param action ZEBSTORE_INDEX_STATUS, ZEBSTORE_INDEX_ON or ZEBSTORE_INDEX_OFF
    /// @param state receives the state afterwards; may be null
    typedef HRESULT(STDAPICALLTYPE ZEBSTORE_INDEX)(const char* path, ULONG action, ZEBSTORE_INDEX_STATE* state,
                                                   ZEBSTORE_REPORT* report, void* context, char* failure,
                                                   ULONG failureSize);
    HRESULT STDAPICALLTYPE ZebStoreIndex(const char* path, ULONG action, ZEBSTORE_INDEX_STATE* state,
                                         ZEBSTORE_REPORT* report, void* context, char* failure, ULONG failureSize);
}
