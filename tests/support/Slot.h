// The entries of virtual members in their class's table of methods, read out of pointers to members in the form of
// either C++ ABI.
//
// In the Itanium ABI such a pointer is one more than the entry's offset; in the MSVC ABI it is the address of a few
// instructions that jump by the entry. Both are resolved in the same way: by a call on an object whose table entries
// return their own numbers.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace zeb::test
{

/// An object with only a table of methods, whose entry N returns N.
class SlotProbe
{
public:
    using Member = size_t (SlotProbe::*)();
    static constexpr size_t Entries = 128;

    const void* const* m_table;

    static const SlotProbe& Instance()
    {
        static const std::array<const void*, Entries> table = Table(std::make_index_sequence<Entries>());
        static const SlotProbe instance = {table.data()};
        return instance;
    }

private:
    template <size_t N>
    static size_t Answer()
    {
        return N;
    }

    template <size_t... Numbers>
    static std::array<const void*, Entries> Table(std::index_sequence<Numbers...>)
    {
        return {reinterpret_cast<const void*>(&Answer<Numbers>)...};
    }
};

/// The MSVC ABI: the overloads of one name in reverse, one entry for the destructor, none for what overrides an
/// operation of a second base.
inline constexpr bool MsvcAbi = sizeof(SlotProbe::Member) == sizeof(void*);

/// The entry of a virtual member; for one of a second base, that in the second base's table.
template <class Pointer>
size_t SlotOf(Pointer member)
{
    std::uintptr_t first = 0;
    static_assert(sizeof(member) >= sizeof(first));
    std::memcpy(&first, &member, sizeof(first));
    if (!MsvcAbi && first % sizeof(void*) != 1)
    {
        return SlotProbe::Entries; // not a virtual member
    }
    SlotProbe::Member asked = nullptr;
    static_assert(sizeof(asked) >= sizeof(first));
    std::memcpy(&asked, &first, sizeof(first));
    return (const_cast<SlotProbe&>(SlotProbe::Instance()).*asked)();
}

/// The entry of a slot, where the destructor counts as one slot: it has two entries in the Itanium ABI.
constexpr size_t EntryOfSlot(size_t slot, size_t destructor)
{
    return slot + (!MsvcAbi && slot > destructor ? 1 : 0);
}

} // namespace zeb::test
