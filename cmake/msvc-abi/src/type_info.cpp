// type_info's table of virtual functions. Compiled without RTTI: with it the
// compiler takes the table for another module's.
#include <typeinfo>

type_info::~type_info() noexcept
{
    // Keeps the compiler from leaving the destructor, and the table with it, out.
    __asm__ volatile("");
}
