// Windows' base types and MAPI's declarations, the same on both targets.
//
// Windows brings both. Linux reads the same MAPI headers over the base types of Wine's SDK headers; nothing
// of Wine runs. LONG, ULONG and HRESULT have 32 bits and WCHAR has 16 on either target, and MAPI's functions
// and interface methods have the Windows x64 calling convention on either target, so a double or a provider
// is written once.
#pragma once

// Classes that implement MAPI's methods may throw (test doubles do), so the headers must not declare them noexcept.
#ifndef COM_STDMETHOD_CAN_THROW
/// Lets the methods of MAPI's interfaces throw.
#define COM_STDMETHOD_CAN_THROW
#endif

#ifndef NOMINMAX
/// Keeps <windows.h> from defining macros named min and max.
#define NOMINMAX
#endif

#ifdef _WIN32

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#else

#include <windef.h>

#include <winbase.h>
#include <winnls.h>
#include <winreg.h>
#include <winuser.h>

#include <objbase.h>
#include <oleauto.h>

// Declarations that the MAPI headers expect from windows.h.
#define _WINDOWS_
#define __WCHAR_DEFINED
#define __LHANDLE
#define WINBOOL BOOL
#define __LONG32 int

#endif

#include <mapix.h>

#include <mapicode.h>
#include <mapidefs.h>
#include <mapispi.h>
#include <mapitags.h>
#include <mapiutil.h>
#include <wabapi.h>
#include <wabdefs.h>

/// ZEBW("text"): a literal of 16-bit characters (WCHAR) on either target.
#ifdef _WIN32
#define ZEBW(text) L##text
#else
#define ZEBW(text) u##text
#endif

static_assert(sizeof(WCHAR) == 2, "WCHAR has 16 bits");
static_assert(sizeof(LONG) == 4 && sizeof(ULONG) == 4 && sizeof(DWORD) == 4, "LONG, ULONG, DWORD have 32 bits");
static_assert(sizeof(SPropValue) == 24 && sizeof(SRestriction) == 32 && sizeof(SRow) == 16, "MAPI's x64 layouts");
static_assert(sizeof(WAB_PARAM) == 48, "the WAB's x64 layout");
