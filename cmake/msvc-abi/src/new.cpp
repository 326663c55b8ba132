// The one operator new that the others call; alone in its object, so that a program may replace it.
#include <stdlib.h>

#include <vcruntime_new.h>

extern "C" int __cdecl _callnewh(size_t size);

void* __cdecl operator new(size_t size)
{
    for (;;)
    {
        if (void* block = malloc(size != 0 ? size : 1))
        {
            return block;
        }
        if (_callnewh(size) == 0)
        {
            throw std::bad_alloc();
        }
    }
}
