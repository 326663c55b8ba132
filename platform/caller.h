// Which function calls.
#pragma once

/// As a default argument: the name of the calling function, without its class; static text of the caller's binary.
#define ZEB_CALLER __builtin_FUNCTION()
