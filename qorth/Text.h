// Conversion between 8-bit text (the ANSI code page; UTF-8 on Linux) and 16-bit text.
#pragma once

#include "framework/CString.h"

/// Never fails: what the other form can not say is replaced, and nothing behind it is lost.
/// `length` is in characters; -1 takes the text up to its terminator. A null text gives an empty one.
CStringA QorConvertStringByANSITable(const WCHAR* text, int length = -1);
CStringW QorConvertStringByANSITable(const char* text, int length = -1);
