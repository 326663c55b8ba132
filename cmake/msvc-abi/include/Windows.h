// The spelling that some sources use; file names differ by case here.
#include <windows.h>
