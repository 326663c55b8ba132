// The one operator delete that the others call; alone in its object, so that a program may replace it.
#include <stdlib.h>

#include <vcruntime_new.h>

void __cdecl operator delete(void* block) noexcept
{
    free(block);
}
