// Conversion between 8-bit text (the ANSI code page; UTF-8 on Linux) and 16-bit text.
#pragma once

#include "framework/CString.h"

/// Never fails: characters that the other form cannot represent are replaced; the text after them is kept. `length` is
/// in characters; -1 means up to the terminator. A null text gives an empty one.
CStringA QorConvertStringByANSITable(const WCHAR* text, int length = -1);
CStringW QorConvertStringByANSITable(const char* text, int length = -1);
