// Narrow text of a code page.
#pragma once

#include "platform/text.h"

namespace zeb::platform
{

/// NarrowPrefix for a text in the code page.
size_t PrefixInCodePage(UINT codePage, const char* text, size_t length, size_t limit);

} // namespace zeb::platform
