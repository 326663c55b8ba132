// The operating system's kind, and path text. Paths are Windows paths: both separators are accepted.
#pragma once

#include "framework/CString.h"

/// Whether the system is of the NT line. True on Linux.
bool QorIsNTRunning();

/// Whether the system is Windows Vista or later. True on Linux.
bool QorIsWinVistaorHigher();

/// The directory of a file path, without the separator after it; empty when the path has none.
CStringA QorGetFilePath(const char* path);

/// The path with exactly one trailing backslash. An empty path stays empty: it must not become the root.
CStringA QorCheckLastSlash(const char* path);
