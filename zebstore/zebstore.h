// The provider's public constants, for hosts that configure it through IMsgServiceAdmin.
#pragma once

#include "platform/mapi.h"

/// The service's name, as IMsgServiceAdmin::CreateMsgService takes it.
#define ZEBSTORE_SERVICE_NAME "zebstore"

/// The file name of the provider, as it stands in a store's entry identifier.
#define ZEBSTORE_DLL_NAME "zebstore.dll"

/// Settings of the service, for IMsgServiceAdmin::ConfigureMsgService.
/// The store's file. Without it: <local data>/zebapi/<profile>.zeb.
#define PR_ZEBSTORE_PATH_A PROP_TAG(PT_STRING8, 0x67F0)
#define PR_ZEBSTORE_PATH_W PROP_TAG(PT_UNICODE, 0x67F0)
/// "normal" (a commit survives the death of the process) or "full" (also the loss of power).
#define PR_ZEBSTORE_DURABILITY_A PROP_TAG(PT_STRING8, 0x67F1)
#define PR_ZEBSTORE_DURABILITY_W PROP_TAG(PT_UNICODE, 0x67F1)
/// PT_BOOLEAN: create the store's file when it does not exist (true when not given).
#define PR_ZEBSTORE_CREATE PROP_TAG(PT_BOOLEAN, 0x67F2)

/// A computed property of a store: checks the whole file; "ok", or the problems, a line each.
#define PR_ZEBSTORE_CHECK_A PROP_TAG(PT_STRING8, 0x67F3)
#define PR_ZEBSTORE_CHECK_W PROP_TAG(PT_UNICODE, 0x67F3)
