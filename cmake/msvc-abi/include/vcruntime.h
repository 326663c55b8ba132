// Basic types of the runtime; libc++ asks for them by this name.
#pragma once
#include <corecrt.h>
