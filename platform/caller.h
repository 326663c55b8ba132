// Where a call is made.
#pragma once

/// As default arguments: the file and the line of the call, as __FILE__ and __LINE__ would give them there.
#define ZEB_FILE __builtin_FILE()
/// The line, for ZEB_FILE.
#define ZEB_LINE __builtin_LINE()

/// As a default argument: the name of the calling function, without its class; static text of the caller's binary.
#define ZEB_CALLER __builtin_FUNCTION()
