// The menu of the main window, and the keys that stand for its commands.
#pragma once

#include "tools/zebview/Handles.h"

namespace zeb::view
{

/// The caller, or the window that it is given to, owns the menu.
HMENU MakeMenu();
Accelerators MakeAccelerators();

} // namespace zeb::view
