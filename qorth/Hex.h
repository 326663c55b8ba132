// Bytes as hexadecimal text: two digits per byte, upper case, no separators. Both cases are accepted as input.
#pragma once

#include "framework/CString.h"
#include "platform/mapi.h"

/// The number of bytes that String2Bin reads from `hex`: the complete pairs of digits before the first character that
/// is not a digit. An odd last digit is ignored. Null counts as empty.
ULONG String2BinBuffLen(const char* hex);

/// Writes these bytes to `bytes`, at most `cb`. @return the number of bytes written
ULONG String2Bin(const char* hex, void* bytes, ULONG cb);

/// The text of `cb` bytes, into `text`. `flags` is reserved, 0. A null `bytes` gives an empty text.
/// @throws std::length_error when the text would not fit a string.
void Bin2String(CStringA& text, const void* bytes, ULONG cb, int flags = 0);

/// The same text written to `digits`, two characters per byte, without a terminator.
void Bin2Digits(char* digits, const void* bytes, ULONG cb);
