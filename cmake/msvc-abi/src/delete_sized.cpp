// Alone in its object, as a program that replaces operator delete replaces this one too.
#include <vcruntime_new.h>

void __cdecl operator delete(void* block, size_t) noexcept
{
    operator delete(block);
}
