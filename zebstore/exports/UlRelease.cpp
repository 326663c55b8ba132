// UlRelease: releases an object of any provider.
#include "platform/mapi.h"

ULONG WINAPI UlRelease(LPVOID object)
{
    return object != nullptr ? static_cast<IUnknown*>(object)->Release() : 0;
}
