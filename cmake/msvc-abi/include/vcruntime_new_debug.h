// Operators that take a file and a line; there are none here, but libc++ asks for the file.
#pragma once
