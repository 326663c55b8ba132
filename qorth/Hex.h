// Bytes as hexadecimal text: two digits a byte, upper case, no separators. Both cases are read.
#pragma once

#include "framework/CString.h"
#include "platform/mapi.h"

/// How many bytes String2Bin takes from `hex`: the complete pairs of digits in front of the first character
/// that is no digit. An odd last digit does not count. Null counts as empty.
ULONG String2BinBuffLen(const char* hex);

/// Writes those bytes to `bytes`, at most `cb` of them. @return how many were written.
ULONG String2Bin(const char* hex, void* bytes, ULONG cb);

/// The text of `cb` bytes, into `text`. `flags` is reserved, 0. A null `bytes` gives an empty text.
/// @throws std::length_error when the text would not fit a string.
void Bin2String(CStringA& text, const void* bytes, ULONG cb, int flags = 0);

/// The same text written to `digits`, two characters a byte, without a terminator.
void Bin2Digits(char* digits, const void* bytes, ULONG cb);
